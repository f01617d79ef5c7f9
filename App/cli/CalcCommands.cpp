#include "CalcCommands.hpp"

#include <functional>
#include <iostream>
#include <iterator>

#include "App/model/CalculationDocuments.hpp"
#include "App/model/CalculationJSON.hpp"

namespace tessel {
namespace {

using namespace json_fields;
namespace cj = calculation_json;

using Calculation = std::function<Json(const Json& input)>;

// Reads the document, runs the calculation and writes its answer, mapping each kind of failure to
// its exit status: not JSON or the wrong shape is a usage error, a refusal by the system is exit 1.
int runCalculation(CommandStreams streams, const Calculation& calculation) {
    const std::string text{std::istreambuf_iterator<char>(streams.in), std::istreambuf_iterator<char>()};
    try {
        const Json input = decimal_json::parse<Json>(text);
        streams.out << decimal_json::dump(calculation(object(input, "")), 2) << '\n';
        return exitSuccess;
    } catch (const decimal_json::MalformedJSONError& error) {
        streams.err << error.what() << '\n';
        return exitUsage;
    } catch (const MalformedInputError& error) {
        streams.err << error.what() << '\n';
        return exitUsage;
    } catch (const DomainError& error) {
        streams.out << decimal_json::dump(cj::errorJSON(error), 2) << '\n';
        return exitRefused;
    }
}

void addCalculation(CLI::App& calc, const std::string& name, const std::string& description,
                    CommandStreams streams, int& exitStatus, Calculation calculation) {
    calc.add_subcommand(name, description)->callback([streams, &exitStatus, calculation] {
        exitStatus = runCalculation(streams, calculation);
    });
}

}  // namespace

void addCalcCommands(CLI::App& app, CommandStreams streams, int& exitStatus) {
    CLI::App* calc = app.add_subcommand("calc", "Run one calculation on a JSON document read from standard input");
    calc->require_subcommand(1);
    for (const auto& calculation : calculation_documents::all()) {
        addCalculation(*calc, std::string(calculation.name), std::string(calculation.description), streams, exitStatus,
                       calculation.run);
    }
}

}  // namespace tessel
