#include <iostream>
#include <string>
#include <vector>

#include "TarnlyNavdb/CommandLine.hpp"
#include "TarnlyPlatform/Base/Terminal.hpp"

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    return tarnly::navdb::runNavdb(arguments, {std::cout, std::cerr, tarnly::isErrorATerminal()});
}
