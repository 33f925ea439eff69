#include <ctime>
#include <iostream>

#include "cli/console.h"
#include "cli/input_file.h"
#include "cli/platform.h"
#include "cli/tool.h"

int main(int argc, char** argv) {
    using namespace Orvel::Tool;

    prepareStandardStreams();
    // Standard output is then written in large pieces.
    std::ios::sync_with_stdio(false);
    InputFile input;
    std::istream in(&input);
    Console console{in, std::cout, std::cerr, standardErrorIsTerminal(), colourIsWelcome(), [] {
                        return std::int64_t{std::time(nullptr)};
                    }};
    return static_cast<int>(runTool(commandLine(argc, argv), console));
}
