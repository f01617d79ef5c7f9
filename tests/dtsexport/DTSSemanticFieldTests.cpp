#include <gtest/gtest.h>

#include <set>

#include "App/dtsexport/DTSSemanticField.hpp"

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
