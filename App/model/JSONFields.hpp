#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "App/model/DecimalJSON.hpp"

namespace tessel {

// Machine documents keep their keys in declaration order.
using Json = nlohmann::ordered_json;

// A document that is JSON but not the document asked for: a missing field, a wrong type, an unknown
// name. The message is one sentence naming the field by its path ("bands[1].multiplier").
class MalformedInputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reading fields of a machine document by path, refusing anything that is not what the field holds.
namespace json_fields {

std::string childPath(const std::string& path, std::string_view key);
std::string elementPath(const std::string& path, std::size_t index);

const Json& object(const Json& value, const std::string& path);
const Json& array(const Json& value, const std::string& path);
const Json& member(const Json& object, std::string_view key, const std::string& path);
// Absent and null both read as nothing.
const Json* optionalMember(const Json& object, std::string_view key);

std::int64_t integer(const Json& value, const std::string& path);
// A whole number from `lowest` to `highest`; anything else is refused naming the field and the `noun`.
int boundedInteger(const Json& value, const std::string& path, int lowest, int highest, std::string_view noun);
std::string string(const Json& value, const std::string& path);
Decimal decimal(const Json& value, const std::string& path);
bool boolean(const Json& value, const std::string& path);

template <typename Enum>
Enum enumeration(const Json& value, const std::string& path, std::optional<Enum> (*fromRawValue)(std::string_view)) {
    const std::string raw = string(value, path);
    if (const auto parsed = fromRawValue(raw)) return *parsed;
    throw MalformedInputError("The field \u201C" + path + "\u201D has the unknown value \u201C" + raw + "\u201D.");
}

}  // namespace json_fields
}  // namespace tessel
