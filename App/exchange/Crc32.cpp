#include "Crc32.hpp"

#include <array>
#include <bit>
#include <cstring>

namespace tessel::crc32 {
namespace {

static_assert(std::endian::native == std::endian::little, "the eight-byte fold reads words as little-endian");

using Tables = std::array<std::array<std::uint32_t, 256>, 8>;

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
    while (size >= 8) {
        std::uint32_t low = 0;
        std::uint32_t high = 0;
        std::memcpy(&low, data, 4);  // the fold below reads bytes in little-endian order, as x86 stores them
        std::memcpy(&high, data + 4, 4);
        low ^= crc;
        crc = t[7][low & 0xFFu] ^ t[6][(low >> 8) & 0xFFu] ^ t[5][(low >> 16) & 0xFFu] ^ t[4][low >> 24] ^
              t[3][high & 0xFFu] ^ t[2][(high >> 8) & 0xFFu] ^ t[1][(high >> 16) & 0xFFu] ^ t[0][high >> 24];
        data += 8;
        size -= 8;
    }
    while (size-- > 0) crc = (crc >> 8) ^ t[0][(crc ^ *data++) & 0xFFu];
    return ~crc;
}

}  // namespace tessel::crc32
