#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "App/model/ModelContext.hpp"
#include "App/rules/RulesetDrafts.hpp"

namespace tessel {

// A Saved Ruleset: a ruleset kept on this installation apart from any production. Productions and the
// library never share one: saving copies a production's rules into the library, applying copies them
// back into a production.
struct PayrollRulesLibraryItem {
    Uuid id;
    Uuid portableRulesetID;  // kept across export and import
    std::string name;
    std::string provenanceNotes;
    Instant createdAt;
    Instant modifiedAt;
    std::optional<Instant> importedAt;
    PayrollRuleConfiguration configuration;
};

// A library action refused; the sentence says why, and nothing was changed.
class RulesLibraryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace rules_library {

inline constexpr std::string_view saveExplanation = "This creates an independent reusable copy in the Ruleset Library.";
inline constexpr std::string_view applyTitle = "Apply Saved Ruleset?";
inline constexpr std::string_view updateTitle = "Update Saved Ruleset?";
inline constexpr std::string_view deleteExplanation =
    "This permanently removes the reusable ruleset from this device. Productions previously created from it are not affected.";
inline constexpr std::string_view emptyTitle = "No Saved Rulesets";
inline constexpr std::string_view emptyMessage = "Create or import a reusable Saved Ruleset.";
inline constexpr std::string_view noneToUpdate = "Create a Saved Ruleset before updating one from this Production.";
inline constexpr std::string_view noCurrentRuleset = "This Production has no current Ruleset.";
inline constexpr std::string_view failureTitle = "Couldn\u2019t Update Ruleset Library";
inline constexpr std::string_view appliedFromLabel = "Applied from Saved Ruleset:";
inline constexpr std::string_view emptyName = "Enter a Ruleset name.";

// "Replace Night Harbor’s current Ruleset with “Union Basic”? An independent Production-owned copy …"
std::string applyQuestion(const std::string& productionName, const std::string& itemName);
// "Update “Union Basic” with the current Production Ruleset? Existing Productions …"
std::string updateQuestion(const std::string& itemName);

// The name trimmed of white space and line breaks; refuses a blank one with "Enter a Ruleset name.".
std::string validName(std::string_view name);

// Every saved ruleset, by name.
std::vector<PayrollRulesLibraryItem> list(ModelContext& context);
// The saved ruleset with the identifier, or the one with the name; refuses none or several.
PayrollRulesLibraryItem named(ModelContext& context, const std::string& name);

// Saves a copy of the configuration as a new item with a new portable identity.
PayrollRulesLibraryItem save(ModelContext& context, const std::string& name, const std::string& notes,
                             const PayrollRuleConfiguration& configuration, Instant now);
// Adds an item read from a ruleset file: a new item keeping the file's portable identity.
PayrollRulesLibraryItem addImported(ModelContext& context, const Uuid& portableRulesetID, const std::string& name,
                                    const std::string& notes, Instant createdAt, const PayrollRuleConfiguration& configuration,
                                    Instant now);
// Replaces the item's configuration with a copy of the production's.
void update(ModelContext& context, const PayrollRulesLibraryItem& item, const PayrollRuleConfiguration& configuration, Instant now);
void rename(ModelContext& context, const PayrollRulesLibraryItem& item, std::string_view newName, Instant now);
void remove(ModelContext& context, const PayrollRulesLibraryItem& item);

// Writes a copy of the item's rules as the production's current ruleset (creating the revision when the
// production has none) and records where it came from.
void applyToProduction(ModelContext& context, const PayrollRulesLibraryItem& item, const Uuid& productionID,
                       std::optional<Uuid> revisionID, Instant now);

}  // namespace rules_library
}  // namespace tessel
