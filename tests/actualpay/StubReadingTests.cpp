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
                                     "Choose an embedded PDF-text source for poppler extraction."}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tessel

#include "App/actualpay/StubEarnings.hpp"

namespace tessel {
namespace {

// Words placed on a page in page-relative units, each 0.012 high and 0.008 wide per character.
struct Word {
    double x, y;
    const char* text;
};

PayStubTextEvidence evidenceOf(const std::vector<Word>& words, int page = 0) {
    PayStubTextEvidence evidence{PayStubTextSource::embeddedPDFText, page + 1, {}};
    for (const auto& word : words) {
        const double width = 0.008 * static_cast<double>(std::string_view(word.text).size());
        evidence.tokens.push_back({"t" + std::to_string(evidence.tokens.size()), word.text, stub_text::normalized(word.text), page,
                                   {word.x, word.y, width, 0.012}, PayStubTextSource::embeddedPDFText, std::nullopt});
    }
    return evidence;
}

// The header and its columns as a fixture prints them; rows are added by each test.
std::vector<Word> table(std::vector<Word> rows, bool taxes = false) {
    std::vector<Word> words{{0.08, 0.30, "DESC"}, {0.40, 0.30, "RATE"}, {0.52, 0.30, "HOURS"}, {0.64, 0.30, "AMOUNT"}};
    if (taxes) words.insert(words.end(), {{0.78, 0.30, "TAXES"}, {0.90, 0.30, "AMOUNT"}});
    words.insert(words.end(), rows.begin(), rows.end());
    return words;
}

std::string statusOf(const PayStubEarningsRow& row) { return std::string(toRawValue(row.arithmetic.status)); }

TEST(StubEarnings, RebuildTheTableWithItsArithmetic) {
    const auto analysis = analyzeEarnings(evidenceOf(table({{0.08, 0.33, "REGULAR"}, {0.40, 0.33, "45.00"}, {0.52, 0.33, "8.0"}, {0.64, 0.33, "360.00"},
                                                             {0.08, 0.35, "OVERTIME"}, {0.40, 0.35, "67.50"}, {0.52, 0.35, "3.5"}, {0.64, 0.35, "236.25"},
                                                             {0.08, 0.37, "MEAL"}, {0.13, 0.37, "PENALTY"}, {0.64, 0.37, "8.50"},
                                                             {0.08, 0.40, "TOTALS"}, {0.52, 0.40, "11.5"}, {0.64, 0.40, "604.75"}})));
    ASSERT_EQ(analysis.rows.size(), 3u);
    EXPECT_EQ(analysis.rows[0].id, "embeddedPDFText-row-0");
    EXPECT_EQ(analysis.rows[2].normalizedDescription, "MEAL PENALTY");
    EXPECT_EQ(statusOf(analysis.rows[0]), "exact");
    EXPECT_EQ(statusOf(analysis.rows[1]), "exact");  // 67.50 x 3.5 = 236.250, printed to the cent
    EXPECT_EQ(statusOf(analysis.rows[2]), "notApplicable");  // a flat amount has no rate or hours
    EXPECT_EQ(analysis.totalHours->resolved()->toString(), "11.5");
    EXPECT_EQ(analysis.gross->resolved()->toString(), "604.75");
    EXPECT_EQ(analysis.sumValidation.status, PayStubArithmeticStatus::exact);
}

TEST(StubEarnings, NameEveryRowThatDoesNotReconcile) {
    const auto analysis = analyzeEarnings(evidenceOf(table({{0.08, 0.33, "REGULAR"}, {0.40, 0.33, "45.00"}, {0.52, 0.33, "8.0"}, {0.64, 0.33, "360.01"},
                                                             {0.08, 0.35, "KIT"}, {0.40, 0.35, "$1,500"}, {0.52, 0.35, "1"}, {0.64, 0.35, "1,500.00"},
                                                             {0.08, 0.40, "TOTALS"}, {0.64, 0.40, "1,860.00"}})));
    ASSERT_EQ(analysis.rows.size(), 2u);
    EXPECT_EQ(statusOf(analysis.rows[0]), "inconsistent");
    EXPECT_EQ(analysis.rows[0].arithmetic.difference->toString(), "0.01");
    EXPECT_EQ(analysis.rows[0].arithmetic.reviewReason, "Rate × hours does not reconcile to the printed amount.");
    EXPECT_EQ(statusOf(analysis.rows[1]), "normalizedConsistent");  // read only once its grouping and currency are
    EXPECT_EQ(analysis.sumValidation.status, PayStubArithmeticStatus::inconsistent);
    EXPECT_EQ(analysis.sumValidation.difference->toString(), "-0.01");
}

TEST(StubEarnings, LeaveTaxesOutOfTheEarnings) {
    const auto analysis = analyzeEarnings(evidenceOf(
        table({{0.08, 0.33, "REGULAR"}, {0.40, 0.33, "45.00"}, {0.52, 0.33, "8.0"}, {0.64, 0.33, "360.00"}, {0.78, 0.33, "FICA"}, {0.90, 0.33, "22.32"},
               {0.08, 0.40, "TOTALS"}, {0.52, 0.40, "8.0"}, {0.64, 0.40, "360.00"}},
              true)));
    ASSERT_EQ(analysis.rows.size(), 1u);
    EXPECT_EQ(analysis.rows[0].rawAmount, "360.00");
    EXPECT_EQ(analysis.rows[0].rawDescription, "REGULAR");
    EXPECT_EQ(analysis.sumValidation.status, PayStubArithmeticStatus::exact);
}

TEST(StubEarnings, SayWhyNoTableWasFound) {
    const auto analysis = analyzeEarnings(evidenceOf({{0.08, 0.30, "DESC"}, {0.40, 0.30, "RATE"}, {0.08, 0.33, "REGULAR"}}));
    EXPECT_FALSE(analysis.found());
    EXPECT_EQ(analysis.diagnostics, (std::vector<std::string>{"No reliable single-page earnings geometry is available.",
                                                              "No earnings table reconstructed from the available geometry."}));
}

}  // namespace
}  // namespace tessel

