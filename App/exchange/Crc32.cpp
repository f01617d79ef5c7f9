#include "Crc32.hpp"

#include <array>
#include <bit>
#include <cstring>

namespace tessel::crc32 {
namespace {

static_assert(std::endian::native == std::endian::little, "the eight-byte fold reads words as little-endian");

using Tables = std::array<std::array<std::uint32_t, 256>, 16>;

Tables buildTables() {
    Tables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
        tables[0][byte] = crc;
    }
    // tables[k][b] is the CRC of byte b followed by k zero bytes.
    for (std::size_t k = 1; k < tables.size(); ++k) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t previous = tables[k - 1][byte];
            tables[k][byte] = (previous >> 8) ^ tables[0][previous & 0xFFu];
        }
    }
    return tables;
}

const Tables& tables() {
    static const Tables built = buildTables();
    return built;
}

}  // namespace

std::uint32_t update(std::uint32_t crc, const unsigned char* data, std::size_t size) noexcept {
    const Tables& t = tables();
    crc = ~crc;
    while (size >= 16) {
        std::uint32_t words[4];
        std::memcpy(words, data, 16);  // the fold below reads bytes in little-endian order, as x86 stores them
        words[0] ^= crc;
        // The first byte is folded through the most zero bytes: byte k of the block uses table 15 - k.
        crc = t[15][words[0] & 0xFFu] ^ t[14][(words[0] >> 8) & 0xFFu] ^ t[13][(words[0] >> 16) & 0xFFu] ^ t[12][words[0] >> 24] ^
              t[11][words[1] & 0xFFu] ^ t[10][(words[1] >> 8) & 0xFFu] ^ t[9][(words[1] >> 16) & 0xFFu] ^ t[8][words[1] >> 24] ^
              t[7][words[2] & 0xFFu] ^ t[6][(words[2] >> 8) & 0xFFu] ^ t[5][(words[2] >> 16) & 0xFFu] ^ t[4][words[2] >> 24] ^
              t[3][words[3] & 0xFFu] ^ t[2][(words[3] >> 8) & 0xFFu] ^ t[1][(words[3] >> 16) & 0xFFu] ^ t[0][words[3] >> 24];
        data += 16;
        size -= 16;
    }
    while (size-- > 0) crc = (crc >> 8) ^ t[0][(crc ^ *data++) & 0xFFu];
    return ~crc;
}

}  // namespace tessel::crc32
