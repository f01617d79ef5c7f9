#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "App/model/PersistenceModels.hpp"

// Every value a Daily Time Sheet form can print, named by one field of a closed catalogue: its key, its
// scope (once per document page, or once per crew row), the kind of value and how it is drawn by
// default. Forms place these fields; the resolver gives each its value from a DTS.
namespace tessel {

enum class DTSSemanticFieldID {
    productionName, productionCompany, productionDepartment,
    workdayDate, workdayDayOfWeek, workdayWorkState, workdayWorkLocation, workdayNotes,
    sharedCall, sharedLunchOut, sharedLunchIn, sharedWrap, sharedTravelTime, sharedDepartmentMileage, sharedGraceCalled,
    crewName, crewDTSName, crewPosition, crewOccupationCode, crewLocality, crewEmploymentSchedule,
    crewCall, crewLunchOut, crewLunchIn, crewWrap, crewNDB, crewMileage, crewBoxRentalApplies,
    approvalDepartmentHeadName, approvalSignature,
    derivedPageNumber, derivedTotalPages, derivedPageXOfY,
};

enum class DTSSemanticScope { document, crewRow };
enum class DTSSemanticValueKind { text, payrollTime, date, boolean, quantity, duration, choice, image };
enum class DTSTemplateRenderingKind { text, mark, choiceGroup, image };

std::string_view toRawValue(DTSSemanticScope scope) noexcept;
std::string_view toRawValue(DTSSemanticValueKind kind) noexcept;
std::string_view toRawValue(DTSTemplateRenderingKind kind) noexcept;

struct DTSSemanticField {
    DTSSemanticFieldID id;
    std::string_view key;          // "production.name"
    std::string_view displayName;  // "Production Company"
    std::string_view category;     // "Shared DTS Facts"
    DTSSemanticScope scope;
    DTSSemanticValueKind valueKind;
    DTSTemplateRenderingKind defaultRenderingKind;
    bool isCurrentlyResolvable;
    // "production.name resolves a text value at document scope."
    std::string debugDescription() const;
};

namespace dts_fields {
// The whole catalogue, in its order.
const std::vector<DTSSemanticField>& catalogue();
const DTSSemanticField& field(DTSSemanticFieldID id);
std::optional<DTSSemanticFieldID> fromKey(std::string_view key);
std::vector<DTSSemanticField> ofScope(DTSSemanticScope scope);
}  // namespace dts_fields

// A resolved value, one case per kind: payroll times as the instant, a date as its UTC midnight.
struct DTSImageValue {
    std::string bytes;
    bool operator==(const DTSImageValue&) const = default;
};
struct DTSPayrollTimeValue {
    Instant instant;
    CalendarDate workdayDate;  // the anchor the time is told from (25.0 is 1 a.m. the next day)
    bool operator==(const DTSPayrollTimeValue&) const = default;
};
struct DTSChoiceValue {
    std::string raw;
    bool operator==(const DTSChoiceValue&) const = default;
};
struct DTSDurationValue {
    std::int64_t seconds;
    bool operator==(const DTSDurationValue&) const = default;
};
using DTSSemanticValue = std::variant<std::string, DTSPayrollTimeValue, CalendarDate, bool, Decimal, DTSDurationValue, DTSChoiceValue, DTSImageValue>;

// What a field resolves to on one page or row: a value, nothing to draw, or a field this build cannot fill.
struct DTSSemanticResolution {
    enum class Kind { value, absent, unsupported };
    Kind kind = Kind::absent;
    std::optional<DTSSemanticValue> value{};
    static DTSSemanticResolution of(DTSSemanticValue value) { return {Kind::value, std::move(value)}; }
    static DTSSemanticResolution absent() { return {Kind::absent, std::nullopt}; }
    static DTSSemanticResolution unsupported() { return {Kind::unsupported, std::nullopt}; }
};

// How one placement is drawn.
enum class DTSTimePresentation { payrollDecimal, clock12Hour, clock24Hour };
enum class DTSDatePresentation { numeric, abbreviated, long_, monthDay, monthDayShortYear, dayMonthYear };
enum class DTSTextTransform { unchanged, uppercase };
enum class DTSTextAlignment { leading, center, trailing };
enum class DTSTextFit { fixed, shrinkToFit };
enum class DTSBooleanMark { x, check, filled };

std::string_view toRawValue(DTSDatePresentation presentation) noexcept;  // "long" for long_

struct DTSTemplatePresentation {
    DTSTemplateRenderingKind renderingKind = DTSTemplateRenderingKind::text;
    std::optional<DTSTimePresentation> timePresentation{};
    std::optional<DTSDatePresentation> datePresentation{};
    DTSTextTransform textTransform = DTSTextTransform::unchanged;
    DTSTextAlignment alignment = DTSTextAlignment::leading;
    DTSTextFit textFit = DTSTextFit::fixed;
    DTSBooleanMark booleanMark = DTSBooleanMark::x;
};

namespace dts_presentation {
// The text a value is printed as under a presentation; nothing for a false boolean (a mark is drawn
// only when true) and for an image. Dates: numeric "11/4/2026", abbreviated "Nov 4, 2026", long
// "Wednesday, November 4, 2026", monthDay "11/4", monthDayShortYear "11/4/26", dayMonthYear "4/11/2026".
std::optional<std::string> text(const DTSSemanticValue& value, const DTSTemplatePresentation& presentation);
std::string markGlyph(DTSBooleanMark mark);  // "X", "✓", "●"
// "Page 2 of 3".
std::string pageXOfY(int page, int totalPages);
}  // namespace dts_presentation

}  // namespace tessel
