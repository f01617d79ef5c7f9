#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>

#include "App/actualpay/PayStubImport.hpp"
#include "App/actualpay/StubExtraction.hpp"
#include "tests/actualpay/StubPdf.hpp"

// Importing stubs for a week: a batch of text-layer stubs, and scans read on one worker against two.
namespace tessel {
namespace {

using namespace std::chrono;

const PayStubWeek week{Uuid::generate(), Uuid::generate(), CalendarDate(year(2026) / 11 / 2), CalendarDate(year(2026) / 11 / 8)};

// Fifty invented names: ten first names by five surnames.
std::string nameOf(int i) {
    static const char* first[] = {"DANA", "OSCAR", "PRIYA", "LEVI", "MAREN", "TOMAS", "WREN", "IDRIS", "JUNE", "COLE"};
    static const char* last[] = {"RIVERA", "NAKAMURA", "HARTMANN", "SOLBERG", "CALLOWAY"};
    return std::string(first[i % 10]) + " " + last[i / 10];
}

// Fifty stubs of one layout, each for its own crew member, so none is a duplicate of another.
struct Batch {
    std::vector<PayStubBatchInput> inputs;
    std::vector<PayStubCrewOption> crew;
    Batch() {
        for (int i = 0; i < 50; ++i) {
            crew.push_back({Uuid::generate(), nameOf(i), true});
            std::vector<testing::PlacedWord> words{{72, 60, "Entertainment Partners"}, {72, 90, nameOf(i) + " SSN: XXX-XX-1234"},
                                                   {72, 108, "Occupation Title: Electrician"}, {72, 126, "Pay Period Start: 11/02/2026 End: 11/08/2026"},
                                                   {72, 170, "DESC"}, {250, 170, "RATE"}, {330, 170, "HOURS"}, {420, 170, "AMOUNT"},
                                                   {72, 188, "REGULAR"}, {250, 188, "45.00"}, {330, 188, "40.0"}, {420, 188, "1800.00"},
                                                   {72, 206, "OVERTIME"}, {250, 206, "67.50"}, {330, 206, "4.0"}, {420, 206, "270.00"},
                                                   {72, 224, "MEAL PENALTY"}, {420, 224, "25.00"},
                                                   {72, 250, "TOTALS"}, {330, 250, "44.0"}, {420, 250, "2095.00"}, {72, 268, "GROSS"}};
            inputs.push_back({"stub-" + std::to_string(i) + ".pdf", testing::drawnPdf({words}), std::nullopt});
        }
    }
};

const Batch& batch() {
    static const Batch shared;
    return shared;
}

// The whole import: both readings of every stub on two workers, interpretation, crew match, statuses.
void importFiftyTextLayerStubs(benchmark::State& state) {
    const auto& b = batch();
    for (auto _ : state) {
        const auto session = importBatch(b.inputs, week, b.crew, {}, {PayStubTextSource::embeddedPDFText, 2, Instant{}});
        for (const auto& c : session.candidates) {
            if (statusOf(c, session) != PayStubBatchStatus::ready) {
                const auto reasons = reviewReasons(c, session);
                state.SkipWithError((c.filename + " is not ready: " + (reasons.empty() ? std::string() : reasons.front())).c_str());
                break;
            }
        }
    }
}
BENCHMARK(importFiftyTextLayerStubs)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

// Tessel's own part of that import, on one core: the text layer read, interpreted against itself as the
// second reading, matched to the crew and given its status (no OCR).
void importWorkOfFiftyStubsWithoutOcr(benchmark::State& state) {
    const auto& b = batch();
    for (auto _ : state) {
        PayStubBatchSession session{week, b.crew, {}, {}, false, 0, std::nullopt};
        for (const auto& input : b.inputs) {
            auto text = extractTextLayer(*input.data, PayStubTextSource::embeddedPDFText);
            auto second = text;
            second.source = PayStubTextSource::tesseractOCR;
            const auto stub = interpretEPStub(std::move(text), std::move(second));
            session.candidates.push_back({input.filename, input.filename, startReview(stub, week, b.crew, input.filename, *input.data, Instant{}),
                                          std::nullopt, false, false});
        }
        for (const auto& c : session.candidates) benchmark::DoNotOptimize(statusOf(c, session));
    }
}
BENCHMARK(importWorkOfFiftyStubsWithoutOcr)->Unit(benchmark::kMillisecond);

// Ten scans (image-only pages, the generated demo week's scan made distinct by a trailing comment) on one
// worker, then on two.
void importTenScannedStubs(benchmark::State& state) {
    std::ifstream in(std::string(TESSEL_STUB_FIXTURES) + "/demo-week/07-whitcombe-scan.pdf", std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    std::vector<PayStubBatchInput> scans;
    for (int i = 0; i < 10; ++i) scans.push_back({"scan-" + std::to_string(i) + ".pdf", bytes.str() + "%" + std::to_string(i) + "\n", std::nullopt});
    const std::vector<PayStubCrewOption> crew{{Uuid::generate(), "Dara Whitcombe", true}};
    for (auto _ : state) {
        const auto session = importBatch(scans, week, crew, {}, {PayStubTextSource::embeddedPDFText, static_cast<int>(state.range(0)), Instant{}});
        if (session.candidates.back().failure) state.SkipWithError(session.candidates.back().failure->c_str());
    }
}
BENCHMARK(importTenScannedStubs)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

}  // namespace
}  // namespace tessel
