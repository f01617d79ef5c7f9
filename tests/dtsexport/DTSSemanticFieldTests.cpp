#include <gtest/gtest.h>

#include <set>

#include "App/dtsexport/DTSSemanticField.hpp"
#include "App/dtsexport/ProductionDTSExport.hpp"

namespace tessel {
namespace {

using namespace std::chrono;

TEST(DTSFieldCatalogue, IsClosedOrderedAndKeyedOnce) {
    const auto& fields = dts_fields::catalogue();
    ASSERT_EQ(fields.size(), 33u);
    EXPECT_EQ(fields.front().key, "production.name");
    EXPECT_EQ(fields.back().key, "derived.pageXOfY");
    std::set<std::string_view> keys;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        EXPECT_EQ(static_cast<std::size_t>(fields[i].id), i) << fields[i].key;
        EXPECT_TRUE(keys.insert(fields[i].key).second) << fields[i].key;
        EXPECT_EQ(dts_fields::fromKey(fields[i].key), fields[i].id);
        // Crew-row fields and only they are keyed under "crew.".
        EXPECT_EQ(fields[i].scope == DTSSemanticScope::crewRow, fields[i].key.starts_with("crew.")) << fields[i].key;
    }
    EXPECT_EQ(dts_fields::field(DTSSemanticFieldID::productionName).debugDescription(), "production.name resolves a text value at document scope.");
    EXPECT_EQ(dts_fields::field(DTSSemanticFieldID::crewBoxRentalApplies).displayName, "Box / Kit Rental");
    EXPECT_EQ(dts_fields::field(DTSSemanticFieldID::sharedCall).category, "Shared DTS Facts");
    EXPECT_EQ(dts_fields::ofScope(DTSSemanticScope::crewRow).size(), 13u);
    EXPECT_FALSE(dts_fields::fromKey("crew.favouriteColour"));
}

struct PresentationCase {
    const char* name;
    DTSSemanticValue value;
    DTSTemplatePresentation presentation;
    std::optional<std::string> text;
};

class Presentations : public ::testing::TestWithParam<PresentationCase> {};

TEST_P(Presentations, PrintTheValueAsTheFormAsks) { EXPECT_EQ(dts_presentation::text(GetParam().value, GetParam().presentation), GetParam().text); }

const CalendarDate wednesday(year(2026) / 11 / 4);
const Instant halfPastSeven = sys_days(wednesday) + hours(7) + minutes(30);
const Instant afterMidnight = sys_days(wednesday) + hours(25) + minutes(12);

DTSTemplatePresentation time(DTSTimePresentation p) { return {.timePresentation = p}; }
DTSTemplatePresentation date(DTSDatePresentation p) { return {.datePresentation = p}; }

INSTANTIATE_TEST_SUITE_P(
    Fields, Presentations,
    ::testing::Values(PresentationCase{"PayrollDecimal", DTSPayrollTimeValue{halfPastSeven, wednesday}, {}, "7.5"},
                      PresentationCase{"PayrollDecimalNextDay", DTSPayrollTimeValue{afterMidnight, wednesday}, {}, "25.2"},
                      PresentationCase{"Clock12", DTSPayrollTimeValue{halfPastSeven, wednesday}, time(DTSTimePresentation::clock12Hour), "7:30 AM"},
                      PresentationCase{"Clock12NextDay", DTSPayrollTimeValue{afterMidnight, wednesday}, time(DTSTimePresentation::clock12Hour), "1:12 AM +1"},
                      PresentationCase{"Clock24", DTSPayrollTimeValue{halfPastSeven, wednesday}, time(DTSTimePresentation::clock24Hour), "07:30"},
                      PresentationCase{"DateNumeric", wednesday, {}, "11/4/2026"},
                      PresentationCase{"DateAbbreviated", wednesday, date(DTSDatePresentation::abbreviated), "Nov 4, 2026"},
                      PresentationCase{"DateLong", wednesday, date(DTSDatePresentation::long_), "Wednesday, November 4, 2026"},
                      PresentationCase{"DateMonthDay", wednesday, date(DTSDatePresentation::monthDay), "11/4"},
                      PresentationCase{"DateShortYear", wednesday, date(DTSDatePresentation::monthDayShortYear), "11/4/26"},
                      PresentationCase{"DateDayMonthYear", wednesday, date(DTSDatePresentation::dayMonthYear), "4/11/2026"},
                      PresentationCase{"Uppercase", std::string("Dana Rivera"), {.textTransform = DTSTextTransform::uppercase}, "DANA RIVERA"},
                      PresentationCase{"MarkWhenTrue", true, {.renderingKind = DTSTemplateRenderingKind::mark, .booleanMark = DTSBooleanMark::check}, "\u2713"},
                      PresentationCase{"NothingWhenFalse", false, {.renderingKind = DTSTemplateRenderingKind::mark}, std::nullopt},
                      PresentationCase{"Duration", DTSDurationValue{5400}, {}, "1.5"},
                      PresentationCase{"Quantity", Decimal("12.5"), {}, "12.5"},
                      PresentationCase{"Image", DTSImageValue{"\x89PNG"}, {.renderingKind = DTSTemplateRenderingKind::image}, std::nullopt}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(DTSPageNumbers, ReadPageXOfY) { EXPECT_EQ(dts_presentation::pageXOfY(2, 3), "Page 2 of 3"); }

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

// A DTS as the resolver sees it: a production, a day with shared times, and one crew row.
struct ResolvedDTS {
    DTSWorkdayFacts facts{Production{Uuid::generate(), "Harbor Lights", Instant{}}, ProductionIdentity{"", "Lighthouse Pictures", "", ""},
                          Workday{Uuid::generate(), Uuid::generate(), wednesday}};
    ResolvedDTS() {
        facts.workday.generalCrewCall = halfPastSeven;
        facts.workday.sharedTravelDurationSeconds = 3600;
        facts.workState = "CA";
        DTSCrewRowFacts row{.entryID = Uuid::generate()};
        row.crewName = "Dana Rivera";
        row.position = "Gaffer";
        row.times.call.value = halfPastSeven;
        row.boxRental = true;
        facts.rows.push_back(row);
    }
};

struct ResolutionCase {
    const char* name;
    DTSSemanticFieldID field;
    bool withRow;
    DTSSemanticResolution::Kind kind;
    std::optional<std::string> printed;  // as presented by default
};

class FieldResolution : public ::testing::TestWithParam<ResolutionCase> {};

TEST_P(FieldResolution, ComesFromTheDayThePageAndTheRow) {
    const ResolvedDTS dts;
    const auto resolved = dts_export::resolve(GetParam().field, dts.facts, 2, 3, GetParam().withRow ? &dts.facts.rows[0] : nullptr);
    ASSERT_EQ(resolved.kind, GetParam().kind);
    if (resolved.value) {
        EXPECT_EQ(dts_presentation::text(*resolved.value, {}), GetParam().printed);
    }
}

using K = DTSSemanticResolution::Kind;
using F = DTSSemanticFieldID;
INSTANTIATE_TEST_SUITE_P(
    Fields, FieldResolution,
    ::testing::Values(ResolutionCase{"ProductionName", F::productionName, false, K::value, "Harbor Lights"},
                      ResolutionCase{"Company", F::productionCompany, false, K::value, "Lighthouse Pictures"},
                      ResolutionCase{"DepartmentNotSet", F::productionDepartment, false, K::absent, std::nullopt},
                      ResolutionCase{"Date", F::workdayDate, false, K::value, "11/4/2026"},
                      ResolutionCase{"DayOfWeek", F::workdayDayOfWeek, false, K::value, "Wednesday"},
                      ResolutionCase{"SharedCall", F::sharedCall, false, K::value, "7.5"},
                      ResolutionCase{"SharedWrapNotEntered", F::sharedWrap, false, K::absent, std::nullopt},
                      ResolutionCase{"Travel", F::sharedTravelTime, false, K::value, "1.0"},
                      ResolutionCase{"GraceNotCalledPrintsNothing", F::sharedGraceCalled, false, K::value, std::nullopt},
                      ResolutionCase{"CrewName", F::crewName, true, K::value, "Dana Rivera"},
                      ResolutionCase{"CrewPosition", F::crewPosition, true, K::value, "Gaffer"},
                      ResolutionCase{"CrewCall", F::crewCall, true, K::value, "7.5"},
                      ResolutionCase{"BoxRentalMarked", F::crewBoxRentalApplies, true, K::value, "X"},
                      ResolutionCase{"AnEmptyRowSlotIsAbsent", F::crewName, false, K::absent, std::nullopt},
                      ResolutionCase{"NoSignature", F::approvalSignature, false, K::absent, std::nullopt},
                      ResolutionCase{"PageXOfY", F::derivedPageXOfY, false, K::value, "Page 2 of 3"},
                      ResolutionCase{"TotalPages", F::derivedTotalPages, false, K::value, "3"}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tessel
