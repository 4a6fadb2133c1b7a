#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyClient/Lesson/LessonFile.hpp"
#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Script/ArmedScript.hpp"
#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyTrack/Grade/Tolerance.hpp"

namespace tarnly::client {

/// A lesson as it is flown; docs/lessons.md has what its author writes. A plain value.
struct Lesson {
    /// What people call it.
    std::string name;
    /// The saved flight in which it begins; without one it begins where the aircraft is.
    std::optional<std::string> situation{};
    /// What to read before; empty where nothing was written.
    std::string briefing{};
    LoadScriptRequest script{};
    std::vector<track::Tolerance> tolerances{};
    /// What ends it, whichever comes first; where neither is there the person does.
    std::optional<std::string> endTrigger{};
    std::optional<std::chrono::milliseconds> endTime{};
};

/// A finding, and the file in which it stands.
struct LessonFinding {
    std::string file;
    ScriptFinding finding;

    bool isError() const { return finding.severity == ScriptFinding::Severity::error; }

    bool operator==(const LessonFinding&) const = default;
};

/// A lesson as it was read, and what is wrong with it.
struct CheckedLesson {
    Lesson lesson;
    /// Of the lesson itself, of its script, of its tolerances, each in the order of its text. With an error
    /// among them it is not flown.
    std::vector<LessonFinding> findings;

    bool isUsable() const;
};

/// Reads all that belongs to a lesson and looks at all of it, as `checkScript` does at scripts, to which
/// `fixPosition` goes. Throws nothing for what stands there: that is a finding, with its place and a cure.
CheckedLesson checkLesson(const LessonFile& file, const FixResolver& fixPosition = {});

} // namespace tarnly::client
