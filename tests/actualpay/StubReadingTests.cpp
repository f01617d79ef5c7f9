#include <gtest/gtest.h>

#include <algorithm>

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

#include "App/actualpay/StubExtraction.hpp"
#include "StubPdf.hpp"

namespace tessel {
namespace {

using testing::drawnPdf;

TEST(StubTextLayer, GivesEachWordWithItsBoxOnTheVisiblePage) {
    const std::string pdf = drawnPdf({{{72, 100, "Occupation Title: Grip"}, {400, 100, "1,234.50"}, {72, 130, "Pay Period"}},
                                      {{306, 396, "Totals"}}});
    const auto evidence = extractTextLayer(pdf, PayStubTextSource::embeddedOCRText);
    EXPECT_EQ(evidence.pageCount, 2);
    EXPECT_EQ(evidence.source, PayStubTextSource::embeddedOCRText);
    std::vector<std::string> words;
    for (const auto& token : evidence.tokens) words.push_back(token.rawText);
    std::sort(words.begin(), words.end());  // in poppler's reading order, which lines then put in place
    EXPECT_EQ(words, (std::vector<std::string>{"1,234.50", "Grip", "Occupation", "Pay", "Period", "Title:", "Totals"}));
    const auto& first = evidence.tokens.front();
    EXPECT_EQ(first.normalizedText, "OCCUPATION");
    EXPECT_EQ(first.pageIndex, 0);
    EXPECT_NEAR(first.normalizedBounds.x, 72.0 / 612, 0.005);
    EXPECT_NEAR(first.normalizedBounds.y + first.normalizedBounds.height, 100.0 / 792, 0.01);  // sits on its baseline
    EXPECT_EQ(evidence.tokens.back().pageIndex, 1);
    EXPECT_NEAR(evidence.tokens.back().normalizedBounds.x, 0.5, 0.005);

    const auto lines = tokenLines(evidence);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].normalizedText(), "OCCUPATION TITLE: GRIP 1,234.50");
    EXPECT_EQ(lines[1].rawText(), "Pay Period");
    EXPECT_EQ(lines[2].pageIndex, 1);
}

struct UnreadableCase {
    const char* name;
    std::string bytes;
    PayStubTextSource source;
    const char* sentence;
};

class UnreadableStubs : public ::testing::TestWithParam<UnreadableCase> {};

TEST_P(UnreadableStubs, AreRefusedInOneSentence) {
    try {
        extractTextLayer(GetParam().bytes, GetParam().source);
        FAIL() << "read";
    } catch (const PayStubExtractionError& error) {
        EXPECT_STREQ(error.what(), GetParam().sentence);
    }
}

// A catalogue with no pages at all, in a file poppler can still open.
const std::string zeroPages =
    "%PDF-1.4\n1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj\n2 0 obj << /Type /Pages /Kids [] /Count 0 >> endobj\n"
    "trailer << /Root 1 0 R >>\n%%EOF\n";

INSTANTIATE_TEST_SUITE_P(
    Files, UnreadableStubs,
    ::testing::Values(UnreadableCase{"empty", "", PayStubTextSource::embeddedPDFText, "The selected pay stub is empty."},
                      UnreadableCase{"notAPdf", "Dear payroll, please find attached", PayStubTextSource::embeddedPDFText,
                                     "The selected pay stub is not a readable PDF."},
                      UnreadableCase{"truncated", drawnPdf({{{72, 72, "Gross"}}}).substr(0, 300), PayStubTextSource::embeddedPDFText,
                                     "The selected pay stub is not a readable PDF."},
                      UnreadableCase{"zeroPages", zeroPages, PayStubTextSource::embeddedPDFText, "The selected pay stub contains no pages."},
                      UnreadableCase{"ocrAskedOfTheTextLayer", drawnPdf({{{72, 72, "Gross"}}}), PayStubTextSource::tesseractOCR,
                                     "Choose an embedded PDF-text source for PDFKit extraction."}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tessel
