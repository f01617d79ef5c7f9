// A production archive from another installation: decoded and checked whole, or refused with one sentence.
#include <string>

#include "App/exchange/ProductionArchive.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    try {
        production_archive::checkArchive(std::string(reinterpret_cast<const char*>(data), size));
    } catch (const ProductionArchiveError&) {
    }
    return 0;
}
