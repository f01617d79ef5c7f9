#include <gtest/gtest.h>

#include "App/actualpay/StubNumbers.hpp"
#include "App/actualpay/StubText.hpp"

namespace tessel {
namespace {

struct TextCase {
    const char* raw;
    const char* normalized;
    const char* compact;
};

class StubTextForms : public ::testing::TestWithParam<TextCase> {};

TEST_P(StubTextForms, AreTheOneFormBothReadingsShare) {
    EXPECT_EQ(stub_text::normalized(GetParam().raw), GetParam().normalized);
    EXPECT_EQ(stub_text::compact(GetParam().raw), GetParam().compact);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, StubTextForms,
    ::testing::Values(TextCase{"  Occupation\u00A0Title ", "OCCUPATION TITLE", "OCCUPATIONTITLE"},
                      TextCase{"Pay\t\n  Period", "PAY PERIOD", "PAYPERIOD"},
                      TextCase{"\uFF21\uFF22\uFF23 \uFF11\uFF12", "ABC 12", "ABC12"},  // full-width letters and digits
                      TextCase{"\uFB01nal", "FINAL", "FINAL"},                         // the "fi" ligature
                      TextCase{"Earnings-Statement:", "EARNINGS-STATEMENT:", "EARNINGSSTATEMENT"},
                      TextCase{"", "", ""}, TextCase{"\xFF", "\uFFFD", ""}));

struct NumberCase {
    const char* raw;
    PayStubNumericClassification classification;
    std::vector<const char*> candidates;
};

class StubNumbers : public ::testing::TestWithParam<NumberCase> {};

TEST_P(StubNumbers, AreReadAsTheirPrintAllows) {
    const auto reading = interpretStubNumber(GetParam().raw);
    EXPECT_EQ(reading.classification, GetParam().classification) << GetParam().raw;
    std::vector<std::string> candidates;
    for (const auto& value : reading.candidates) candidates.push_back(value.toString());
    EXPECT_EQ(candidates, std::vector<std::string>(GetParam().candidates.begin(), GetParam().candidates.end())) << GetParam().raw;
    EXPECT_EQ(reading.resolved().has_value(), GetParam().candidates.size() == 1 && GetParam().classification != PayStubNumericClassification::invalid);
}

using C = PayStubNumericClassification;
INSTANTIATE_TEST_SUITE_P(
    Printed, StubNumbers,
    ::testing::Values(NumberCase{"1234.50", C::exact, {"1234.50"}}, NumberCase{"12", C::exact, {"12"}},
                      NumberCase{"-5.00", C::exact, {"-5.00"}}, NumberCase{"52.2000", C::exact, {"52.2000"}},
                      NumberCase{"1,234.50", C::normalized, {"1234.50"}}, NumberCase{"1.234,50", C::normalized, {"1234.50"}},
                      NumberCase{"(12.00)", C::normalized, {"-12.00"}}, NumberCase{"12.00-", C::normalized, {"-12.00"}},
                      NumberCase{"$1,500", C::normalized, {"1500"}}, NumberCase{"$ 1,500.00 USD", C::normalized, {"1500.00"}},
                      NumberCase{"-$45.00", C::normalized, {"-45.00"}}, NumberCase{"1 234.50", C::normalized, {"1234.50"}},
                      NumberCase{"12,50", C::normalized, {"12.50"}}, NumberCase{"1,234,567", C::normalized, {"1234567"}},
                      NumberCase{"1.234.567", C::normalized, {"1234567"}}, NumberCase{"1O.5O", C::normalized, {"10.50"}},
                      NumberCase{"l2.00", C::normalized, {"12.00"}}, NumberCase{"\uFF11\uFF12.\uFF15", C::normalized, {"12.5"}},
                      NumberCase{" 8.0 ", C::normalized, {"8.0"}},
                      NumberCase{"1,234", C::ambiguous, {"1234", "1.234"}},
                      NumberCase{"", C::invalid, {}}, NumberCase{"TOTAL", C::invalid, {}}, NumberCase{"1,23,4", C::invalid, {}},
                      NumberCase{"12.3.4", C::invalid, {}}, NumberCase{"(-12.00)", C::invalid, {}}, NumberCase{"1,234.5.6", C::invalid, {}},
                      NumberCase{"12 34", C::invalid, {}}, NumberCase{"$", C::invalid, {}}, NumberCase{"-", C::invalid, {}},
                      NumberCase{"12345678901234567890123456789012345", C::invalid, {}}));

}  // namespace
}  // namespace tessel
