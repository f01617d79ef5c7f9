#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tessel {

// An entity identifier in its standard upper-case text form ("0F8C…-…").
class Uuid {
public:
    static Uuid generate();
    // Accepts either case; refuses anything that is not the 8-4-4-4-12 hexadecimal form.
    static std::optional<Uuid> parse(std::string_view text);

    const std::string& text() const noexcept { return text_; }
    auto operator<=>(const Uuid&) const = default;

private:
    explicit Uuid(std::string text) : text_(std::move(text)) {}
    std::string text_;
};

}  // namespace tessel

template <>
struct std::hash<tessel::Uuid> {
    std::size_t operator()(const tessel::Uuid& id) const noexcept { return std::hash<std::string>{}(id.text()); }
};
