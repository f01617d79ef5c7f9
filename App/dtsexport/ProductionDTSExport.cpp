#include "ProductionDTSExport.hpp"

#include <leptonica/allheaders.h>

#include <array>
#include <fstream>

#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/NewFile.hpp"
#include "App/model/ProductionWeekCalendars.hpp"

namespace tessel {
namespace {

constexpr std::array<std::string_view, 3> modeNames{"unconfigured", "productionTemplate", "legacyKestrel"};

std::string exportMessage(ProductionDTSExportErrorCase c) {
    switch (c) {
        case ProductionDTSExportErrorCase::missingProduction: return "This DTS has no Production.";
        case ProductionDTSExportErrorCase::unconfigured:
            return "This Production doesn\u2019t have a DTS export form selected. Choose a DTS export form in Production Settings.";
        case ProductionDTSExportErrorCase::legacyNotEligible:
            return "This Production is not enabled for the Kestrel built-in DTS. Choose a Production DTS Template in Production Settings.";
        case ProductionDTSExportErrorCase::mappedTemplateUnavailable:
            return "This Production\u2019s DTS Template is unavailable or not approved. Approve a Production DTS Template in Production Settings, or "
                   "choose another export form.";
        case ProductionDTSExportErrorCase::unsupportedMode: return "This Production\u2019s DTS export selection is not supported by this version of Tessel.";
    }
    return {};
}

constexpr std::array<std::string_view, 5> exportCaseNames{"missingProduction", "unconfigured", "legacyNotEligible", "mappedTemplateUnavailable",
                                                          "unsupportedMode"};

std::string rendererMessage(DTSPDFRendererErrorCase c) {
    switch (c) {
        case DTSPDFRendererErrorCase::templateUnavailable: return "The Production DTS PDF template is unavailable.";
        case DTSPDFRendererErrorCase::invalidTemplate: return "The Production DTS PDF template could not be read.";
        case DTSPDFRendererErrorCase::unexpectedPageSize: return "The Production DTS PDF template has an unexpected page size.";
        case DTSPDFRendererErrorCase::notesDoNotFit:
            return "DTS Notes are too long to fit safely in the Production DTS template. Shorten the Notes and try again.";
        case DTSPDFRendererErrorCase::outputCreationFailed: return "Tessel could not create the Production DTS PDF.";
        case DTSPDFRendererErrorCase::valueDoesNotFit: return "A value does not fit safely in the Production DTS template.";
    }
    return {};
}

constexpr std::array<std::string_view, 6> rendererCaseNames{"templateUnavailable", "invalidTemplate", "unexpectedPageSize", "notesDoNotFit",
                                                            "outputCreationFailed", "valueDoesNotFit"};

// The eligibility for the built-in form is a setting added after the store's layout was fixed: it lives
// in its own table, made on first change; a store without it has no production eligible.
constexpr const char* eligibilityTable =
    "CREATE TABLE IF NOT EXISTS ProductionDTSExportEligibility (productionID TEXT PRIMARY KEY NOT NULL REFERENCES Production(id) ON DELETE "
    "CASCADE, legacyKestrelEligible INTEGER NOT NULL)";

bool tableExists(ModelContext& context, const char* name) {
    auto& statement = context.prepare("SELECT EXISTS (SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1)");
    columns::bind(statement, 1, std::string(name));
    return columns::readFirst(statement, [](SQLite::Statement& row) { return row.getColumn(0).getInt() != 0; }).value_or(false);
}

std::optional<std::string> formatted(const Production& production, const std::optional<Instant>& time, CalendarDate date) {
    if (!time) return std::nullopt;
    return payroll_decimal_time::formatForDisplay(production.dtsTimeDisplay, time, date);
}

std::optional<std::string> nonEmpty(const std::string& text) { return text.empty() ? std::nullopt : std::optional(text); }

}  // namespace

std::string_view toRawValue(ProductionDTSExportTemplateMode mode) noexcept { return modeNames[static_cast<std::size_t>(mode)]; }

ProductionDTSExportError::ProductionDTSExportError(Case errorCase)
    : CaseError(errorCase, std::string(exportCaseNames[static_cast<std::size_t>(errorCase)]), exportMessage(errorCase)) {}

std::string ProductionDTSExportError::alertTitle() const {
    switch (errorCase()) {
        case Case::unconfigured: return "DTS Export Form Not Configured";
        case Case::mappedTemplateUnavailable: return "Production DTS Template Unavailable";
        case Case::legacyNotEligible:
        case Case::unsupportedMode: return "DTS Export Form Unavailable";
        case Case::missingProduction: break;
    }
    return std::string(dts_export_words::exportFailedTitle);
}

DTSPDFRendererError::DTSPDFRendererError(Case errorCase) : DTSPDFRendererError(errorCase, rendererMessage(errorCase)) {}
DTSPDFRendererError::DTSPDFRendererError(Case errorCase, const std::string& description)
    : CaseError(errorCase, std::string(rendererCaseNames[static_cast<std::size_t>(errorCase)]), description) {}
DTSPDFRendererError DTSPDFRendererError::valueDoesNotFit(const std::string& value) {
    return {Case::valueDoesNotFit, "\u201C" + value + "\u201D does not fit safely in the Production DTS template."};
}

namespace dts_export {

ProductionDTSExportChoice choice(ModelContext& context, const Uuid& productionID) {
    ProductionDTSExportChoice result;
    auto& mode = context.prepare("SELECT modeRawValue FROM ProductionDTSExportSelection WHERE productionID = ?1");
    columns::bind(mode, 1, productionID);
    if (const auto raw = columns::readFirst(mode, [](SQLite::Statement& row) { return row.getColumn(0).getString(); })) {
        if (*raw == "unconfigured") {
            result.mode = ProductionDTSExportTemplateMode::unconfigured;
        } else if (*raw == "productionTemplate" || *raw == "mappedProductionTemplate") {
            result.mode = ProductionDTSExportTemplateMode::productionTemplate;
        } else if (*raw == "legacyKestrel") {
            result.mode = ProductionDTSExportTemplateMode::legacyKestrel;
        } else {
            result.unsupportedRawValue = *raw;
        }
    }
    if (tableExists(context, "ProductionDTSExportEligibility")) {
        auto& eligible = context.prepare("SELECT legacyKestrelEligible FROM ProductionDTSExportEligibility WHERE productionID = ?1");
        columns::bind(eligible, 1, productionID);
        result.legacyKestrelEligible = columns::readFirst(eligible, [](SQLite::Statement& row) { return row.getColumn(0).getInt() != 0; }).value_or(false);
    }
    return result;
}

void setMode(ModelContext& context, const Uuid& productionID, ProductionDTSExportTemplateMode mode) {
    auto& statement = context.prepare("INSERT OR REPLACE INTO ProductionDTSExportSelection (productionID, modeRawValue) VALUES (?1, ?2)");
    columns::bind(statement, 1, productionID);
    columns::bind(statement, 2, std::string(toRawValue(mode)));
    statement.exec();
}

void setBuiltInFormEligible(ModelContext& context, const Uuid& productionID, bool eligible) {
    context.prepare(eligibilityTable).exec();
    auto& statement = context.prepare("INSERT OR REPLACE INTO ProductionDTSExportEligibility (productionID, legacyKestrelEligible) VALUES (?1, ?2)");
    columns::bind(statement, 1, productionID);
    columns::bind(statement, 2, eligible);
    statement.exec();
}

void checkSignatureImage(const std::string& bytes) {
    constexpr std::size_t limit = 5 * 1024 * 1024;
    const auto refuse = [] { throw ModelValidationError(std::string(dts_export_words::signatureRefused)); };
    if (bytes.empty() || bytes.size() >= limit) refuse();
    const auto* data = reinterpret_cast<const l_uint8*>(bytes.data());
    l_int32 format = IFF_UNKNOWN;
    if (findFileFormatBuffer(data, &format) != 0) refuse();
    const bool accepted = format == IFF_PNG || format == IFF_JFIF_JPEG || format == IFF_TIFF || format == IFF_TIFF_PACKBITS ||
                          format == IFF_TIFF_RLE || format == IFF_TIFF_G3 || format == IFF_TIFF_G4 || format == IFF_TIFF_LZW ||
                          format == IFF_TIFF_ZIP || format == IFF_TIFF_JPEG;
    if (!accepted) refuse();
    PIX* pix = pixReadMem(data, bytes.size());
    if (!pix) refuse();
    const bool sensible = pixGetWidth(pix) > 0 && pixGetHeight(pix) > 0 && pixGetWidth(pix) <= 10000 && pixGetHeight(pix) <= 10000;
    pixDestroy(&pix);
    if (!sensible) refuse();
}

void setSignature(ModelContext& context, const Uuid& productionID, const std::string& imageBytes) {
    checkSignatureImage(imageBytes);
    auto& existing = context.prepare("SELECT id FROM ProductionDTSExportConfiguration WHERE productionID = ?1");
    columns::bind(existing, 1, productionID);
    if (!columns::readFirst(existing, [](SQLite::Statement& row) { return row.getColumn(0).getString(); })) {
        auto& insert = context.prepare("INSERT INTO ProductionDTSExportConfiguration (id, productionID) VALUES (?1, ?2)");
        columns::bind(insert, 1, Uuid::generate());
        columns::bind(insert, 2, productionID);
        insert.exec();
    }
    auto& update = context.prepare("UPDATE ProductionDTSExportConfiguration SET signatureImageData = ?2 WHERE productionID = ?1");
    columns::bind(update, 1, productionID);
    columns::bindBlob(update, 2, imageBytes);
    update.exec();
}

void clearSignature(ModelContext& context, const Uuid& productionID) {
    auto& update = context.prepare("UPDATE ProductionDTSExportConfiguration SET signatureImageData = NULL WHERE productionID = ?1");
    columns::bind(update, 1, productionID);
    update.exec();
}

std::optional<std::string> signature(ModelContext& context, const Uuid& productionID) {
    auto& signature = context.prepare("SELECT signatureImageData FROM ProductionDTSExportConfiguration WHERE productionID = ?1");
    columns::bind(signature, 1, productionID);
    return columns::readFirst(signature, [](SQLite::Statement& row) -> std::optional<std::string> {
               if (row.getColumn(0).isNull()) return std::nullopt;
               return columns::blob(row.getColumn(0));
           }).value_or(std::nullopt);
}

void checkBuiltInFormChosen(const ProductionDTSExportChoice& choice) {
    using Case = ProductionDTSExportErrorCase;
    if (choice.unsupportedRawValue) throw ProductionDTSExportError(Case::unsupportedMode);
    switch (choice.mode) {
        case ProductionDTSExportTemplateMode::unconfigured: throw ProductionDTSExportError(Case::unconfigured);
        // Reached when no approved template exists: export takes the approved one before asking here.
        case ProductionDTSExportTemplateMode::productionTemplate: throw ProductionDTSExportError(Case::mappedTemplateUnavailable);
        case ProductionDTSExportTemplateMode::legacyKestrel:
            if (!choice.legacyKestrelEligible) throw ProductionDTSExportError(Case::legacyNotEligible);
            return;
    }
}

DTSExportPreflight preflight(const DTSWorkdayFacts& facts) {
    DTSExportPreflight result;
    for (const auto& row : facts.rows) {
        const std::string name = row.crewName.empty() ? "(removed crew member)" : row.crewName;
        if (!row.crewMemberID || !row.engagementID || row.crewName.empty()) {
            result.blocking.push_back({row.entryID, name, std::string(dts_export_words::missingCrew)});
            continue;
        }
        if (row.workMode == CrewDailyWorkMode::timed && (!row.times.call.value || !row.times.wrap.value)) {
            result.warnings.push_back({row.entryID, name, "The row has no call or no wrap; the form shows it blank."});
        }
        if (row.times.lunchOut.value.has_value() != row.times.lunchIn.value.has_value()) {
            result.warnings.push_back({row.entryID, name, "The meal has an out time without an in time, or the reverse."});
        }
    }
    return result;
}

DTSExportModel model(const DTSWorkdayFacts& facts) {
    const CalendarDate date = facts.workday.calendarDate;
    DTSExportModel m;
    m.productionName = facts.production.name;
    m.date = date;
    m.weekday = ProductionWeekCalendars::weekdayOf(date);
    m.company = nonEmpty(facts.identity.company);
    m.department = nonEmpty(facts.identity.department);
    m.workState = nonEmpty(facts.workState);
    m.departmentHeadName = nonEmpty(facts.identity.departmentHeadName);
    m.departmentHeadSignatureData = facts.signatureImage;
    const auto& w = facts.workday;
    m.generalCrewCall = formatted(facts.production, w.generalCrewCall, date);
    m.lunchOut = formatted(facts.production, w.officialLunchOut, date);
    m.lunchIn = formatted(facts.production, w.officialLunchIn, date);
    m.wrap = formatted(facts.production, w.wrap, date);
    if (w.sharedTravelDurationSeconds) m.travel = payroll_decimal_time::formatDuration(*w.sharedTravelDurationSeconds);
    if (facts.departmentMileage) m.departmentMileage = facts.departmentMileage->toString();
    if (facts.workLocation) m.workLocation = *facts.workLocation == MealWorkLocation::studio ? "Studio" : "Location";
    m.graceCalled = w.firstMealGraceWasCalled;
    m.notes = facts.notes;
    for (const auto& row : facts.rows) {
        DTSExportModel::CrewRow r{row.entryID};
        r.employeeName = row.dtsName ? row.dtsName : nonEmpty(row.crewName);
        r.position = row.position;
        if (row.boxRental) r.box = dts_presentation::markGlyph(DTSBooleanMark::x);
        r.call = formatted(facts.production, row.times.call.value, date);
        r.meal1Out = formatted(facts.production, row.times.lunchOut.value, date);
        r.meal1In = formatted(facts.production, row.times.lunchIn.value, date);
        r.wrap = formatted(facts.production, row.times.wrap.value, date);
        if (row.nonDeductibleBreakfast) r.ndb = dts_presentation::markGlyph(DTSBooleanMark::x);
        r.workMode = row.workMode;
        m.crewRows.push_back(std::move(r));
    }
    return m;
}

DTSSemanticResolution resolve(DTSSemanticFieldID field, const DTSWorkdayFacts& facts, int page, int totalPages, const DTSCrewRowFacts* row) {
    using ID = DTSSemanticFieldID;
    using R = DTSSemanticResolution;
    const CalendarDate date = facts.workday.calendarDate;
    const auto textOf = [](const std::optional<std::string>& text) { return text && !text->empty() ? R::of(*text) : R::absent(); };
    const auto timeOf = [&](const std::optional<Instant>& time) { return time ? R::of(DTSPayrollTimeValue{*time, date}) : R::absent(); };
    const auto& w = facts.workday;
    if (dts_fields::field(field).scope == DTSSemanticScope::crewRow && !row) return R::absent();
    switch (field) {
        case ID::productionName: return textOf(facts.production.name);
        case ID::productionCompany: return textOf(facts.identity.company);
        case ID::productionDepartment: return textOf(facts.identity.department);
        case ID::workdayDate: return R::of(date);
        case ID::workdayDayOfWeek: {
            static constexpr std::array<std::string_view, 7> names{"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
            return R::of(std::string(names[static_cast<std::size_t>(ProductionWeekCalendars::weekdayOf(date) - 1)]));
        }
        case ID::workdayWorkState: return textOf(facts.workState);
        case ID::workdayWorkLocation:
            return facts.workLocation ? R::of(DTSChoiceValue{*facts.workLocation == MealWorkLocation::studio ? "studio" : "location"}) : R::absent();
        case ID::workdayNotes: return textOf(facts.notes);
        case ID::sharedCall: return timeOf(w.generalCrewCall);
        case ID::sharedLunchOut: return timeOf(w.officialLunchOut);
        case ID::sharedLunchIn: return timeOf(w.officialLunchIn);
        case ID::sharedWrap: return timeOf(w.wrap);
        case ID::sharedTravelTime: return w.sharedTravelDurationSeconds ? R::of(DTSDurationValue{*w.sharedTravelDurationSeconds}) : R::absent();
        case ID::sharedDepartmentMileage: return facts.departmentMileage ? R::of(*facts.departmentMileage) : R::absent();
        case ID::sharedGraceCalled: return R::of(w.firstMealGraceWasCalled);
        case ID::crewName: return textOf(row->crewName);
        case ID::crewDTSName: return textOf(row->dtsName);
        case ID::crewPosition: return textOf(row->position);
        case ID::crewOccupationCode: return textOf(row->occupationCode);
        case ID::crewLocality: return row->locality ? R::of(DTSChoiceValue{std::string(toRawValue(*row->locality))}) : R::absent();
        case ID::crewEmploymentSchedule: return row->schedule ? R::of(DTSChoiceValue{std::string(toRawValue(*row->schedule))}) : R::absent();
        case ID::crewCall: return timeOf(row->times.call.value);
        case ID::crewLunchOut: return timeOf(row->times.lunchOut.value);
        case ID::crewLunchIn: return timeOf(row->times.lunchIn.value);
        case ID::crewWrap: return timeOf(row->times.wrap.value);
        case ID::crewNDB: return R::of(row->nonDeductibleBreakfast);
        case ID::crewMileage: return row->mileage ? R::of(*row->mileage) : R::absent();
        case ID::crewBoxRentalApplies: return R::of(row->boxRental);
        case ID::approvalDepartmentHeadName: return textOf(facts.identity.departmentHeadName);
        case ID::approvalSignature: return facts.signatureImage ? R::of(DTSImageValue{*facts.signatureImage}) : R::absent();
        case ID::derivedPageNumber: return R::of(Decimal(page));
        case ID::derivedTotalPages: return R::of(Decimal(totalPages));
        case ID::derivedPageXOfY: return R::of(dts_presentation::pageXOfY(page, totalPages));
    }
    return R::unsupported();
}

void writeAtomically(const std::filesystem::path& path, const std::string& bytes) {
    // A DTS exported again replaces the earlier copy whole.
    if (!new_file::replace(path, bytes)) throw DTSPDFRendererError(DTSPDFRendererError::Case::outputCreationFailed);
}

}  // namespace dts_export
}  // namespace tessel
