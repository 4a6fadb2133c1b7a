#include <iostream>
#include <string>
#include <vector>

#include "TarnlyPlatform/Files/File.hpp"
#include "TarnlyTrack/Commands/CommandLine.hpp"
#include "TarnlyTrack/Output/Progress.hpp"

int main(int argc, char** argv) {
    tarnly::failRatherThanEnd();
    std::ios::sync_with_stdio(false);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    return tarnly::track::runTrack(arguments, std::cout, std::cerr, tarnly::track::isStandardErrorWatched());
}
