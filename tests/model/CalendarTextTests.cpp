#include <gtest/gtest.h>

#include "App/model/CalendarText.hpp"

namespace tessel {
namespace {

using namespace calendar_text;

struct InstantCase {
    const char* text;
    const char* utc;  // nullptr when refused
};

class InstantText : public ::testing::TestWithParam<InstantCase> {};

TEST_P(InstantText, ReadsISO8601InUTC) {
    const auto parsed = parseInstant(GetParam().text);
    if (!GetParam().utc) {
        EXPECT_FALSE(parsed.has_value());
        return;
    }
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(formatInstant(*parsed), GetParam().utc);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, InstantText,
    ::testing::Values(InstantCase{"2026-11-02T07:00:00Z", "2026-11-02T07:00:00Z"},
                      InstantCase{"2026-11-02T07:00:00.999Z", "2026-11-02T07:00:00Z"},
                      InstantCase{"2026-11-02T01:30:00+02:00", "2026-11-01T23:30:00Z"},
                      InstantCase{"2026-12-31T23:00:00-01:00", "2027-01-01T00:00:00Z"},
                      InstantCase{"2026-11-02T07:00:00", nullptr}, InstantCase{"2026-11-02 07:00:00Z", nullptr},
                      InstantCase{"2026-11-02T24:00:00Z", nullptr}, InstantCase{"2026-02-29T07:00:00Z", nullptr},
                      InstantCase{"2026-11-02T07:00:00.Z", nullptr}, InstantCase{"13:00", nullptr}));

TEST(DateText, RoundTripsAndRefusesImpossibleDates) {
    EXPECT_EQ(formatDate(*parseDate("2028-02-29")), "2028-02-29");
    EXPECT_FALSE(parseDate("2026-02-29").has_value());
    EXPECT_FALSE(parseDate("2026-1-02").has_value());
    EXPECT_FALSE(parseDate("2026-11-02Z").has_value());
}

}  // namespace
}  // namespace tessel
