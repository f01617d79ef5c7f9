#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>

#include "App/dtsexport/DTSTemplateInterpretation.hpp"

// The typical blank form (a 14-row crew table, spanning meal headers, document labels) inspected and
// interpreted, as `template inspect` does.
namespace tessel {
namespace {

void inspectTheTypicalForm(benchmark::State& state) {
    std::ifstream in(std::string(TESSEL_FORM_FIXTURES) + "/typical.pdf", std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    const std::string pdf = bytes.str();
    for (auto _ : state) benchmark::DoNotOptimize(dts_interpretation::interpret(pdf_structure::inspect(pdf)));
}
BENCHMARK(inspectTheTypicalForm)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessel
