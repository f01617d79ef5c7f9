#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fstream>

#include "App/actualpay/StubBatch.hpp"
#include "App/actualpay/StubEarnings.hpp"
#include "App/actualpay/StubExtraction.hpp"
#include "App/actualpay/StubOcr.hpp"
#include "tests/actualpay/StubPdf.hpp"
#include "tests/support/TemporaryFolder.hpp"

// Reading one pay stub: each of our readings beside the command-line tool that does the same work on
// the same file, measured in the same run.
namespace tessel {
namespace {

struct StubFile {
    testing::TemporaryFolder folder;
    std::string bytes;
    std::string pdf = (folder.path() / "stub.pdf").string();
    std::string raster = (folder.path() / "page").string();  // pdftoppm adds "-1.pgm"
    StubFile() {
        std::vector<testing::PlacedWord> words{{72, 60, "Entertainment Partners"}, {72, 90, "DANA M RIVERA SSN: XXX-XX-1234"},
                                               {72, 108, "Occupation Title: Key Grip"}, {72, 126, "Pay Period Start: 11/02/2026 End: 11/08/2026"},
                                               {72, 170, "DESC"}, {250, 170, "RATE"}, {330, 170, "HOURS"}, {420, 170, "AMOUNT"}};
        for (int row = 0; row < 12; ++row) {
            const double y = 188 + 18 * row;
            words.insert(words.end(), {{72, y, "REGULAR"}, {250, y, "45.00"}, {330, y, "8.0"}, {420, y, "360.00"}});
        }
        words.insert(words.end(), {{72, 420, "TOTALS"}, {330, 420, "96.0"}, {420, 420, "4320.00"}, {72, 440, "GROSS"}});
        bytes = testing::drawnPdf({words});
        std::ofstream(pdf, std::ios::binary) << bytes;
        const std::string render = "pdftoppm -r 300 -gray '" + pdf + "' '" + raster + "'";
        if (std::system(render.c_str()) != 0) bytes.clear();
    }
};

StubFile& stub() {
    static StubFile shared;
    return shared;
}

void run(benchmark::State& state, const std::string& command) {
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) state.SkipWithError("the command failed");
    }
}

// The text layer read into words, lines and the earnings table.
void readTheTextLayerOfAStub(benchmark::State& state) {
    const StubFile& s = stub();
    for (auto _ : state) benchmark::DoNotOptimize(analyzeEarnings(extractTextLayer(s.bytes, PayStubTextSource::embeddedPDFText)));
}
BENCHMARK(readTheTextLayerOfAStub)->Unit(benchmark::kMillisecond);

void pdftotextBboxOfTheSameStub(benchmark::State& state) { run(state, "pdftotext -bbox '" + stub().pdf + "' /dev/null"); }
BENCHMARK(pdftotextBboxOfTheSameStub)->Unit(benchmark::kMillisecond);

// OCR of the page, its 300-dpi raster included, with one engine kept across pages.
void ocrAStubPage(benchmark::State& state) {
    const StubFile& s = stub();
    StubOcrEngine engine;
    for (auto _ : state) benchmark::DoNotOptimize(engine.read(s.bytes));
}
BENCHMARK(ocrAStubPage)->Unit(benchmark::kMillisecond)->Iterations(5);

void tesseractCommandOnTheSameRaster(benchmark::State& state) {
    run(state, "tesseract '" + stub().raster + "-1.pgm' - --oem 1 --psm 6 -c tessedit_do_invert=0 >/dev/null 2>&1");
}
BENCHMARK(tesseractCommandOnTheSameRaster)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

// Twenty stubs read on one worker, then on two: the second should take little more than half as long.
void readTwentyStubs(benchmark::State& state) {
    const std::vector<stub_batch::StubFile> files(20, stub_batch::StubFile{"stub.pdf", stub().bytes});
    for (auto _ : state) benchmark::DoNotOptimize(stub_batch::read(files, PayStubTextSource::embeddedPDFText, static_cast<int>(state.range(0))));
}
BENCHMARK(readTwentyStubs)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

}  // namespace
}  // namespace tessel
