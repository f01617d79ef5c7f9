#include "ProductionArchive.hpp"

#include <nlohmann/json.hpp>

#include "App/exchange/Base64.hpp"
#include "App/exchange/ProductionArchiveFormat.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/DecimalJSON.hpp"
#include "App/model/RecordRepository.hpp"

namespace tessel {
namespace {

// The archive's keys are written sorted, as nlohmann::json keeps them.
using Document = nlohmann::json;
using namespace archive_format;
using Error = ProductionArchiveExportError;

std::string exportMessage(ProductionArchiveExportErrorCase c) {
    switch (c) {
        case ProductionArchiveExportErrorCase::incompleteRelationships:
            return "The Production contains incomplete relationships and cannot be exported safely.";
        case ProductionArchiveExportErrorCase::positionTermsOwnership: return "Position terms have missing or cross-Production ownership.";
        case ProductionArchiveExportErrorCase::exportFailed: return "The Production archive could not be exported.";
    }
    return {};
}

constexpr std::array<std::string_view, 3> exportCases{"incompleteRelationships", "positionTermsOwnership", "exportFailed"};

std::string selectOf(const Collection& collection) {
    std::string sql = "SELECT ";
    for (std::size_t i = 0; i < collection.fields.size(); ++i) sql += (i ? ", " : "") + std::string(collection.fields[i].column);
    return sql + " FROM " + std::string(collection.from) + " ORDER BY " + std::string(collection.order);
}

// A stored JSON payload (a list or an object) as part of the document, its number tokens kept as written.
Document nested(const std::string& text, Document fallback) {
    if (text.empty()) return fallback;
    try {
        return decimal_json::parse<Document>(text);
    } catch (const decimal_json::MalformedJSONError&) {
        throw Error(Error::Case::exportFailed);
    }
}

Document value(const SQLite::Column& column, FieldKind kind) {
    switch (kind) {
        case FieldKind::integer: return column.getInt64();
        case FieldKind::boolean: return column.getInt() != 0;
        case FieldKind::bytes: {
            const std::string bytes(static_cast<const char*>(column.getBlob()), static_cast<std::size_t>(column.getBytes()));
            return base64::encode(bytes);
        }
        case FieldKind::uuidList:
        case FieldKind::textList:
        case FieldKind::objectList: return nested(column.getString(), Document::array());
        case FieldKind::object: return nested(column.getString(), Document::object());
        case FieldKind::id:
        case FieldKind::uuid:
        case FieldKind::text:
        case FieldKind::identityText:
        case FieldKind::decimal:
        case FieldKind::date: return column.getString();
    }
    return nullptr;
}

// The records of one collection; a required value that is missing is an incomplete relationship.
std::vector<Document> records(ModelContext& context, const Collection& collection, const std::string& owner) {
    auto& statement = context.prepare(selectOf(collection));
    columns::bind(statement, 1, owner);
    std::vector<Document> result;
    while (statement.executeStep()) {
        Document record = Document::object();
        for (std::size_t i = 0; i < collection.fields.size(); ++i) {
            const Field& field = collection.fields[i];
            const SQLite::Column column = statement.getColumn(static_cast<int>(i));
            if (column.isNull()) {
                if (field.optional || field.kind == FieldKind::textList) continue;
                statement.reset();
                throw Error(Error::Case::incompleteRelationships);
            }
            record[std::string(field.key)] = value(column, field.kind);
        }
        result.push_back(std::move(record));
    }
    statement.reset();
    return result;
}

// Position terms whose card or position belongs to no production or to another.
void checkTermsOwnership(ModelContext& context, const std::string& productionID) {
    auto& statement = context.prepare(
        "SELECT EXISTS (SELECT 1 FROM ProductionRateCardPositionTerms t JOIN ProductionRateCard r ON r.id = t.productionRateCardID WHERE "
        "r.productionID = ?1 AND NOT EXISTS (SELECT 1 FROM ProductionPosition p WHERE p.id = t.productionPositionID AND p.productionID = ?1))");
    columns::bind(statement, 1, productionID);
    const bool crossed = columns::readFirst(statement, [](SQLite::Statement& row) { return row.getColumn(0).getInt() != 0; }).value_or(false);
    if (crossed) throw Error(Error::Case::positionTermsOwnership);
}

}  // namespace

ProductionArchiveExportError::ProductionArchiveExportError(Case errorCase)
    : CaseError(errorCase, std::string(exportCases[static_cast<std::size_t>(errorCase)]), exportMessage(errorCase)) {}

namespace production_archive {

std::string exportProduction(ModelContext& context, const Uuid& productionID, Instant exportedAt, const std::string& applicationVersion,
                             const std::string& applicationBuild) {
    const std::string owner = productionID.text();
    checkTermsOwnership(context, owner);
    Document archive = Document::object();
    for (const auto& collection : collections()) {
        auto found = records(context, collection, owner);
        if (collection.shape == Shape::single || collection.shape == Shape::optionalSingle) {
            if (!found.empty()) archive[std::string(collection.key)] = std::move(found.front());
            if (found.empty() && collection.shape == Shape::single) throw Error(Error::Case::incompleteRelationships);
            continue;
        }
        if (collection.key == "actualPayStubs") {
            for (auto& stub : found) {
                const auto lines = records(context, earningLines(), stub["id"].get<std::string>());
                stub["earningLines"] = Document(lines);
            }
        }
        archive[std::string(collection.key)] = Document(std::move(found));
    }
    for (const auto& setting : settings()) {
        auto found = records(context, setting, owner);
        if (!found.empty()) archive[std::string(setting.key)] = std::move(found.front()[std::string(setting.fields.front().key)]);
    }
    const auto& production = archive["production"];
    archive["metadata"] = Document{{"archiveFormatVersion", formatVersion},
                                   {"applicationVersion", applicationVersion},
                                   {"applicationBuild", applicationBuild},
                                   {"exportedAt", calendar_text::formatInstant(exportedAt)},
                                   {"productionID", production["id"]},
                                   {"productionName", production["name"]}};
    return decimal_json::dump(archive, 2) + "\n";
}

}  // namespace production_archive
}  // namespace tessel
