#include "Base64.hpp"

#include <array>

namespace tessel::base64 {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<int, 256> reverse() {
    std::array<int, 256> table{};
    table.fill(-1);
    for (std::size_t i = 0; i < alphabet.size(); ++i) table[static_cast<unsigned char>(alphabet[i])] = static_cast<int>(i);
    return table;
}
constexpr auto values = reverse();

}  // namespace

std::string encode(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t left = bytes.size() - i;
        const unsigned a = static_cast<unsigned char>(bytes[i]);
        const unsigned b = left > 1 ? static_cast<unsigned char>(bytes[i + 1]) : 0;
        const unsigned c = left > 2 ? static_cast<unsigned char>(bytes[i + 2]) : 0;
        const unsigned group = (a << 16) | (b << 8) | c;
        text += alphabet[(group >> 18) & 63];
        text += alphabet[(group >> 12) & 63];
        text += left > 1 ? alphabet[(group >> 6) & 63] : '=';
        text += left > 2 ? alphabet[group & 63] : '=';
    }
    return text;
}

std::optional<std::string> decode(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const bool last = i + 4 == text.size();
        const int padding = last ? (text[i + 3] == '=') + (text[i + 2] == '=') : 0;
        if (padding == 1 && text[i + 2] == '=') return std::nullopt;  // "x=y=" is not padding
        unsigned group = 0;
        for (int k = 0; k < 4; ++k) {
            const char ch = text[i + static_cast<std::size_t>(k)];
            const int value = k >= 4 - padding ? 0 : values[static_cast<unsigned char>(ch)];
            if (value < 0) return std::nullopt;
            group = (group << 6) | static_cast<unsigned>(value);
        }
        bytes += static_cast<char>((group >> 16) & 0xFF);
        if (padding < 2) bytes += static_cast<char>((group >> 8) & 0xFF);
        if (padding < 1) bytes += static_cast<char>(group & 0xFF);
    }
    return bytes;
}

}  // namespace tessel::base64
