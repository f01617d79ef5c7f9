#include "DTSSemanticField.hpp"

#include <array>
#include <chrono>

#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/CalendarText.hpp"

namespace tessel {

std::string_view toRawValue(DTSSemanticScope scope) noexcept { return scope == DTSSemanticScope::document ? "document" : "crewRow"; }

std::string_view toRawValue(DTSSemanticValueKind kind) noexcept {
    static constexpr std::array<std::string_view, 8> names{"text", "payrollTime", "date", "boolean", "quantity", "duration", "choice", "image"};
    return names[static_cast<std::size_t>(kind)];
}

std::string_view toRawValue(DTSTemplateRenderingKind kind) noexcept {
    static constexpr std::array<std::string_view, 4> names{"text", "mark", "choiceGroup", "image"};
    return names[static_cast<std::size_t>(kind)];
}

std::string_view toRawValue(DTSDatePresentation presentation) noexcept {
    static constexpr std::array<std::string_view, 6> names{"numeric", "abbreviated", "long", "monthDay", "monthDayShortYear", "dayMonthYear"};
    return names[static_cast<std::size_t>(presentation)];
}

std::string DTSSemanticField::debugDescription() const {
    return std::string(key) + " resolves a " + std::string(toRawValue(valueKind)) + " value at " +
           (scope == DTSSemanticScope::document ? "document" : "crew row") + " scope.";
}

namespace dts_fields {
namespace {

using ID = DTSSemanticFieldID;
using S = DTSSemanticScope;
using V = DTSSemanticValueKind;
using R = DTSTemplateRenderingKind;

// Categories group the fields where a form's fields are chosen: the production, the day, the shared
// times and facts, each crew row, the approval, and the page. Every field resolves from what a DTS
// holds; the signature resolves when the production has one.
std::vector<DTSSemanticField> build() {
    return {
        {ID::productionName, "production.name", "Production", "Production", S::document, V::text, R::text, true},
        {ID::productionCompany, "production.company", "Production Company", "Production", S::document, V::text, R::text, true},
        {ID::productionDepartment, "production.department", "Department", "Production", S::document, V::text, R::text, true},
        {ID::workdayDate, "workday.date", "Date", "Workday", S::document, V::date, R::text, true},
        {ID::workdayDayOfWeek, "workday.dayOfWeek", "Day", "Workday", S::document, V::text, R::text, true},
        {ID::workdayWorkState, "workday.workState", "Work State", "Workday", S::document, V::text, R::text, true},
        {ID::workdayWorkLocation, "workday.workLocation", "Studio / Location", "Workday", S::document, V::choice, R::choiceGroup, true},
        {ID::workdayNotes, "workday.notes", "Notes", "Workday", S::document, V::text, R::text, true},
        {ID::sharedCall, "shared.call", "General Crew Call", "Shared DTS Facts", S::document, V::payrollTime, R::text, true},
        {ID::sharedLunchOut, "shared.lunchOut", "Official Lunch Out", "Shared DTS Facts", S::document, V::payrollTime, R::text, true},
        {ID::sharedLunchIn, "shared.lunchIn", "Official Lunch In", "Shared DTS Facts", S::document, V::payrollTime, R::text, true},
        {ID::sharedWrap, "shared.wrap", "Wrap", "Shared DTS Facts", S::document, V::payrollTime, R::text, true},
        {ID::sharedTravelTime, "shared.travelTime", "Travel", "Shared DTS Facts", S::document, V::duration, R::text, true},
        {ID::sharedDepartmentMileage, "shared.departmentMileage", "Department Mileage", "Shared DTS Facts", S::document, V::quantity, R::text, true},
        {ID::sharedGraceCalled, "shared.graceCalled", "Grace Was Called", "Shared DTS Facts", S::document, V::boolean, R::mark, true},
        {ID::crewName, "crew.name", "Name", "Crew Row", S::crewRow, V::text, R::text, true},
        {ID::crewDTSName, "crew.dtsName", "DTS Name / Job Title", "Crew Row", S::crewRow, V::text, R::text, true},
        {ID::crewPosition, "crew.position", "Contractual Position", "Crew Row", S::crewRow, V::text, R::text, true},
        {ID::crewOccupationCode, "crew.occupationCode", "Occ Code", "Crew Row", S::crewRow, V::text, R::text, true},
        {ID::crewLocality, "crew.locality", "Local / Distant", "Crew Row", S::crewRow, V::choice, R::choiceGroup, true},
        {ID::crewEmploymentSchedule, "crew.employmentSchedule", "Daily / Weekly", "Crew Row", S::crewRow, V::choice, R::choiceGroup, true},
        {ID::crewCall, "crew.call", "Call", "Crew Row", S::crewRow, V::payrollTime, R::text, true},
        {ID::crewLunchOut, "crew.lunchOut", "Meal Out", "Crew Row", S::crewRow, V::payrollTime, R::text, true},
        {ID::crewLunchIn, "crew.lunchIn", "Meal In", "Crew Row", S::crewRow, V::payrollTime, R::text, true},
        {ID::crewWrap, "crew.wrap", "Wrap", "Crew Row", S::crewRow, V::payrollTime, R::text, true},
        {ID::crewNDB, "crew.ndb", "NDB", "Crew Row", S::crewRow, V::boolean, R::mark, true},
        {ID::crewMileage, "crew.mileage", "Mileage", "Crew Row", S::crewRow, V::quantity, R::text, true},
        {ID::crewBoxRentalApplies, "crew.boxRentalApplies", "Box / Kit Rental", "Crew Row", S::crewRow, V::boolean, R::mark, true},
        {ID::approvalDepartmentHeadName, "approval.departmentHeadName", "Department Head Name", "Approval", S::document, V::text, R::text, true},
        {ID::approvalSignature, "approval.signature", "Department Head Signature", "Approval", S::document, V::image, R::image, true},
        {ID::derivedPageNumber, "derived.pageNumber", "Page", "Page", S::document, V::quantity, R::text, true},
        {ID::derivedTotalPages, "derived.totalPages", "Pages", "Page", S::document, V::quantity, R::text, true},
        {ID::derivedPageXOfY, "derived.pageXOfY", "Page X of Y", "Page", S::document, V::text, R::text, true},
    };
}

}  // namespace

const std::vector<DTSSemanticField>& catalogue() {
    static const std::vector<DTSSemanticField> fields = build();
    return fields;
}

const DTSSemanticField& field(DTSSemanticFieldID id) { return catalogue()[static_cast<std::size_t>(id)]; }

std::optional<DTSSemanticFieldID> fromKey(std::string_view key) {
    for (const auto& f : catalogue()) {
        if (f.key == key) return f.id;
    }
    return std::nullopt;
}

std::vector<DTSSemanticField> ofScope(DTSSemanticScope scope) {
    std::vector<DTSSemanticField> fields;
    for (const auto& f : catalogue()) {
        if (f.scope == scope) fields.push_back(f);
    }
    return fields;
}

}  // namespace dts_fields

namespace dts_presentation {
namespace {

using namespace std::chrono;

constexpr std::array<std::string_view, 12> monthNames{"January", "February", "March",     "April",   "May",      "June",
                                                      "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<std::string_view, 7> weekdayNames{"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

std::string dateText(CalendarDate date, DTSDatePresentation presentation) {
    const year_month_day ymd(date);
    const unsigned m = static_cast<unsigned>(ymd.month()), d = static_cast<unsigned>(ymd.day());
    const int y = static_cast<int>(ymd.year());
    const std::string month = std::string(monthNames[m - 1]);
    switch (presentation) {
        case DTSDatePresentation::numeric: return std::to_string(m) + "/" + std::to_string(d) + "/" + std::to_string(y);
        case DTSDatePresentation::abbreviated: return month.substr(0, 3) + " " + std::to_string(d) + ", " + std::to_string(y);
        case DTSDatePresentation::long_:
            return std::string(weekdayNames[weekday(sys_days(date)).c_encoding()]) + ", " + month + " " + std::to_string(d) + ", " + std::to_string(y);
        case DTSDatePresentation::monthDay: return std::to_string(m) + "/" + std::to_string(d);
        case DTSDatePresentation::monthDayShortYear: {
            const int shortYear = y % 100;
            return std::to_string(m) + "/" + std::to_string(d) + "/" + (shortYear < 10 ? "0" : "") + std::to_string(shortYear);
        }
        case DTSDatePresentation::dayMonthYear: return std::to_string(d) + "/" + std::to_string(m) + "/" + std::to_string(y);
    }
    return {};
}

// "7:30 AM", "1:12 AM +1" for the next day.
std::string clock12(Instant instant, CalendarDate anchor) {
    const auto minutes = duration_cast<std::chrono::minutes>(instant - sys_days(anchor)).count();
    const long dayOffset = minutes / (24 * 60);
    const long inDay = minutes % (24 * 60);
    const long hour = inDay / 60, minute = inDay % 60;
    const long shownHour = hour % 12 == 0 ? 12 : hour % 12;
    std::string text = std::to_string(shownHour) + ":" + (minute < 10 ? "0" : "") + std::to_string(minute) + (hour < 12 ? " AM" : " PM");
    if (dayOffset > 0) text += " +" + std::to_string(dayOffset);
    return text;
}

std::string transformed(std::string text, DTSTextTransform transform) {
    if (transform == DTSTextTransform::uppercase) {
        // ASCII letters only: names with accents keep their letters rather than being mangled byte by byte.
        for (char& c : text) {
            if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        }
    }
    return text;
}

}  // namespace

std::optional<std::string> text(const DTSSemanticValue& value, const DTSTemplatePresentation& p) {
    std::optional<std::string> shown;
    if (const auto* s = std::get_if<std::string>(&value)) shown = *s;
    if (const auto* t = std::get_if<DTSPayrollTimeValue>(&value)) {
        switch (p.timePresentation.value_or(DTSTimePresentation::payrollDecimal)) {
            case DTSTimePresentation::payrollDecimal: shown = payroll_decimal_time::formatTimeOfDay(t->instant, t->workdayDate); break;
            case DTSTimePresentation::clock24Hour: shown = payroll_decimal_time::formatClockTime(t->instant, t->workdayDate); break;
            case DTSTimePresentation::clock12Hour: shown = clock12(t->instant, t->workdayDate); break;
        }
    }
    if (const auto* d = std::get_if<CalendarDate>(&value)) shown = dateText(*d, p.datePresentation.value_or(DTSDatePresentation::numeric));
    if (const auto* b = std::get_if<bool>(&value)) {
        if (*b) shown = markGlyph(p.booleanMark);
    }
    if (const auto* q = std::get_if<Decimal>(&value)) shown = q->toString();
    if (const auto* duration = std::get_if<DTSDurationValue>(&value)) shown = payroll_decimal_time::formatDuration(duration->seconds);
    if (const auto* c = std::get_if<DTSChoiceValue>(&value)) shown = c->raw;
    if (!shown) return std::nullopt;
    return transformed(*shown, p.textTransform);
}

std::string markGlyph(DTSBooleanMark mark) {
    switch (mark) {
        case DTSBooleanMark::x: return "X";
        case DTSBooleanMark::check: return "\u2713";
        case DTSBooleanMark::filled: return "\u25CF";
    }
    return "X";
}

std::string pageXOfY(int page, int totalPages) { return "Page " + std::to_string(page) + " of " + std::to_string(totalPages); }

}  // namespace dts_presentation
}  // namespace tessel
