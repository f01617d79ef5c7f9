#include <functional>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include <nlohmann/json.hpp>

#include "App/dtsexport/ProductionDTSExport.hpp"
#include "App/exchange/Base64.hpp"
#include "App/exchange/ProductionArchive.hpp"
#include "App/exchange/ProductionArchiveFormat.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/DecimalJSON.hpp"
#include "App/model/EntryText.hpp"
#include "App/model/JSONFields.hpp"
#include "App/rules/PositionDefaults.hpp"
#include "App/rules/RulesetDrafts.hpp"

// Importing a production archive: the document decoded and checked whole, in the order the checks are
// documented, before one write of everything it holds.
namespace tessel {
namespace {

using Document = nlohmann::json;
using namespace archive_format;
using Error = ProductionArchiveError;

constexpr std::size_t signatureLimit = 5'000'000;
constexpr std::size_t workStateLimit = 200;
// Notes longer than this could never be printed on a form; an archive carrying them is damaged.
constexpr std::size_t notesLimit = 20'000;

std::string path(std::string_view collection, std::size_t index, std::string_view key = {}) {
    std::string p = std::string(collection) + "[" + std::to_string(index) + "]";
    return key.empty() ? p : p + "." + std::string(key);
}

[[noreturn]] void malformed(const std::string& text) { throw Error::invalidArchive(text); }

// A value of the kind the field carries, or the decoder's sentence naming it. The field's path is asked
// of `where` only for the sentence: composing it for each of a season's values cost a tenth of an import.
template <typename Where>
void checkKind(const Document& value, FieldKind kind, const Where& where) {
    const auto expect = [&](bool ok, std::string_view what) {
        if (!ok) malformed("The field \u201C" + where() + "\u201D must be " + std::string(what) + ".");
    };
    switch (kind) {
        case FieldKind::id:
        case FieldKind::uuid: expect(value.is_string() && Uuid::parse(value.get_ref<const std::string&>()).has_value(), "an identifier"); break;
        case FieldKind::text:
        case FieldKind::identityText: expect(value.is_string(), "text"); break;
        case FieldKind::integer: expect(value.is_number_integer(), "a whole number"); break;
        case FieldKind::boolean: expect(value.is_boolean(), "true or false"); break;
        // Whether a decimal reads is a content check with its own sentence.
        case FieldKind::decimal: expect(value.is_string(), "a decimal number as text"); break;
        case FieldKind::date: expect(value.is_string() && calendar_text::parseInstant(value.get_ref<const std::string&>()).has_value(), "an ISO 8601 date"); break;
        case FieldKind::bytes: expect(value.is_string() && base64::decode(value.get_ref<const std::string&>()).has_value(), "base64 text"); break;
        case FieldKind::uuidList:
            expect(value.is_array(), "a list of identifiers");
            for (const auto& item : value) expect(item.is_string() && Uuid::parse(item.get<std::string>()).has_value(), "a list of identifiers");
            break;
        case FieldKind::textList:
            expect(value.is_array(), "a list of text");
            for (const auto& item : value) expect(item.is_string(), "a list of text");
            break;
        case FieldKind::object: expect(value.is_object(), "an object"); break;
        case FieldKind::objectList:
            // The one list of objects is an engagement's dated scale settings; each of their values is checked.
            expect(value.is_array(), "a list of objects");
            for (std::size_t i = 0; i < value.size(); ++i) {
                const Document& item = value[i];
                expect(item.is_object(), "a list of objects");
                for (const auto& [key, itemKind] : {std::pair("effectiveDate", FieldKind::date), std::pair("appliedScaleAmount", FieldKind::decimal),
                                                    std::pair("currencyCode", FieldKind::text), std::pair("followsPositionScale", FieldKind::boolean)}) {
                    const std::string name = key;  // lambdas capture no structured bindings in every compiler
                    const std::function<std::string()> at = [&] { return where() + "[" + std::to_string(i) + "]." + name; };
                    const auto found = item.find(name);
                    if (found == item.end()) malformed("The field \u201C" + at() + "\u201D is missing.");
                    checkKind(*found, itemKind, at);
                }
            }
            break;
    }
}

template <typename Where>
void checkRecord(const Document& record, const Collection& collection, const Where& where) {
    if (!record.is_object()) malformed("The field \u201C" + where() + "\u201D must be an object.");
    for (const auto& field : collection.fields) {
        const auto at = [&] { return where() + "." + std::string(field.key); };
        const auto found = record.find(field.key);
        if (found == record.end() || found->is_null()) {
            if (field.optional || field.kind == FieldKind::textList) continue;
            malformed("The field \u201C" + at() + "\u201D is missing.");
        }
        checkKind(*found, field.kind, at);
    }
}

// Step 1: the document and each collection decoded against the archive's description.
Document decoded(const std::string& bytes) {
    Document document;
    try {
        document = decimal_json::parse<Document>(bytes);
    } catch (const std::exception& error) {
        malformed(error.what());
    }
    if (!document.is_object()) malformed("The document must be a JSON object.");
    if (!document.contains("metadata") || !document["metadata"].is_object()) malformed("The field \u201Cmetadata\u201D is missing.");
    return document;
}

std::vector<const Document*> recordsOf(const Document& document, const Collection& collection) {
    std::vector<const Document*> records;
    const auto found = document.find(std::string(collection.key));
    if (found == document.end() || found->is_null()) {
        if (collection.shape == Shape::list || collection.shape == Shape::single) {
            // Lists that every version carries must be there; an absent optional list reads as empty.
            malformed("The field \u201C" + std::string(collection.key) + "\u201D is missing.");
        }
        return records;
    }
    if (collection.shape == Shape::single || collection.shape == Shape::optionalSingle) {
        checkRecord(*found, collection, [&] { return std::string(collection.key); });
        records.push_back(&*found);
        return records;
    }
    if (!found->is_array()) malformed("The field \u201C" + std::string(collection.key) + "\u201D must be a list.");
    for (std::size_t i = 0; i < found->size(); ++i) {
        checkRecord((*found)[i], collection, [&] { return path(collection.key, i); });
        records.push_back(&(*found)[i]);
    }
    return records;
}

std::string text(const Document& record, std::string_view key) {
    const auto found = record.find(std::string(key));
    return found != record.end() && found->is_string() ? found->get<std::string>() : std::string();
}

struct Decoded {
    Document document;
    std::map<std::string_view, std::vector<const Document*>> records;  // by collection key
};

// Steps 3 and 4: the metadata names the production carried, and the production's own values are sane.
void checkProduction(const Decoded& archive) {
    const Document& metadata = archive.document["metadata"];
    const Document& production = *archive.records.at("production").front();
    if (text(metadata, "productionID") != text(production, "id")) throw Error::invalidArchive("Production metadata identity does not match the payload.");
    if (text(production, "defaultWorkState").size() > workStateLimit) throw Error::invalidArchive("The default Work State is invalid.");
    if (production.contains("signatureImageData") && production["signatureImageData"].is_string()) {
        const auto signature = base64::decode(production["signatureImageData"].get<std::string>()).value_or("");
        if (signature.size() > signatureLimit) throw Error::invalidArchive("The DTS signature image is too large.");
        try {
            dts_export::checkSignatureImage(signature);
        } catch (const ModelValidationError&) {
            throw Error::invalidArchive("The DTS signature image is invalid.");
        }
    }
    for (const Document* workday : archive.records.at("workdays")) {
        if (text(*workday, "workStateOverride").size() > workStateLimit) throw Error::invalidArchive("A DTS Work State override is invalid.");
        if (text(*workday, "notes").size() > notesLimit) throw Error::invalidArchive("DTS Notes are too large.");
    }
}

// A base64 blob that reads as what it holds; an empty blob holds nothing and passes (the optional
// payloads are stored empty). The reason, when there is one, is the reader's sentence.
std::optional<std::string> payloadProblem(std::string_view kind, const Document& value) {
    const auto bytes = value.is_string() ? base64::decode(value.get<std::string>()) : std::nullopt;
    if (!bytes) return std::string("The payload is not base64.");
    if (bytes->empty()) return std::nullopt;
    if (kind == "pdf") return bytes->starts_with("%PDF-") ? std::nullopt : std::optional<std::string>("The PDF does not begin as a PDF.");
    try {
        if (kind == "positionDefaults") {
            position_defaults::read(*bytes);
        } else if (kind == "positionOverrides") {
            position_defaults::readOverrides(*bytes);
        } else {
            const auto json = decimal_json::parse<Json>(*bytes);
            if (kind == "schedule") rules_json::scheduleDraft(json, "schedule");
            if (kind == "turnaroundRules") rules_json::turnaroundDraft(json, "turnaroundRules");
            if (kind == "mealPenaltyRules") rules_json::mealPenaltyDraft(json, "mealPenaltyRules");
        }
    } catch (const MalformedInputError& error) {
        return std::string(error.what());
    } catch (const decimal_json::MalformedJSONError& error) {
        return std::string(error.what());
    }
    return std::nullopt;
}

// The "|"-separated values of a check's argument.
std::vector<std::string_view> alternatives(std::string_view values) {
    std::vector<std::string_view> all;
    for (std::size_t bar = values.find('|');; bar = values.find('|')) {
        all.push_back(values.substr(0, bar));
        if (bar == std::string_view::npos) return all;
        values.remove_prefix(bar + 1);
    }
}

// A date of the record that is absent does not bound the value (an open rate-card period has no end).
bool notAfter(const Document& value, const Document& record, std::string_view laterKeys) {
    const auto instant = [](const Document& date) { return date.is_string() ? calendar_text::parseInstant(date.get<std::string>()) : std::nullopt; };
    const auto earlier = instant(value);
    for (const auto key : alternatives(laterKeys)) {
        const auto later = record.find(std::string(key));
        if (later == record.end() || later->is_null()) continue;
        const auto bound = instant(*later);
        if (!earlier || !bound || *bound < *earlier) return false;
    }
    return true;
}

bool isCurrencyCode(const Document& value) {
    if (!value.is_string()) return false;
    const std::string code = value.get<std::string>();
    return code.size() == 3 && std::all_of(code.begin(), code.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

// Whether no two records of the collection share the value of the check's key (and of its argument's,
// for a pair).
bool unique(const Check& check, const std::vector<const Document*>& records) {
    std::set<std::pair<std::string, std::string>> seen;
    for (const Document* record : records) {
        const std::string second = check.rule == Check::Rule::uniquePair ? text(*record, std::string(check.argument)) : std::string();
        if (!seen.emplace(text(*record, std::string(check.key)), second).second) return false;
    }
    return true;
}

// The identities of each collection's records, viewing the document's own text.
using Identities = std::unordered_map<std::string_view, std::unordered_set<std::string_view>>;

bool passes(const Check& check, const Document& value, const Document& record, const Identities& ids) {
    using R = Check::Rule;
    switch (check.rule) {
        case R::reference: {
            const auto target = ids.find(check.argument);
            const auto named = [&](const Document& id) {
                return id.is_string() && target != ids.end() && target->second.contains(id.get_ref<const std::string&>());
            };
            if (value.is_array()) return std::all_of(value.begin(), value.end(), named);
            return named(value);
        }
        case R::decimal: return value.is_string() && Decimal::parse(value.get<std::string>()).has_value();
        case R::nonNegativeDecimal: {
            const auto amount = value.is_string() ? Decimal::parse(value.get<std::string>()) : std::nullopt;
            return amount && !(*amount < Decimal(0));
        }
        case R::oneOf: {
            if (!value.is_string()) return false;
            const auto values = alternatives(check.argument);
            return std::find(values.begin(), values.end(), value.get<std::string>()) != values.end();
        }
        case R::notEmpty: return value.is_string() && !entry_text::isBlank(value.get<std::string>());
        case R::nonNegativeInteger: return value.is_number_integer() && value.get<std::int64_t>() >= 0;
        case R::weekday: return value.is_number_integer() && value.get<std::int64_t>() >= 1 && value.get<std::int64_t>() <= 7;
        case R::payload: return !payloadProblem(check.argument, value);
        case R::notAfter: return notAfter(value, record, check.argument);
        case R::currency: return isCurrencyCode(value);
        case R::uniqueID:
        case R::uniquePair: return true;  // a property of the collection, checked apart
    }
    return false;
}

// The earning lines of each confirmed stub: one order value each, a label, amounts that read.
void checkEarningLines(const Document& stub) {
    std::set<std::int64_t> orders;
    const auto lines = stub.find("earningLines");
    if (lines == stub.end() || !lines->is_array()) malformed("The field \u201CactualPayStubs[].earningLines\u201D is missing.");
    for (std::size_t i = 0; i < lines->size(); ++i) {
        const Document& line = (*lines)[i];
        checkRecord(line, earningLines(), [&] { return path("earningLines", i); });
        if (!orders.insert(line["displayOrder"].get<std::int64_t>()).second) {
            throw Error::invalidArchive("A confirmed pay stub has duplicate earning-line order values.");
        }
        if (entry_text::isBlank(text(line, "printedLabel"))) throw Error::invalidArchive("An Actual Pay earning label is missing.");
        const auto reads = [&](const char* key) { return !line.contains(key) || line[key].is_null() || Decimal::parse(line[key].get<std::string>()); };
        if (!reads("hours")) throw Error::invalidArchive("An Actual Pay earning-hours value is invalid.");
        if (!reads("rate")) throw Error::invalidArchive("An Actual Pay earning-rate value is invalid.");
        if (!reads("amount")) throw Error::invalidArchive("An Actual Pay earning amount is invalid.");
    }
}

// Step 5: every check of the records' content, in its documented order.
void checkContent(const Decoded& archive) {
    Identities ids;
    for (const auto& [key, records] : archive.records) {
        auto& identities = ids[key];
        for (const Document* record : records) {
            const auto id = record->find("id");
            if (id != record->end() && id->is_string()) identities.insert(id->get_ref<const std::string&>());
        }
    }
    std::set<std::pair<std::string, std::string>> stubs;
    for (const Document* stub : archive.records.at("actualPayStubs")) {
        if (!stubs.emplace(text(*stub, "crewMemberID"), text(*stub, "payrollWeekID")).second) {
            throw Error::invalidArchive("Competing confirmed pay stubs exist for one crew member and Payroll Week.");
        }
    }
    for (const auto& check : checks()) {
        if (check.key.empty()) {  // a top-level setting
            const auto found = archive.document.find(std::string(check.collection));
            if (found != archive.document.end() && !found->is_null() && !passes(check, *found, archive.document, ids)) {
                throw Error::invalidArchive(std::string(check.message));
            }
            continue;
        }
        const auto& records = archive.records.at(check.collection);
        if ((check.rule == Check::Rule::uniqueID || check.rule == Check::Rule::uniquePair) && !unique(check, records)) {
            throw Error::invalidArchive(std::string(check.message));
        }
        for (const Document* record : records) {
            const auto found = record->find(std::string(check.key));
            if (found == record->end() || found->is_null()) continue;
            if (passes(check, *found, *record, ids)) continue;
            // A sentence ending in a colon is followed by the reason.
            const bool withReason = check.message.ends_with(":");
            throw Error::invalidArchive(std::string(check.message) +
                                        (withReason ? " " + payloadProblem(check.argument, *found).value_or("") : std::string()));
        }
        // A stub's earning lines are checked right after the stub's own values.
        if (check.collection == "actualPayStubs" && check.key == "confirmedAt") {
            for (const Document* stub : archive.records.at("actualPayStubs")) checkEarningLines(*stub);
        }
    }
}

// ---- writing ----

class Writer {
public:
    Writer(ModelContext& context, bool copy, Instant now) : context_(context), copy_(copy), stamp_(calendar_text::formatInstant(now)) {}

    // In a copy every record gets a new identity, and every reference to a record of the archive follows it.
    void assignIdentities(const Decoded& archive) {
        if (!copy_) return;
        for (const auto& [key, records] : archive.records) {
            for (const Document* record : records) {
                renamed_.emplace(text(*record, "id"), Uuid::generate().text());
                if (key == "actualPayStubs") {
                    for (const auto& line : (*record)["earningLines"]) renamed_.emplace(text(line, "id"), Uuid::generate().text());
                }
            }
        }
    }

    std::string identity(const std::string& id) const {
        const auto found = renamed_.find(id);
        return found == renamed_.end() ? id : found->second;
    }

    // The text with each identity of the archive in it replaced by its record's new one.
    std::string identitiesFollowed(const std::string& text) const {
        if (!copy_) return text;
        static constexpr std::size_t uuidLength = 36;
        std::string result;
        std::size_t from = 0;
        for (std::size_t at = 0; at + uuidLength <= text.size();) {
            const std::string candidate = text.substr(at, uuidLength);
            const auto found = renamed_.find(candidate);
            if (found == renamed_.end()) {
                ++at;
                continue;
            }
            result += text.substr(from, at - from) + found->second;
            at += uuidLength;
            from = at;
        }
        return result + text.substr(from);
    }

    void write(const Collection& collection, const Document& given, const std::string& productionID) {
        Document labelled;
        const Document& record = withProvenanceLabel(collection, given, labelled);
        for (const auto& [table, stored] : planOf(collection)) {
            const auto present = valuesIn(record, stored);
            if (table.alias != "t" && present.empty()) continue;
            if (table.alias == "r" && record.contains("payrollPositionRates") && !record["payrollPositionRates"].empty()) continue;
            insert(collection, table, record, present, productionID);
        }
        if (collection.key == "engagements") writeEngagementLists(record);
        if (collection.key == "actualPayStubs") {
            static const StoredTable lines{"t", "ConfirmedPayStubEarningLine", ""};
            const auto& stored = planOf(earningLines()).front().second;
            for (const auto& line : record["earningLines"]) {
                insert(earningLines(), lines, line, valuesIn(line, stored), productionID, std::pair(std::string("payStubID"), identity(text(record, "id"))));
            }
        }
    }

    void writeSetting(const Collection& setting, const Document& value, const std::string& productionID) {
        const std::string table(setting.from.substr(0, setting.from.find(' ')));
        const std::string column = storedColumn(setting.fields.front().column, "t");
        auto& statement = context_.prepare("INSERT OR REPLACE INTO " + table + " (productionID, " + column + ") VALUES (?1, ?2)");
        columns::bind(statement, 1, productionID);
        bindValue(statement, 2, value, setting.fields.front().kind);
        statement.exec();
    }

private:
    // Each table of a collection with the stored columns of its fields and their keys, worked out once.
    struct StoredField {
        std::string column, key;
        FieldKind kind;
    };
    using TablePlan = std::vector<std::pair<StoredTable, std::vector<StoredField>>>;
    const TablePlan& planOf(const Collection& collection) {
        auto found = plans_.find(collection.key);
        if (found != plans_.end()) return found->second;
        TablePlan plan;
        for (const auto& table : tablesOf(collection)) {
            std::vector<StoredField> stored;
            for (const auto& field : collection.fields) {
                const auto column = storedColumn(field.column, table.alias);
                if (!column.empty()) stored.push_back({column, std::string(field.key), field.kind});
            }
            plan.emplace_back(table, std::move(stored));
        }
        return plans_.emplace(collection.key, std::move(plan)).first->second;
    }

    // The stored fields the record has a value for, with the value.
    using PresentValues = std::vector<std::pair<const StoredField*, const Document*>>;
    static PresentValues valuesIn(const Document& record, const std::vector<StoredField>& stored) {
        PresentValues present;
        for (const auto& field : stored) {
            const auto value = record.find(field.key);
            if (value != record.end() && !value->is_null()) present.emplace_back(&field, &*value);
        }
        return present;
    }

    // The INSERT of the table with these columns, composed once per table and set of columns.
    const std::string& insertStatement(std::string_view table, const std::vector<std::string_view>& names) {
        std::string key(table);
        for (const auto name : names) key.append(",").append(name);
        auto found = inserts_.find(key);
        if (found != inserts_.end()) return found->second;
        std::string sql = "INSERT INTO " + std::string(table) + " (";
        for (std::size_t i = 0; i < names.size(); ++i) sql.append(i ? ", " : "").append(names[i]);
        sql += ") VALUES (";
        for (std::size_t i = 0; i < names.size(); ++i) sql += (i ? ", ?" : "?") + std::to_string(i + 1);
        return inserts_.emplace(std::move(key), sql + ")").first->second;
    }

    // A position that arrives without its package provenance and without notes says so in its notes.
    static const Document& withProvenanceLabel(const Collection& collection, const Document& record, Document& labelled) {
        if (collection.key != "productionPositions" || record.contains("sourceRatePackageID") || record.contains("sourceNotes")) return record;
        labelled = record;
        labelled["sourceNotes"] = std::string(production_archive::legacyPositionLabel);
        return labelled;
    }

    // "t.name" is the column "name" of the table aliased "t"; "coalesce(t.data, x'')" reads the same column.
    static std::string storedColumn(std::string_view expression, std::string_view alias) {
        if (expression.starts_with("coalesce(")) expression = expression.substr(9, expression.find(',') - 9);
        const std::string prefix = std::string(alias) + ".";
        if (!expression.starts_with(prefix)) return {};
        const auto column = expression.substr(prefix.size());
        return column.find_first_of(" ()") == std::string_view::npos ? std::string(column) : std::string();
    }

    void bindValue(SQLite::Statement& statement, int index, const Document& value, FieldKind kind) {
        switch (kind) {
            case FieldKind::id:
            case FieldKind::uuid: columns::bind(statement, index, identity(value.get_ref<const std::string&>())); break;
            case FieldKind::identityText: columns::bind(statement, index, identitiesFollowed(value.get_ref<const std::string&>())); break;
            case FieldKind::text:
            case FieldKind::decimal:
            case FieldKind::date: columns::bind(statement, index, value.get_ref<const std::string&>()); break;
            case FieldKind::integer: statement.bind(index, value.get<std::int64_t>()); break;
            case FieldKind::boolean: statement.bind(index, value.get<bool>() ? 1 : 0); break;
            case FieldKind::bytes: columns::bindBlob(statement, index, *base64::decode(value.get<std::string>())); break;
            case FieldKind::textList:
            case FieldKind::object: columns::bindBlob(statement, index, decimal_json::dump(value)); break;
            case FieldKind::uuidList:
            case FieldKind::objectList: break;
        }
    }

    void insert(const Collection& collection, const StoredTable& table, const Document& record,
                const PresentValues& present, const std::string& productionID,
                std::optional<std::pair<std::string, std::string>> owner = std::nullopt) {
        std::vector<std::string_view> names;
        for (const auto& value : present) names.push_back(value.first->column);
        std::vector<std::string> extras;  // values bound after the record's own
        if (table.alias == "t") {
            if (collection.from.find("t.productionID = ?1") != std::string_view::npos) {
                names.push_back("productionID");
                extras.push_back(productionID);
            }
            if (owner) {
                names.push_back(owner->first);
                extras.push_back(owner->second);
            }
        } else {
            names.push_back(table.ownerColumn);
            extras.push_back(identity(text(record, table.ownerKey)));
            if (table.hasOwnID) {
                names.push_back("id");
                extras.push_back(Uuid::generate().text());
            }
            // Required timestamps the record does not carry are the moment of the import.
            for (const auto stamp : table.stampColumns) {
                if (std::find(names.begin(), names.end(), stamp) != names.end()) continue;
                names.push_back(stamp);
                extras.push_back(stamp_);
            }
        }
        auto& statement = context_.prepare(insertStatement(table.table, names));
        int index = 1;
        for (const auto& [field, value] : present) bindValue(statement, index++, *value, field->kind);
        for (const auto& extra : extras) columns::bind(statement, index++, extra);
        statement.exec();
    }

    void writeEngagementLists(const Document& record) {
        const std::string engagement = identity(text(record, "id"));
        for (const auto& condition : record.value("employmentConditionIDs", Document::array())) {
            auto& statement = context_.prepare("INSERT INTO EngagementEmploymentCondition (engagementID, conditionID) VALUES (?1, ?2)");
            columns::bind(statement, 1, engagement);
            columns::bind(statement, 2, identity(condition.get<std::string>()));
            statement.exec();
        }
        for (const auto& rate : record.value("payrollPositionRates", Document::array())) {
            auto& statement = context_.prepare(
                "INSERT INTO EngagementPositionRateConfiguration (engagementID, effectiveDate, appliedScaleAmount, currencyCode, followsPositionScale) "
                "VALUES (?1, ?2, ?3, ?4, ?5)");
            columns::bind(statement, 1, engagement);
            columns::bind(statement, 2, text(rate, "effectiveDate"));
            columns::bind(statement, 3, text(rate, "appliedScaleAmount"));
            columns::bind(statement, 4, text(rate, "currencyCode"));
            statement.bind(5, rate["followsPositionScale"].get<bool>() ? 1 : 0);
            statement.exec();
        }
    }

    ModelContext& context_;
    bool copy_;
    std::string stamp_;
    std::unordered_map<std::string, std::string> renamed_;
    std::map<std::string_view, TablePlan> plans_;
    std::unordered_map<std::string, std::string> inserts_;
};

bool exists(ModelContext& context, const std::string& productionID) {
    auto& statement = context.prepare("SELECT EXISTS (SELECT 1 FROM Production WHERE id = ?1)");
    columns::bind(statement, 1, productionID);
    return columns::readFirst(statement, [](SQLite::Statement& row) { return row.getColumn(0).getInt() != 0; }).value_or(false);
}

}  // namespace

ProductionArchiveError ProductionArchiveError::unsupportedVersion(std::int64_t version) {
    return {Case::unsupportedVersion, "unsupportedVersion",
            "Tessel Archive version " + std::to_string(version) + " is not supported by this version of Tessel."};
}
ProductionArchiveError ProductionArchiveError::invalidArchive(const std::string& detail) {
    return {Case::invalidArchive, "invalidArchive", "The Tessel Archive is invalid. " + detail};
}
ProductionArchiveError ProductionArchiveError::importFailed(const std::string& detail) {
    return {Case::importFailed, "importFailed", "The Production could not be imported. " + detail};
}

namespace production_archive {

namespace {

// Steps 1 to 5: the whole document decoded and checked, nothing written.
Decoded checked(const std::string& archiveBytes) {
    Decoded archive{decoded(archiveBytes), {}};
    const Document& metadata = archive.document["metadata"];
    const auto version = metadata.find("archiveFormatVersion");
    if (version == metadata.end() || !version->is_number_integer()) malformed("The field \u201Cmetadata.archiveFormatVersion\u201D is missing.");
    if (version->get<std::int64_t>() < 1 || version->get<std::int64_t>() > formatVersion) throw Error::unsupportedVersion(version->get<std::int64_t>());
    for (const auto& collection : collections()) archive.records[collection.key] = recordsOf(archive.document, collection);
    for (const auto& setting : settings()) {
        const auto found = archive.document.find(std::string(setting.key));
        if (found != archive.document.end() && !found->is_null()) checkKind(*found, setting.fields.front().kind, [&] { return std::string(setting.key); });
    }
    checkProduction(archive);
    checkContent(archive);
    return archive;
}

}  // namespace

void checkArchive(const std::string& archiveBytes) { checked(archiveBytes); }

ImportedProduction importProduction(ModelContext& context, const std::string& archiveBytes) {
    const Decoded archive = checked(archiveBytes);
    const Document& production = *archive.records.at("production").front();
    const bool copy = exists(context, text(production, "id"));
    Writer writer(context, copy, std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
    writer.assignIdentities(archive);
    const std::string productionID = writer.identity(text(production, "id"));
    // The name and the Department Head identity are set apart before the production is written.
    Document own = production;
    if (copy) own["name"] = text(production, "name") + std::string(copySuffix);
    const bool pendingIdentity = !text(production, "departmentHeadName").empty() || production.contains("signatureImageData");
    own.erase("departmentHeadName");
    own.erase("signatureImageData");
    try {
        for (const auto& collection : collections()) {
            for (const Document* record : archive.records.at(collection.key)) {
                writer.write(collection, collection.key == "production" ? own : *record, productionID);
            }
        }
        for (const auto& setting : settings()) {
            const auto found = archive.document.find(std::string(setting.key));
            if (found != archive.document.end() && !found->is_null()) writer.writeSetting(setting, *found, productionID);
        }
        if (pendingIdentity) {
            auto& statement = context.prepare(
                "INSERT INTO PendingImportedProductionDTSIdentity (id, productionID, departmentHeadName, signatureImageData) VALUES (?1, ?2, ?3, ?4)");
            columns::bind(statement, 1, Uuid::generate());
            columns::bind(statement, 2, productionID);
            columns::bind(statement, 3, text(production, "departmentHeadName"));
            if (production.contains("signatureImageData")) {
                columns::bindBlob(statement, 4, *base64::decode(production["signatureImageData"].get<std::string>()));
            }
            statement.exec();
        }
    } catch (const SQLite::Exception& error) {
        throw Error::importFailed(error.what());
    }
    return {*Uuid::parse(productionID), text(own, "name"), copy, pendingIdentity};
}

}  // namespace production_archive
}  // namespace tessel
