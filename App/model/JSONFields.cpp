#include "JSONFields.hpp"

namespace tessel::json_fields {
namespace {

[[noreturn]] void refuse(const std::string& path, std::string_view expectation) {
    throw MalformedInputError("The field \u201C" + path + "\u201D must be " + std::string(expectation) + ".");
}

}  // namespace

std::string childPath(const std::string& path, std::string_view key) {
    return path.empty() ? std::string(key) : path + "." + std::string(key);
}

std::string elementPath(const std::string& path, std::size_t index) {
    return path + "[" + std::to_string(index) + "]";
}

const Json& object(const Json& value, const std::string& path) {
    if (!value.is_object() && path.empty()) throw MalformedInputError("The document must be a JSON object.");
    if (!value.is_object()) refuse(path, "an object");
    return value;
}

const Json& array(const Json& value, const std::string& path) {
    if (!value.is_array()) refuse(path, "a list");
    return value;
}

const Json& member(const Json& parent, std::string_view key, const std::string& path) {
    const std::string keyText(key);
    if (!parent.contains(keyText)) {
        throw MalformedInputError("The field \u201C" + childPath(path, key) + "\u201D is missing.");
    }
    return parent.at(keyText);
}

const Json* optionalMember(const Json& parent, std::string_view key) {
    const auto it = parent.find(std::string(key));
    if (it == parent.end() || it->is_null()) return nullptr;
    return &*it;
}

std::int64_t integer(const Json& value, const std::string& path) {
    if (value.is_number_integer() && !value.is_number_unsigned()) return value.get<std::int64_t>();
    // A whole number written with a fraction ("3600.0") or beyond the signed range goes through the
    // decimal reading, which keeps it exact.
    if (decimal_json::isPreservedNumber(value) || value.is_number_unsigned()) {
        if (const auto exact = decimal_json::read(value)) {
            if (const auto whole = exact->toInt64()) return *whole;
        }
    }
    refuse(path, "a whole number");
}

int boundedInteger(const Json& value, const std::string& path, int lowest, int highest, std::string_view noun) {
    const std::int64_t number = integer(value, path);
    if (number < lowest || number > highest) {
        throw MalformedInputError("The field \u201C" + path + "\u201D must be " + std::string(noun) + " from " +
                                  std::to_string(lowest) + " to " + std::to_string(highest) + ".");
    }
    return static_cast<int>(number);
}

std::string string(const Json& value, const std::string& path) {
    if (!value.is_string()) refuse(path, "text");
    return value.get<std::string>();
}

Decimal decimal(const Json& value, const std::string& path) {
    if (const auto parsed = decimal_json::read(value)) return *parsed;
    refuse(path, "a decimal number such as \u201C1.5\u201D");
}

bool boolean(const Json& value, const std::string& path) {
    if (!value.is_boolean()) refuse(path, "true or false");
    return value.get<bool>();
}

}  // namespace tessel::json_fields
