#pragma once

#include <string_view>

#include "TarnlyTrack/Log/LogSample.hpp"

namespace tarnly::track {

/// Reads a line that holds a sample in the very form in which the companion writes it: no blanks, no escapes,
/// `kind` first, all numbers finite. False for every other line, which says nothing against it: then `sample`
/// holds anything, and the JSON parser has to look at the line.
///
/// A day's recording is 56 MB of such lines, and a list of recordings is to come at once; the JSON parser
/// takes several times as long, because it cannot know what comes next.
bool readPlainSample(std::string_view line, LogSample& sample);

} // namespace tarnly::track
