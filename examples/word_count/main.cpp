#include <iostream>
#include <string>
#include <vector>

#include "word_count.h"

int main(int argc, char** argv) {
    return WordCount::run(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
