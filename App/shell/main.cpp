#include <iostream>

#include "App/shell/CommandLine.hpp"

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    return tessel::runCommandLine(arguments, {std::cin, std::cout, std::cerr});
}
