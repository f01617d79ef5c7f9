// The calc documents: the first byte picks the calculation, the rest is its standard input. Every
// document is answered or refused with one sentence; the command line's last-resort answer for an
// unexpected failure counts as a crash.
#include <cstdlib>
#include <sstream>
#include <string>

#include "App/shell/CommandLine.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const char* const calculations[] = {"allocate", "target-entry", "gross",      "meal", "turnaround", "week",
                                               "sequence", "percentage",   "idle",       "holiday", "fixed-daily"};
    if (size == 0) return 0;
    const std::string command = calculations[data[0] % (sizeof calculations / sizeof *calculations)];
    std::istringstream in(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
    std::ostringstream out, err;
    const int status = tessel::runCommandLine({"calc", command}, {in, out, err});
    if (status < 0 || status > 2) std::abort();
    if ((out.str() + err.str()).find("Tessel could not complete the command") != std::string::npos) std::abort();
    return 0;
}
