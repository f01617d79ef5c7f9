#include "RulesLibrary.hpp"

#include "App/model/DecimalJSON.hpp"
#include "App/model/EntryText.hpp"
#include "App/model/SatelliteRepository.hpp"
#include "App/model/StoreSchema.hpp"
#include "App/rules/ProductionRulesets.hpp"

namespace tessel::rules_library {
namespace {

constexpr std::string_view columnsList =
    "id, portableRulesetID, name, provenanceNotes, createdAt, modifiedAt, importedAt, configurationData";

// The configuration as the library keeps it: the same JSON document `rules show --json` prints.
std::vector<unsigned char> encoded(const PayrollRuleConfiguration& configuration) {
    const std::string text = decimal_json::dump(rules_json::toJSON(configuration), -1);
    return {text.begin(), text.end()};
}

PayrollRuleConfiguration decoded(const std::vector<unsigned char>& bytes, const std::string& name) {
    try {
        return rules_json::configuration(decimal_json::parse<Json>(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size())));
    } catch (const std::exception&) {
        throw RulesPayloadError("The Saved Ruleset \u201C" + name + "\u201D cannot be read.");
    }
}

PayrollRulesLibraryItem read(SQLite::Statement& statement) {
    const std::string name = statement.getColumn(2).getString();
    const auto blob = columns::readValue(statement.getColumn(7));
    const auto* bytes = std::get_if<std::vector<unsigned char>>(&blob);
    return {columns::uuid(statement.getColumn(0)),
            columns::uuid(statement.getColumn(1)),
            name,
            statement.getColumn(3).getString(),
            columns::instant(statement.getColumn(4)),
            columns::instant(statement.getColumn(5)),
            columns::optionalInstant(statement.getColumn(6)),
            decoded(bytes ? *bytes : std::vector<unsigned char>{}, name)};
}

PayrollRulesLibraryItem insert(ModelContext& context, PayrollRulesLibraryItem item) {
    auto& statement = context.prepare("INSERT INTO PayrollRulesLibraryItem (" + std::string(columnsList) +
                                      ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)");
    columns::bindAll(statement, item.id, item.portableRulesetID, item.name, item.provenanceNotes, item.createdAt,
                     item.modifiedAt, item.importedAt);
    columns::bindValue(statement, 8, encoded(item.configuration));
    statement.exec();
    return item;
}

}  // namespace

std::string applyQuestion(const std::string& productionName, const std::string& itemName) {
    return "Replace " + productionName + "\u2019s current Ruleset with \u201C" + itemName +
           "\u201D? An independent Production-owned copy will be created; other Productions and the Saved Ruleset remain "
           "unchanged.";
}

std::string updateQuestion(const std::string& itemName) {
    return "Update \u201C" + itemName +
           "\u201D with the current Production Ruleset? Existing Productions that used this Saved Ruleset remain unchanged.";
}

std::string validName(std::string_view name) {
    const std::string trimmed(entry_text::trimmed(name));
    if (trimmed.empty()) throw RulesLibraryError(std::string(emptyName));
    return trimmed;
}

std::vector<PayrollRulesLibraryItem> list(ModelContext& context) {
    auto& statement = context.prepare("SELECT " + std::string(columnsList) + " FROM PayrollRulesLibraryItem ORDER BY name, createdAt, id");
    return columns::readAll<PayrollRulesLibraryItem>(statement, read);
}

PayrollRulesLibraryItem named(ModelContext& context, const std::string& name) {
    const auto id = Uuid::parse(name);
    std::vector<PayrollRulesLibraryItem> found;
    for (auto& item : list(context)) {
        if (id && item.id == *id) return item;
        if (item.name == name) found.push_back(std::move(item));
    }
    if (found.empty()) throw RulesLibraryError("There is no Saved Ruleset named \u201C" + name + "\u201D.");
    if (found.size() > 1) {
        throw RulesLibraryError("More than one Saved Ruleset is named \u201C" + name +
                                "\u201D; give one of them by its identifier (library rules list --json) to rename it.");
    }
    return found.front();
}

PayrollRulesLibraryItem save(ModelContext& context, const std::string& name, const std::string& notes,
                             const PayrollRuleConfiguration& configuration, Instant now) {
    ProductionRulesets::validateWhole(configuration);
    return insert(context, {Uuid::generate(), Uuid::generate(), validName(name), notes, now, now, std::nullopt, configuration});
}

PayrollRulesLibraryItem addImported(ModelContext& context, const Uuid& portableRulesetID, const std::string& name,
                                    const std::string& notes, Instant createdAt, const PayrollRuleConfiguration& configuration,
                                    Instant now) {
    ProductionRulesets::validateWhole(configuration);
    return insert(context, {Uuid::generate(), portableRulesetID, validName(name), notes, createdAt, now, now, configuration});
}

void update(ModelContext& context, const PayrollRulesLibraryItem& item, const PayrollRuleConfiguration& configuration, Instant now) {
    ProductionRulesets::validateWhole(configuration);
    auto& statement = context.prepare("UPDATE PayrollRulesLibraryItem SET configurationData = ?2, modifiedAt = ?3 WHERE id = ?1");
    columns::bind(statement, 1, item.id);
    columns::bindValue(statement, 2, encoded(configuration));
    columns::bind(statement, 3, now);
    statement.exec();
}

void rename(ModelContext& context, const PayrollRulesLibraryItem& item, std::string_view newName, Instant now) {
    auto& statement = context.prepare("UPDATE PayrollRulesLibraryItem SET name = ?2, modifiedAt = ?3 WHERE id = ?1");
    columns::bindAll(statement, item.id, validName(newName), now);
    statement.exec();
}

void remove(ModelContext& context, const PayrollRulesLibraryItem& item) {
    auto& statement = context.prepare("DELETE FROM PayrollRulesLibraryItem WHERE id = ?1");
    columns::bind(statement, 1, item.id);
    statement.exec();
}

void applyToProduction(ModelContext& context, const PayrollRulesLibraryItem& item, const Uuid& productionID,
                       std::optional<Uuid> revisionID, Instant now) {
    const PayrollRuleConfiguration& copy = item.configuration;
    if (!revisionID) {
        revisionID = ProductionRulesets::createDefaultRevision(context, productionID, copy.payrollRules.effectiveFrom, now);
    }
    ProductionRulesets::apply(context, productionID, *revisionID, copy, now);
    satellite_repository::write(context, store_schema::satelliteTable("ProductionRulesetSetupMetadata"), *revisionID,
                                {{"originRawValue", std::string("savedRulesetCopy")},
                                 {"sourceSavedRulesetPortableID", item.portableRulesetID.text()},
                                 {"sourceSavedRulesetName", item.name}});
}

}  // namespace tessel::rules_library
