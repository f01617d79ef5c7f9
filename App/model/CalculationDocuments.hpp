#pragma once

#include <string_view>
#include <vector>

#include "App/model/JSONFields.hpp"

// The calculations the `tessel calc` commands run on a JSON document: each reads its input record,
// runs one engine calculation and answers with its result and trace. A document of the wrong shape is
// refused with MalformedInputError; a value the engine refuses throws its DomainError.
namespace tessel::calculation_documents {

struct Calculation {
    std::string_view name;
    std::string_view description;
    Json (*run)(const Json& input);
};

// Every calculation, in the order the command line lists them.
const std::vector<Calculation>& all();

}  // namespace tessel::calculation_documents
