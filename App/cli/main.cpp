#include <cstdlib>
#include <iostream>

#include <unistd.h>

#include "App/cli/CommandLine.hpp"

int main(int argc, char** argv) {
    // Tesseract's OpenMP threads only contend with each other on the two or four cores of a desktop: a
    // stub page takes twice as long with them as without. One reading runs on one core, and a batch
    // reads its files on workers of its own. OpenMP reads its thread limit when the library loads,
    // before main, so the process starts itself once more with the limit set (unless the user set one).
    if (!std::getenv("OMP_THREAD_LIMIT") && setenv("OMP_THREAD_LIMIT", "1", 1) == 0) execv("/proc/self/exe", argv);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    return tessel::runCommandLine(arguments, {std::cin, std::cout, std::cerr});
}
