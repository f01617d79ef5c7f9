#pragma once

#include <optional>
#include <string>
#include <string_view>

// Byte blobs in exchange files: standard base64 with padding. Decoding is strict (no whitespace, no other
// alphabet, correct padding), so that a damaged file is refused rather than read as other bytes.
namespace tessel::base64 {

std::string encode(std::string_view bytes);
std::optional<std::string> decode(std::string_view text);

}  // namespace tessel::base64
