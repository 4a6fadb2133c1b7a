#pragma once

#include <initializer_list>
#include <string>
#include <utility>

#include "TarnlyTrack/Log/FlightLogReader.hpp"

namespace tarnly::track::test {

/// Samples at altitude 1000, each with these members more.
inline FlightLog logOf(std::initializer_list<std::pair<double, std::string>> samples) {
    FlightLogReader reader;
    for (const auto& [time, more] : samples) {
        reader.add(R"({"kind":"sample","sample":{"alt_ft":1000,"elapsed_s":)" + std::to_string(time) + more +
                   "}}\n");
    }
    return reader.finish();
}

inline const std::string here = R"(,"lat":1,"lon":2)";

} // namespace tarnly::track::test
