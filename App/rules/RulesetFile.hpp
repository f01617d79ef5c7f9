#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "App/rules/RulesLibrary.hpp"
#include "PayrollDomain/DomainError.hpp"

namespace tessel {

enum class TesselRulesErrorCase { unsupportedVersion, invalid, emptyName };

// A ruleset file that cannot be taken: its sentence, and for an invalid one the detail after it.
class TesselRulesError : public CaseError<TesselRulesErrorCase> {
public:
    using Case = TesselRulesErrorCase;
    static TesselRulesError unsupportedVersion(std::int64_t version);
    static TesselRulesError invalid(const std::string& detail);
    static TesselRulesError emptyName();

private:
    using CaseError::CaseError;
};

struct TesselRulesFileMetadata {
    int formatVersion = 1;
    Uuid portableRulesetID;
    std::string name;
    std::string provenanceNotes;
    Instant createdAt;
    Instant exportedAt;
    std::optional<std::string> applicationVersion;
    std::optional<std::string> applicationBuild;
};

// A Saved Ruleset as a file (".tesselrules") that carries it to another installation: a JSON object of
// "metadata" and "configuration", the configuration being the document `rules show --json` prints. The
// file keeps the conventions of the platform that first wrote such files: dates as a number of seconds
// since 2001-01-01 00:00:00 UTC, no pretty printing, keys in declaration order, and decimals as JSON
// numbers written and read from their exact digits.
namespace ruleset_file {

inline constexpr std::string_view extension = ".tesselrules";
inline constexpr std::string_view defaultFileName = "Payroll-Ruleset.tesselrules";

// The file's bytes for a library item exported now.
std::string write(const PayrollRulesLibraryItem& item, Instant exportedAt, const std::optional<std::string>& applicationVersion,
                  const std::optional<std::string>& applicationBuild);

struct Contents {
    TesselRulesFileMetadata metadata;
    PayrollRuleConfiguration configuration;
    std::string name;  // the metadata's name, trimmed
};

// Reads and checks a file in this order, the first failure winning: well-formed JSON, format version 1,
// a configuration that passes the ruleset validation, a name that is not blank. Throws TesselRulesError.
Contents read(std::string_view bytes);

}  // namespace ruleset_file
}  // namespace tessel
