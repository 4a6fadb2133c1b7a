#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Recording/RecordingLog.hpp"
#include "TarnlyTrack/Log/FlightLog.hpp"

namespace tarnly::client {

/// What one recording has told of a lesson: as the lines of its log, from which all else is read.
class LessonPart {
  public:
    void take(const LogLine& line);

    bool isEmpty() const { return lines_.empty(); }
    /// In the form of the recording's log.
    const std::string& lines() const { return lines_; }
    const std::vector<FiredTriggerEvent>& fired() const { return fired_; }
    track::FlightLog log() const;

  private:
    std::string lines_;
    std::vector<FiredTriggerEvent> fired_;
};

/// A lesson that is being flown, as far as the companion has told. Usually its flight is one recording; where
/// another one is begun meanwhile it has more parts, and keeps them all.
///
/// Has neither clock nor connection: it is told. For one thread at a time.
class LessonFlight {
  public:
    LessonFlight(LoadScriptRequest script, std::optional<std::string> endTrigger);

    /// The next line of the recording that is followed.
    void take(const LogLine& line);

    /// What comes next is of another recording.
    void beginAnew();

    /// The last recording once more, from its beginning on: it takes the place of what is known of it.
    void replaceLast(const std::vector<LogLine>& lines);

    /// Whether the trigger has fired that ends the lesson.
    bool isOver() const { return isOver_; }

    /// At least one; none but the last one is empty.
    const std::vector<LessonPart>& parts() const { return parts_; }

    const LoadScriptRequest& script() const { return script_; }
    /// The last one of the recording that is followed.
    const std::optional<TrackSample>& lastSample() const { return lastSample_; }
    /// In the order of firing, of all parts.
    std::vector<FiredTriggerEvent> fired() const;
    /// Those that have fired in no part, in the order of the script.
    std::vector<const ScriptTrigger*> waiting() const;

    /// Over ground, of the last seconds; absent where positions do not tell.
    std::optional<double> groundSpeedKts() const;

  private:
    struct Fix {
        double elapsedSeconds;
        track::Position position;
    };

    void takeSample(const TrackSample& sample);

    const LoadScriptRequest script_;
    const std::optional<std::string> endTrigger_;
    std::vector<LessonPart> parts_;
    std::optional<TrackSample> lastSample_;
    std::deque<Fix> lately_;
    bool isOver_ = false;
};

} // namespace tarnly::client
