#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Values as people and files have them, whatever the locale.
namespace tarnly::track {

constexpr double metersPerFoot = 0.3048;

/// A moment of a recording, as exactly as its files tell it.
using Moment = std::chrono::sys_time<std::chrono::milliseconds>;

/// When that was, in a recording that was begun at `start`.
Moment momentOf(Moment start, double elapsedSeconds);

/// Appends at most `decimals` digits behind the point, without an exponent and without zeros at the end.
void appendFixed(std::string& text, double value, int decimals);
std::string fixedText(double value, int decimals);

/// Appends "2026-11-16T01:09:38.004Z". Years from 0 to 9999, which a moment beyond is brought to.
void appendIsoTime(std::string& text, Moment moment);
std::string isoTime(Moment moment);

/// Reads "2026-11-16T01:09:38Z", which may have up to three digits of a second's fraction, "…38.25Z". Absent
/// for anything else, other time zones included.
std::optional<Moment> parseIsoTime(std::string_view text);

/// "2026-11-16 01:09:38 UTC", and the same by the computer's own time zone, "2026-11-16 02:09:38 CET".
std::string utcText(std::chrono::sys_seconds moment);
std::string localText(std::chrono::sys_seconds moment);

/// "1:02:03", rounded to seconds.
std::string durationText(double seconds);

/// "1 gap", "2 gaps"; `many` where the plural has no s of its own.
std::string countText(std::size_t count, const std::string& one, const std::string& many);

} // namespace tarnly::track
