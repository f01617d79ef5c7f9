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

#include "App/dtsexport/ProductionDTSTemplates.hpp"

// A DTS of 42 crew rows, three pages of the typical form's 14 rows, drawn through its approved mapping.
namespace tessel {
namespace {

void exportThreePagesThroughTheTypicalForm(benchmark::State& state) {
    std::ifstream in(std::string(TESSEL_FORM_FIXTURES) + "/typical.pdf", std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    const std::string pdf = bytes.str();
    const auto inspection = pdf_structure::inspect(pdf);
    ApprovedGenericDTSTemplateSnapshot snapshot{pdf, production_dts_templates::proposedDefinition(dts_interpretation::interpret(inspection))};
    snapshot.definition.approvalState = ProductionDTSTemplateDefinition::ApprovalState::approved;
    snapshot.definition.approvedAt = Instant{};
    Production production{Uuid::generate(), "Harbor Lights", Instant{}};
    DTSWorkdayFacts facts{production, {"Grip & Electric", "Lighthouse Pictures", "CA", "Morgan Hale"},
                          Workday{Uuid::generate(), Uuid::generate(), CalendarDate(std::chrono::year(2026) / 11 / 4)}};
    for (int i = 0; i < 42; ++i) {
        DTSCrewRowFacts row{Uuid::generate(), Uuid::generate(), Uuid::generate(), "Crew Member " + std::to_string(i + 1)};
        row.nonDeductibleBreakfast = i % 3 == 0;
        row.mileage = Decimal("12.5");
        facts.rows.push_back(row);
    }
    for (auto _ : state) benchmark::DoNotOptimize(generic_dts_render::render(snapshot, facts));
}
BENCHMARK(exportThreePagesThroughTheTypicalForm)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessel
