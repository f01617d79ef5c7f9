#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "App/dtsexport/DTSSemanticField.hpp"
#include "App/dtsexport/DTSWorkdayFacts.hpp"
#include "PayrollDomain/DomainError.hpp"

// Exporting a DTS as a filled PDF: which form a production uses, the checks before export, the model the
// built-in form draws, the department head's signature, and writing the file.
namespace tessel {

// Which form a production exports its DTS on: none chosen yet, its own approved template, or the form
// built into Tessel ("legacyKestrel", kept under that raw value for the archives).
enum class ProductionDTSExportTemplateMode { unconfigured, productionTemplate, legacyKestrel };
std::string_view toRawValue(ProductionDTSExportTemplateMode mode) noexcept;

struct ProductionDTSExportChoice {
    ProductionDTSExportTemplateMode mode = ProductionDTSExportTemplateMode::unconfigured;
    std::optional<std::string> unsupportedRawValue{};  // a stored mode this version does not know
    bool legacyKestrelEligible = false;                 // the built-in form may be used by this production
};

enum class ProductionDTSExportErrorCase { missingProduction, unconfigured, legacyNotEligible, mappedTemplateUnavailable, unsupportedMode };

// Why a production cannot export with its chosen form; `alertTitle` heads the message in the window.
class ProductionDTSExportError : public CaseError<ProductionDTSExportErrorCase> {
public:
    using Case = ProductionDTSExportErrorCase;
    explicit ProductionDTSExportError(Case errorCase);
    std::string alertTitle() const;
};

enum class DTSPDFRendererErrorCase { templateUnavailable, invalidTemplate, unexpectedPageSize, notesDoNotFit, outputCreationFailed, valueDoesNotFit };

namespace dts_export_words {
inline constexpr std::string_view exportFailedTitle = "Couldn\u2019t Export Production DTS";
}  // namespace dts_export_words

class DTSPDFRendererError : public CaseError<DTSPDFRendererErrorCase> {
public:
    using Case = DTSPDFRendererErrorCase;
    explicit DTSPDFRendererError(Case errorCase);
    static DTSPDFRendererError valueDoesNotFit(const std::string& value);
    std::string alertTitle() const { return std::string(dts_export_words::exportFailedTitle); }

private:
    DTSPDFRendererError(Case errorCase, const std::string& description);
};

namespace dts_export_words {
inline constexpr std::string_view notReadyTitle = "DTS Isn\u2019t Ready to Export";
inline constexpr std::string_view reviewTitle = "Review Before Exporting";
inline constexpr std::string_view missingCrew = "Crew or engagement information is missing.";
inline constexpr std::string_view suggestedFileName = "Production DTS.pdf";
inline constexpr std::string_view reviewReminder = "Visually review the completed PDF against this Daily Time Sheet before submitting it.";
inline constexpr std::string_view openFailed = "The DTS was exported successfully, but Tessel couldn\u2019t open the PDF automatically.";
inline constexpr std::string_view signatureRefused = "The signature image could not be imported. Use a PNG, JPEG, or TIFF image smaller than 5 MB.";
inline constexpr std::string_view signaturePurpose = "Used only to complete the Department Head area of exported Production DTS forms.";
}  // namespace dts_export_words

// What the built-in form draws, every time already formatted for the form.
struct DTSExportModel {
    struct CrewRow {
        Uuid id;
        std::optional<std::string> employeeName{}, position{}, box{}, call{}, meal1Out{}, meal1In{}, meal2Out{}, meal2In{}, wrap{};
        std::optional<std::string> ndb{};  // the mark, when a non-deductible breakfast was given
        CrewDailyWorkMode workMode = CrewDailyWorkMode::timed;
    };
    std::string productionName;
    CalendarDate date;
    int weekday = 1;  // 1 Sunday … 7 Saturday
    std::optional<std::string> company, department, workState, departmentHeadName;
    std::optional<std::string> departmentHeadSignatureData;
    std::optional<std::string> generalCrewCall, lunchOut, lunchIn, wrap, travel, departmentMileage, workLocation;
    bool graceCalled = false;
    std::string notes;
    std::vector<CrewRow> crewRows;
};

struct DTSExportPreflightIssue {
    Uuid crewEntryID;
    std::string crewName;
    std::string message;
};
struct DTSExportPreflight {
    std::vector<DTSExportPreflightIssue> blocking, warnings;
};

namespace dts_export {

ProductionDTSExportChoice choice(ModelContext& context, const Uuid& productionID);
void setMode(ModelContext& context, const Uuid& productionID, ProductionDTSExportTemplateMode mode);
void setBuiltInFormEligible(ModelContext& context, const Uuid& productionID, bool eligible);

// Keeps the image as given after checking it is a PNG, JPEG or TIFF under 5 MB that can be read;
// refused with the signature sentence otherwise.
void setSignature(ModelContext& context, const Uuid& productionID, const std::string& imageBytes);
void clearSignature(ModelContext& context, const Uuid& productionID);
// The signature image as kept, if any.
std::optional<std::string> signature(ModelContext& context, const Uuid& productionID);
// Throws ModelValidationError with the signature sentence when the bytes are not a usable image.
void checkSignatureImage(const std::string& imageBytes);

// The form the production exports on, or the reason it cannot; refuses all but the built-in form,
// which is the only one this version draws.
void checkBuiltInFormChosen(const ProductionDTSExportChoice& choice);

// Every crew row checked: a row without its crew member or engagement blocks the export; a row without
// call or wrap on a worked day, or a name the form will print in place of a missing one, is a warning.
DTSExportPreflight preflight(const DTSWorkdayFacts& facts);

// The facts as the built-in form prints them: times in the production's notation, the row's DTS Name
// for Today in place of the crew member's name, its position, its box rental as a mark.
DTSExportModel model(const DTSWorkdayFacts& facts);

// The resolution of one field on one page (and row, for crew-row fields) of the exported DTS.
DTSSemanticResolution resolve(DTSSemanticFieldID field, const DTSWorkdayFacts& facts, int page, int totalPages, const DTSCrewRowFacts* row);

// Writes the bytes to the path through a temporary file renamed into place, so that a failure never
// leaves a partial file; refused with outputCreationFailed.
void writeAtomically(const std::filesystem::path& path, const std::string& bytes);

}  // namespace dts_export
}  // namespace tessel
