#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "App/actualpay/StubExtraction.hpp"
#include "App/actualpay/StubFacts.hpp"
#include "App/actualpay/StubInterpretation.hpp"
#include "App/actualpay/StubOcr.hpp"

// The quality bar of the stub readers over the generated fixtures (tools/stub-fixtures): every fact a
// fixture prints is recovered exactly from its text layer, and from OCR alone on the scans and the clean
// stub; nothing is dropped; every refusal is the one sentence of its case.
namespace tessel {
namespace {

const std::filesystem::path folder = TESSEL_STUB_FIXTURES;

std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

struct Fixture {
    std::string name, pdf, facts, embedded, outcome;
    bool ocrExact = false;
};

void PrintTo(const Fixture& fixture, std::ostream* out) { *out << fixture.name; }

std::vector<Fixture> manifest() {
    std::vector<Fixture> fixtures;
    const auto json = nlohmann::json::parse(contentsOf(folder / "manifest.json"), nullptr, false);
    if (!json.is_array()) return {{"manifestMissing", "", "", "", "", false}};
    for (const auto& entry : json) {
        fixtures.push_back({entry["name"], entry["pdf"], entry["facts"].is_null() ? "" : entry["facts"].get<std::string>(), entry["embedded"],
                            entry["outcome"], entry["ocrExact"]});
    }
    return fixtures;
}

PayStubTextSource embeddedOf(const Fixture& f) {
    return f.embedded == "ocr-layer" ? PayStubTextSource::embeddedOCRText : PayStubTextSource::embeddedPDFText;
}

// One OCR engine for the whole suite, as a batch keeps one.
class GeneratedStubs : public ::testing::TestWithParam<Fixture> {
protected:
    static void SetUpTestSuite() { engine = std::make_unique<StubOcrEngine>(); }
    static void TearDownTestSuite() { engine.reset(); }
    static std::unique_ptr<StubOcrEngine> engine;
};
std::unique_ptr<StubOcrEngine> GeneratedStubs::engine;

std::string unrecovered(const PayStubFactRecoveryReport& report) {
    std::string text;
    for (const auto& fact : report.facts) {
        if (fact.classification != PayStubRecoveryClassification::exact) {
            text += fact.id + ": " + std::string(toRawValue(fact.classification)) + " (\"" + fact.expected + "\" read \"" + fact.observed.value_or("") + "\")\n";
        }
    }
    return text;
}

TEST_P(GeneratedStubs, AreReadToTheQualityBar) {
    const Fixture& fixture = GetParam();
    ASSERT_NE(fixture.name, "manifestMissing") << "The stub fixtures were not generated in " << folder;
    const std::string pdf = contentsOf(folder / fixture.pdf);
    if (fixture.outcome != "reads" && fixture.outcome != "unsupportedDocument") {
        try {
            extractTextLayer(pdf, embeddedOf(fixture));
            FAIL() << "read";
        } catch (const PayStubExtractionError& error) {
            EXPECT_EQ(error.caseName(), fixture.outcome);
        }
        EXPECT_THROW(engine->read(pdf), PayStubExtractionError);
        return;
    }
    const auto embedded = extractTextLayer(pdf, embeddedOf(fixture));
    const auto ocr = engine->read(pdf);
    const auto facts = readReferenceFacts(contentsOf(folder / fixture.facts));
    if (!embedded.tokens.empty()) {
        const auto fromLayer = recoverFacts(embedded, facts);
        EXPECT_EQ(fromLayer.summary.exactCount, fromLayer.summary.totalCount) << unrecovered(fromLayer);
    }
    if (fixture.ocrExact) {
        const auto fromPixels = recoverFacts(ocr, facts);
        EXPECT_EQ(fromPixels.summary.exactCount, fromPixels.summary.totalCount) << unrecovered(fromPixels);
        EXPECT_TRUE(fromPixels.summary.earningsReconcile);
    }
    if (fixture.outcome == "unsupportedDocument") {
        try {
            interpretEPStub(embedded, ocr);
            FAIL() << "interpreted";
        } catch (const EPPayStubInterpretationError& error) {
            EXPECT_STREQ(error.what(), "Tessel doesn't recognize this pay-stub format yet.");
        }
        return;
    }
    const auto stub = interpretEPStub(embedded, ocr);
    EXPECT_EQ(stub.earningLines.size(), facts.earningLines.size());  // nothing dropped, nothing doubled
    EXPECT_TRUE(stub.gross.value.has_value());
    // Where both readings see the same page, the printed facts raise no doubt.
    if (!embedded.tokens.empty() && fixture.embedded == "downloaded") {
        for (const auto* reason : {&stub.printedEmployeeName.reviewReason, &stub.printedOccupation.reviewReason, &stub.payPeriodStart.reviewReason,
                                   &stub.payPeriodEnd.reviewReason}) {
            EXPECT_FALSE(reason->has_value()) << **reason;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Fixtures, GeneratedStubs, ::testing::ValuesIn(manifest()), [](const auto& info) {
    std::string name = info.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

EPPayStubInterpretation interpreted(const std::string& name, PayStubTextSource embedded) {
    const std::string pdf = contentsOf(folder / (name + ".pdf"));
    StubOcrEngine engine;
    return interpretEPStub(extractTextLayer(pdf, embedded), engine.read(pdf));
}

TEST(GeneratedStub, RowsThatDoNotReconcileSayWhy) {
    const auto stub = interpreted("rows-off", PayStubTextSource::embeddedPDFText);
    ASSERT_EQ(stub.earningLines.size(), 3u);
    for (const int row : {0, 1}) {  // a cent off, and far off
        const auto& line = stub.earningLines[static_cast<std::size_t>(row)];
        ASSERT_FALSE(line.arithmetic.empty());
        EXPECT_EQ(line.arithmetic.front().status, PayStubArithmeticStatus::inconsistent) << row;
        EXPECT_EQ(line.amount.reviewReason, "Rate × hours does not reconcile to the printed amount.") << row;
    }
    EXPECT_EQ(stub.earningLines[0].arithmetic.front().difference->toString(), "0.01");
    EXPECT_EQ(stub.earningLines[1].arithmetic.front().difference->toString(), "27.00");
    EXPECT_EQ(stub.earningLines[2].arithmetic.front().status, PayStubArithmeticStatus::notApplicable);
}

TEST(GeneratedStub, AnAmountTheTwoReadingsSeeDifferentlyIsLeftForReview) {
    const auto stub = interpreted("text-and-image-disagree", PayStubTextSource::embeddedOCRText);
    ASSERT_EQ(stub.earningLines.size(), 5u);
    const auto& overtime = stub.earningLines[1];
    EXPECT_EQ(overtime.amount.reviewReason, "The extraction sources do not agree on the amount.");
    EXPECT_EQ(overtime.amount.value->toString(), "708.75");  // proposed from the text layer, the page's 708.15 beside it
    ASSERT_EQ(overtime.amount.evidence.size(), 2u);
    EXPECT_EQ(overtime.amount.evidence[1].rawText, "708.15");
    EXPECT_EQ(stub.embeddedEvidence.source, PayStubTextSource::embeddedOCRText);
    for (const auto& line : stub.earningLines) {
        if (&line != &overtime) {
            EXPECT_FALSE(line.amount.reviewReason.has_value()) << *line.printedLabel.value;
        }
    }
}

}  // namespace
}  // namespace tessel
