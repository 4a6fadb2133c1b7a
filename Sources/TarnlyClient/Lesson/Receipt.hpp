#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TarnlyClient/Lesson/LessonFlight.hpp"
#include "TarnlyTrack/Grade/Grade.hpp"
#include "TarnlyTrack/Grade/Tolerance.hpp"
#include "TarnlyTrack/Log/FlightSummary.hpp"
#include "TarnlyTrack/Trial/ScriptFlights.hpp"
#include "TarnlyTrack/Trial/ScriptTrial.hpp"

namespace tarnly::client {

/// What came of one recording of a lesson.
struct ReceiptPart {
    track::FlightSummary summary;
    std::vector<FiredTriggerEvent> fired;
    std::vector<track::Grade> grades;
    /// Where the recording is; the person is told, nothing is looked up there.
    std::string file;
};

/// What a lesson leaves in the hand. A plain value.
struct Receipt {
    std::string lesson;
    /// Why it ended: "the trigger climbing-out fired".
    std::string end;
    /// In their order; more than one where the recording was begun anew.
    std::vector<ReceiptPart> parts;
    /// The triggers that fired in none of them, in the order of the script, each with how near it came in the
    /// part that has the most samples.
    std::vector<track::Miss> missed;
};

/// `fly` flies the lesson's script over a recording; `files` has one for each part of the flight.
Receipt receiptOf(const LessonFlight& flight, const track::ScriptFlight& fly,
                  const std::vector<track::Tolerance>& tolerances, const std::vector<std::string>& files);

/// For people, without a line feed at the end.
std::string receiptText(const Receipt& receipt);

/// The same as one JSON object, by whose `kind`, "receipt", it is told from the lines of the recording.
std::string receiptJson(const Receipt& receipt);

} // namespace tarnly::client
