#pragma once

#include <string>

#include "TarnlyTrack/Trial/ScriptTrial.hpp"

namespace tarnly::client {

/// What a script did over the recording `file`, for people: a line for the recording, one for each trigger
/// that fired, in the order of firing, then one for each that did not, without a line feed at the end.
std::string trialText(const std::string& file, const track::Trial& trial);

/// The same as one JSON object: `file`, `duration_s`, `fired` and `missed`.
std::string trialJson(const std::string& file, const track::FlightLog& log, const track::Trial& trial);

} // namespace tarnly::client
