#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "PayrollDomain/Decimal.hpp"

// Decimals in JSON, exactly. A decimal may be written as text ("12.50") or as a JSON number made from
// that text (12.50); either form is read back from the token's own text, never through a binary double.
// A number token read by parse() is kept in the document as a binary value of subtype numberSubtype
// holding its text, and dump() writes such a value back as the bare number.
namespace tessel::decimal_json {

inline constexpr std::uint8_t numberSubtype = 0xDE;

// Text that is not JSON at all; its message is one sentence for the user.
class MalformedJSONError : public std::runtime_error {
public:
    explicit MalformedJSONError(std::size_t bytePosition)
        : std::runtime_error("The input is not well-formed JSON (at byte " + std::to_string(bytePosition) + ").") {}
};

template <typename Json>
Json text(const Decimal& value) {
    return Json(value.toString());
}

// Throws std::invalid_argument for NaN, which JSON numbers cannot express.
template <typename Json>
Json number(const Decimal& value) {
    if (value.isNaN()) throw std::invalid_argument("NaN cannot be written as a JSON number");
    const std::string digits = value.toString();
    return Json::binary(typename Json::binary_t::container_type(digits.begin(), digits.end()), numberSubtype);
}

template <typename Json>
bool isPreservedNumber(const Json& value) {
    return value.is_binary() && value.get_binary().has_subtype() && value.get_binary().subtype() == numberSubtype;
}

// Reads decimal text, a number token kept by parse(), or an integer. Nothing else is a decimal;
// in particular a floating-point value parsed by plain nlohmann::json::parse is refused.
template <typename Json>
std::optional<Decimal> read(const Json& value) {
    if (value.is_string()) return Decimal::parse(value.template get_ref<const std::string&>());
    if (isPreservedNumber(value)) {
        const auto& bytes = value.get_binary();
        return Decimal::parseJSONNumber(std::string(bytes.begin(), bytes.end()));
    }
    if (value.is_number_integer() && !value.is_number_unsigned()) return Decimal(value.template get<std::int64_t>());
    if (value.is_number_unsigned()) return Decimal::parse(std::to_string(value.template get<std::uint64_t>()));
    return std::nullopt;
}

namespace detail {

// Builds the document like nlohmann's own DOM parser, but keeps floating-point tokens as text.
template <typename Json>
class PreservingSax : public nlohmann::json_sax<Json> {
public:
    using typename nlohmann::json_sax<Json>::number_integer_t;
    using typename nlohmann::json_sax<Json>::number_unsigned_t;
    using typename nlohmann::json_sax<Json>::number_float_t;
    using typename nlohmann::json_sax<Json>::string_t;
    using typename nlohmann::json_sax<Json>::binary_t;

    Json root;

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(value); }
    bool number_unsigned(number_unsigned_t value) override { return add(value); }
    bool number_float(number_float_t, const string_t& token) override {
        return add(Json::binary(typename binary_t::container_type(token.begin(), token.end()), numberSubtype));
    }
    bool string(string_t& value) override { return add(value); }
    bool binary(binary_t& value) override { return add(Json::binary(value)); }
    bool start_object(std::size_t) override { return open(Json::object()); }
    bool key(string_t& name) override {
        pendingKey_ = name;
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Json::array()); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception&) override {
        throw MalformedJSONError(position);
    }

private:
    // Containers on the stack never move while open: only the innermost one receives new values.
    Json* place(Json value) {
        if (stack_.empty()) {
            root = std::move(value);
            return &root;
        }
        Json& parent = *stack_.back();
        if (parent.is_object()) return &(parent[pendingKey_] = std::move(value));
        parent.push_back(std::move(value));
        return &parent.back();
    }
    bool add(Json value) {
        place(std::move(value));
        return true;
    }
    bool open(Json container) {
        stack_.push_back(place(std::move(container)));
        return true;
    }
    bool close() {
        stack_.pop_back();
        return true;
    }

    std::vector<Json*> stack_;
    string_t pendingKey_;
};

template <typename Json>
void write(const Json& value, int indent, int depth, std::string& out) {
    const auto newline = [&](int level) {
        if (indent < 0) return;
        out += '\n';
        out.append(static_cast<std::size_t>(indent * level), ' ');
    };
    if (isPreservedNumber(value)) {
        out.append(value.get_binary().begin(), value.get_binary().end());
    } else if (value.is_object() && !value.empty()) {
        out += '{';
        bool first = true;
        for (auto it = value.begin(); it != value.end(); ++it) {
            if (!first) out += ',';
            first = false;
            newline(depth + 1);
            out += Json(it.key()).dump();
            out += indent < 0 ? ":" : ": ";
            write(it.value(), indent, depth + 1, out);
        }
        newline(depth);
        out += '}';
    } else if (value.is_array() && !value.empty()) {
        out += '[';
        for (std::size_t i = 0; i < value.size(); ++i) {
            if (i > 0) out += ',';
            newline(depth + 1);
            write(value[i], indent, depth + 1, out);
        }
        newline(depth);
        out += ']';
    } else {
        out += value.dump();
    }
}

}  // namespace detail

// Parses JSON text, keeping every floating-point number token as its text.
// Throws MalformedJSONError when the text is not well-formed JSON.
template <typename Json>
Json parse(std::string_view input) {
    detail::PreservingSax<Json> sax;
    Json::sax_parse(input, &sax);
    return std::move(sax.root);
}

// Writes the document like Json::dump, with kept number tokens written as bare numbers.
template <typename Json>
std::string dump(const Json& value, int indent = -1) {
    std::string out;
    detail::write(value, indent, 0, out);
    return out;
}

}  // namespace tessel::decimal_json