#include "App/actualpay/StubFields.hpp"

namespace tessel {
namespace {

std::vector<PayStubTokenLine> linesOf(const std::vector<std::string>& texts) {
    std::vector<Word> words;
    double y = 0.05;
    for (const auto& text : texts) {
        words.push_back({0.05, y, text.c_str()});
        y += 0.03;
    }
    return tokenLines(evidenceOf(words));
}

struct MarkerCase {
    const char* name;
    std::vector<std::string> lines;
    int count;
    bool recognized;
};

class EPMarkers : public ::testing::TestWithParam<MarkerCase> {};

TEST_P(EPMarkers, NeedThreeOfFour) {
    const auto found = ep_layout::markers(linesOf(GetParam().lines));
    EXPECT_EQ(found.count(), GetParam().count);
    EXPECT_EQ(found.recognized(), GetParam().recognized);
}

INSTANTIATE_TEST_SUITE_P(
    Stubs, EPMarkers,
    ::testing::Values(MarkerCase{"all", {"Entertainment Partners", "Pay Period", "Occupation Title: Grip", "Totals", "Gross 604.75"}, 4, true},
                      MarkerCase{"noCompanyName", {"Pay Period", "Occupation\u00A0Title: Grip", "TOTALS 11.5 604.75 GROSS"}, 3, true},
                      MarkerCase{"totalsWithoutGross", {"Pay Period", "Occupation Title: Grip", "Totals 604.75"}, 2, false},
                      MarkerCase{"twoMarkers", {"ENTERTAINMENT PARTNERS", "PAY PERIOD"}, 2, false},
                      MarkerCase{"spacedLetters", {"E N T E R T A I N M E N T  P A R T N E R S", "Pay-Period", "Occupation.Title", "x"}, 3, true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(EPFields, AreReadFromTheFirstLineMatchingEach) {
    const auto fields = ep_layout::printedFields(
        linesOf({"Entertainment Partners", "1 Dana M. Rivera-Ortiz SSN: XXX-XX-1234", "Occupation\u00A0Title:  Key Grip ",
                 "Pay Period Start: 11/02/26 End: 11/08/2026", "Occupation Title: Best Boy"}),
        PayStubTextSource::embeddedPDFText);
    ASSERT_TRUE(fields.employeeName && fields.occupation && fields.payPeriod);
    EXPECT_EQ(fields.employeeName->value, "DANA M. RIVERA-ORTIZ");
    EXPECT_EQ(fields.employeeName->excerpt.rawText, "1 Dana M. Rivera-Ortiz SSN: XXX-XX-1234");
    EXPECT_EQ(fields.occupation->value, "KEY GRIP");
    EXPECT_EQ(fields.payPeriod->value.first, CalendarDate(std::chrono::year(2026) / 11 / 2));
    EXPECT_EQ(fields.payPeriod->value.second, CalendarDate(std::chrono::year(2026) / 11 / 8));
}

TEST(EPFields, ANonexistentDateIsNoPeriod) {
    const auto fields = ep_layout::printedFields(linesOf({"Start: 02/30/2026 End: 03/06/2026"}), PayStubTextSource::embeddedPDFText);
    EXPECT_FALSE(fields.payPeriod.has_value());
}

}  // namespace
}  // namespace tessel

#include "App/actualpay/StubOcr.hpp"

namespace tessel {
namespace {

// OCR reads the page's pixels only: the words it gives are those the page shows, where it shows them.
TEST(StubOcr, ReadsTheWordsThePageShowsWhereItShowsThem) {
    const std::string pdf = drawnPdf({{{72, 100, "EARNINGS STATEMENT"}, {72, 160, "REGULAR"}, {400, 160, "1,234.50"}}});
    StubOcrEngine engine;
    const auto evidence = engine.read(pdf);
    EXPECT_EQ(evidence.source, PayStubTextSource::tesseractOCR);
    const auto lines = tokenLines(evidence);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].normalizedText(), "EARNINGS STATEMENT");
    EXPECT_EQ(lines[1].normalizedText(), "REGULAR 1,234.50");
    const auto& amount = lines[1].tokens.back();
    EXPECT_NEAR(amount.normalizedBounds.x, 400.0 / 612, 0.01);
    EXPECT_NEAR(amount.normalizedBounds.y + amount.normalizedBounds.height, 160.0 / 792, 0.01);
    ASSERT_TRUE(amount.confidence.has_value());
    EXPECT_GT(*amount.confidence, 0.5f);
    EXPECT_THROW(engine.read(""), PayStubExtractionError);  // the engine stays usable after a refusal
    EXPECT_EQ(engine.read(pdf).tokens.size(), evidence.tokens.size());
}

// Only the inked part of a page is recognised, so a blank page gives no words and a word low on a later
// page keeps its place on that page.
TEST(StubOcr, PlacesWordsOnTheWholePageWhateverPartIsRead) {
    const std::string pdf = drawnPdf({{}, {{300, 700, "GROSS"}}});
    StubOcrEngine engine;
    const auto evidence = engine.read(pdf);
    EXPECT_EQ(evidence.pageCount, 2);
    ASSERT_EQ(evidence.tokens.size(), 1u);
    const auto& gross = evidence.tokens.front();
    EXPECT_EQ(gross.normalizedText, "GROSS");
    EXPECT_EQ(gross.pageIndex, 1);
    EXPECT_NEAR(gross.normalizedBounds.x, 300.0 / 612, 0.01);
    EXPECT_NEAR(gross.normalizedBounds.y + gross.normalizedBounds.height, 700.0 / 792, 0.01);
}

}  // namespace
}  // namespace tessel

#include "App/actualpay/StubInterpretation.hpp"

namespace tessel {
namespace {

// An Entertainment Partners stub as a payroll company prints one, in points on a Letter page.
std::string epStub(const char* regularAmount = "360.00") {
    const double desc = 72, rate = 250, hours = 330, amount = 420;
    return drawnPdf({{{72, 60, "Entertainment Partners"},
                      {72, 90, "DANA M RIVERA SSN: XXX-XX-1234"},
                      {72, 108, "Occupation Title: Key Grip"},
                      {72, 126, "Pay Period Start: 11/02/2026 End: 11/08/2026"},
                      {desc, 170, "DESC"}, {rate, 170, "RATE"}, {hours, 170, "HOURS"}, {amount, 170, "AMOUNT"},
                      {desc, 188, "REGULAR"}, {rate, 188, "45.00"}, {hours, 188, "8.0"}, {amount, 188, regularAmount},
                      {desc, 206, "OVERTIME"}, {rate, 206, "67.50"}, {hours, 206, "3.5"}, {amount, 206, "236.25"},
                      {desc, 224, "MEAL PENALTY"}, {amount, 224, "8.50"},
                      {desc, 250, "TOTALS"}, {hours, 250, "11.5"}, {amount, 250, "604.75"},
                      {desc, 268, "GROSS"}, {amount, 268, "604.75"}}});
}

PayStubTextEvidence asOcr(PayStubTextEvidence evidence) {
    evidence.source = PayStubTextSource::tesseractOCR;
    for (auto& token : evidence.tokens) token.source = PayStubTextSource::tesseractOCR;
    return evidence;
}

TEST(EPInterpretation, AgreesWithItselfAcrossBothReadings) {
    const std::string pdf = epStub();
    StubOcrEngine engine;
    const auto stub = interpretEPStub(extractTextLayer(pdf, PayStubTextSource::embeddedPDFText), engine.read(pdf));
    EXPECT_EQ(stub.printedEmployeeName.value, "DANA M RIVERA");
    EXPECT_FALSE(stub.printedEmployeeName.reviewReason.has_value()) << *stub.printedEmployeeName.reviewReason;
    EXPECT_EQ(stub.printedOccupation.value, "KEY GRIP");
    EXPECT_EQ(stub.payPeriodStart.value, CalendarDate(std::chrono::year(2026) / 11 / 2));
    EXPECT_EQ(stub.payPeriodEnd.value, CalendarDate(std::chrono::year(2026) / 11 / 8));
    ASSERT_EQ(stub.earningLines.size(), 3u);
    std::vector<std::string> lines;
    for (const auto& line : stub.earningLines) {
        lines.push_back(*line.printedLabel.value + " " + (line.amount.value ? line.amount.value->toString() : "-") +
                        (line.printedLabel.reviewReason || line.amount.reviewReason ? " (review)" : ""));
    }
    EXPECT_EQ(lines, (std::vector<std::string>{"REGULAR 360.00", "OVERTIME 236.25", "MEAL PENALTY 8.50"}));
    EXPECT_EQ(stub.gross.value->toString(), "604.75");
    EXPECT_EQ(stub.totalHours.value->toString(), "11.5");
    EXPECT_FALSE(stub.gross.reviewReason.has_value());
}

// Each value's evidence marks where it was printed, so the window can point at it on the page: the
// 792-point page is 1 high, the name's line at y 90 pt, the overtime amount at x 420 pt, y 206 pt.
TEST(EPInterpretation, MarksWhereEachValueWasPrinted) {
    const auto embedded = extractTextLayer(epStub(), PayStubTextSource::embeddedPDFText);
    const auto stub = interpretEPStub(embedded, asOcr(embedded));
    const auto area = [](const auto& field, std::size_t reading) {
        EXPECT_GT(field.evidence.size(), reading);
        return field.evidence.at(reading).area.value_or(PageArea{-1, {}});
    };
    const auto contains = [](const PageArea& area, double xPoints, double baselinePoints) {
        const double x = xPoints / 612, y = (baselinePoints - 4) / 792;
        return area.pageIndex == 0 && area.bounds.x <= x + 0.001 && x < area.bounds.right() && area.bounds.y <= y && y <= area.bounds.y + area.bounds.height;
    };
    for (std::size_t reading : {0u, 1u}) {
        EXPECT_TRUE(contains(area(stub.printedEmployeeName, reading), 72, 90));
        EXPECT_TRUE(contains(area(stub.payPeriodEnd, reading), 72, 126));
        const auto overtime = area(stub.earningLines[1].amount, reading);
        EXPECT_TRUE(contains(overtime, 421, 206));
        EXPECT_FALSE(contains(overtime, 331, 206)) << "the amount, not the whole row";
        EXPECT_TRUE(contains(area(stub.earningLines[1].printedLabel, reading), 72, 206));
        EXPECT_TRUE(contains(area(stub.gross, reading), 421, 250));
        EXPECT_TRUE(contains(area(stub.totalHours, reading), 331, 250));
    }
}

TEST(EPInterpretation, ShowsEveryDoubtNextToItsValue) {
    const auto embedded = extractTextLayer(epStub("360.01"), PayStubTextSource::embeddedPDFText);
    auto ocr = asOcr(embedded);
    // The OCR reading sees another amount on the overtime row, and misses the meal penalty row.
    for (auto& token : ocr.tokens) {
        if (token.rawText == "236.25") token.rawText = token.normalizedText = "238.25";
    }
    std::erase_if(ocr.tokens, [](const auto& t) { return t.rawText == "8.50" || t.rawText == "MEAL" || t.rawText == "PENALTY"; });
    const auto stub = interpretEPStub(embedded, ocr);
    ASSERT_EQ(stub.earningLines.size(), 3u);
    EXPECT_EQ(stub.earningLines[0].amount.reviewReason, "Rate × hours does not reconcile to the printed amount.");
    EXPECT_EQ(stub.earningLines[1].amount.reviewReason, "The extraction sources do not agree on the amount.");
    EXPECT_EQ(stub.earningLines[1].amount.value->toString(), "236.25");  // proposed from the text layer
    EXPECT_EQ(stub.earningLines[2].printedLabel.reviewReason,
              "This physical earning row could not be associated uniquely across extraction sources. Review it against the PDF; another "
              "unassociated row may represent the same evidence.");
    EXPECT_EQ(stub.earningLines[2].amount.value->toString(), "8.50");  // never dropped
}

TEST(EPInterpretation, RefusesWhatItDoesNotRecognise) {
    const std::string letter = drawnPdf({{{72, 72, "Dear payroll,"}, {72, 90, "Pay Period Start: 11/02/2026 End: 11/08/2026"}}});
    const auto text = extractTextLayer(letter, PayStubTextSource::embeddedPDFText);
    try {
        interpretEPStub(text, asOcr(text));
        FAIL();
    } catch (const EPPayStubInterpretationError& error) {
        EXPECT_STREQ(error.what(), "Tessel doesn't recognize this pay-stub format yet.");
    }
    const std::string noTable =
        drawnPdf({{{72, 60, "Entertainment Partners"}, {72, 108, "Occupation Title: Grip"}, {72, 126, "Pay Period"}, {72, 140, "TOTALS GROSS"}}});
    const auto markersOnly = extractTextLayer(noTable, PayStubTextSource::embeddedPDFText);
    try {
        interpretEPStub(markersOnly, asOcr(markersOnly));
        FAIL();
    } catch (const EPPayStubInterpretationError& error) {
        EXPECT_EQ(error.errorCase(), EPPayStubInterpretationError::Case::noEarnings);
    }
}

}  // namespace
}  // namespace tessel

#include "../support/TemporaryFolder.hpp"

namespace tessel {
namespace {

// A stub protected by a password cannot be read without it, and is refused as unreadable.
TEST(StubTextLayer, RefusesAnEncryptedPdf) {
    testing::TemporaryFolder folder;
    const auto plain = folder.path() / "plain.pdf";
    const auto locked = folder.path() / "locked.pdf";
    testing::writeFile(plain, drawnPdf({{{72, 72, "Entertainment Partners"}}}));
    const std::string command = "qpdf --encrypt secret owner 256 -- '" + plain.string() + "' '" + locked.string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    std::ifstream in(locked, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    try {
        extractTextLayer(bytes, PayStubTextSource::embeddedPDFText);
        FAIL() << "read";
    } catch (const PayStubExtractionError& error) {
        EXPECT_STREQ(error.what(), "The selected pay stub is not a readable PDF.");
    }
    StubOcrEngine engine;
    EXPECT_THROW(engine.read(bytes), PayStubExtractionError);
}

}  // namespace
}  // namespace tessel

#include "App/actualpay/StubBatch.hpp"

namespace tessel {
namespace {

// Files read on two workers come back, and are reported, in the order they were given.
TEST(StubBatch, AnswersInFileOrderWhateverFinishesFirst) {
    const std::vector<stub_batch::StubFile> files{{"a.pdf", epStub()}, {"b.pdf", "not a pdf"}, {"c.pdf", epStub("360.01")}, {"d.pdf", ""}};
    std::vector<std::size_t> reported;
    const auto outcomes = stub_batch::read(files, PayStubTextSource::embeddedPDFText, 2,
                                           [&](std::size_t done, const stub_batch::Outcome&) { reported.push_back(done); });
    EXPECT_EQ(reported, (std::vector<std::size_t>{1, 2, 3, 4}));
    ASSERT_EQ(outcomes.size(), 4u);
    ASSERT_TRUE(std::holds_alternative<EPPayStubInterpretation>(outcomes[0]));
    EXPECT_EQ(std::get<std::string>(outcomes[1]), "The selected pay stub is not a readable PDF.");
    ASSERT_TRUE(std::holds_alternative<EPPayStubInterpretation>(outcomes[2]));
    EXPECT_EQ(std::get<EPPayStubInterpretation>(outcomes[2]).earningLines[0].amount.reviewReason,
              "Rate × hours does not reconcile to the printed amount.");
    EXPECT_EQ(std::get<std::string>(outcomes[3]), "The selected pay stub is empty.");
    EXPECT_TRUE(stub_batch::read({}, PayStubTextSource::embeddedPDFText, 2).empty());
}

}  // namespace
}  // namespace tessel
