#include <ctime>
#include <iostream>

#include "cli/console.h"
#include "cli/platform.h"
#include "cli/tool.h"

int main(int argc, char** argv) {
    using namespace Orvel::Tool;

    prepareStandardStreams();
    // Standard input is then read in large pieces, and still handed on as it comes.
    std::ios::sync_with_stdio(false);
    Console console{std::cin,          std::cout,
                    std::cerr,         standardErrorIsTerminal(),
                    colourIsWelcome(), [] { return std::int64_t{std::time(nullptr)}; }};
    return static_cast<int>(runTool(argc, argv, console));
}
