#include <iostream>
#include <string>
#include <vector>

#include "TarnlyClient/Commands/CommandLine.hpp"

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    return tarnly::client::runClient(arguments, std::cout, std::cerr);
}
