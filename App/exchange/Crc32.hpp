#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// The CRC-32 of ZIP archives: the reflected polynomial 0xEDB88320, initial value all ones, final
// inversion. Sixteen bytes are folded per step through sixteen tables built once on first use, so that
// checking a store of many megabytes costs little next to copying it.
namespace tessel::crc32 {

// Continues a checksum over more bytes; start with 0, pass each result back in.
std::uint32_t update(std::uint32_t crc, const unsigned char* data, std::size_t size) noexcept;

inline std::uint32_t of(std::string_view bytes) noexcept {
    return update(0, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

}  // namespace tessel::crc32
