#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "Support/TemporaryFolder.hpp"

namespace tarnly::test {

inline std::string navHeader(const std::string& version, const std::string& cycle = "2501",
                             const std::string& build = "20250115") {
    return "I\n" + version + " Version - data cycle " + cycle + ", build " + build +
           ", metadata X. Invented.\n\n";
}

/// A simulator's folder with a little navigation data, invented.
struct SimulatorFiles {
    SimulatorFiles() {
        put("Resources/default data/earth_fix.dat", navHeader("1200") +
                                                        " 52.1  9.2  TARNA ENRT ED 2105431 TARNA\n"
                                                        " 50.0  8.0  TAN   ZZTA ED 2105431 TAN\n99\n");
        put("Resources/default data/earth_nav.dat",
            navHeader("1200") +
                " 2  52.3  9.1  250  357  50  0.0  TAN  ENRT ED TANDORF NDB\n"
                " 3  52.2  9.3  610  11430  130  2.5  TRN  ENRT ED TARNLY VOR/DME\n"
                "12  52.2  9.3  610  11430  130  0.0  TRN  ENRT ED TARNLY VOR/DME DME\n99\n");
    }

    std::filesystem::path put(const std::string& name, const std::string& content) const {
        const auto file = folder.path() / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }

    const TemporaryFolder folder;
};

} // namespace tarnly::test
