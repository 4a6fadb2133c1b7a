#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "TarnlyClient/Companion/CompanionSession.hpp"
#include "TarnlyClient/Lesson/LessonCheck.hpp"
#include "TarnlyCore/Flight/Values.hpp"

namespace tarnly::client {

/// How a lesson is begun, and whom to tell what. The functions outlive the start.
struct LessonStart {
    /// How long the simulator may take to load the situation.
    std::chrono::milliseconds patience{60'000};
    /// What is being done.
    std::function<void(const std::string& text)> progress;
    /// What the person should know.
    std::function<void(const std::string& text)> remark;
};

/// The path of the only saved flight of this name. Throws `ClientError`, which names those that are there.
std::string pathOfSituation(const std::vector<FlightListing>& flights, const std::string& name);

/// Pairs, has the situation loaded and waits until the aircraft is in it, loads the script and starts the
/// recording. Throws `ClientError` when any of this cannot be done, and does nothing of the rest then.
Task<> startLesson(CompanionSession& session, Lesson lesson, LessonStart start);

} // namespace tarnly::client
