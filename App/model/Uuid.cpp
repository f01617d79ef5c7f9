#include "Uuid.hpp"

#include <uuid/uuid.h>

namespace tessel {

Uuid Uuid::generate() {
    uuid_t bytes;
    uuid_generate_random(bytes);
    char text[37];
    uuid_unparse_upper(bytes, text);
    return Uuid(text);
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    std::string upper(text);
    for (std::size_t i = 0; i < upper.size(); ++i) {
        char& c = upper[i];
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash != (c == '-')) return std::nullopt;
        if (dash) continue;
        if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
        if (!((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'))) return std::nullopt;
    }
    return Uuid(std::move(upper));
}

}  // namespace tessel
