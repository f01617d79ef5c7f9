// Diagnostic packages sent to support: checked whole, accepted or refused as invalid, never trusted.
#include <string_view>

#include "App/exchange/DiagnosticPackage.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        (void)tessel::diagnostic_package::check(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const tessel::TesselDiagnosticPackageError&) {
    }
    return 0;
}
