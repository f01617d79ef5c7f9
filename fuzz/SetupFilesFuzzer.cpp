// The crew-library and rate-card files from other installations: read whole or refused with one sentence.
#include <string>

#include "App/exchange/ProductionArchive.hpp"
#include "App/exchange/SetupFiles.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    try {
        (void)setup_files::writeCrewLibrary(setup_files::readCrewLibrary(bytes), Instant{});
    } catch (const ProductionArchiveError&) {
    }
    try {
        (void)setup_files::writeRateCard(setup_files::readRateCard(bytes));
    } catch (const ProductionArchiveError&) {
    }
    return 0;
}
