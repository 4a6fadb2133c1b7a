#include "TarnlyApp/Desktop/ActivityText.hpp"

namespace tarnly {
namespace {

std::string twoDigits(std::chrono::seconds::rep number) {
    const auto text = std::to_string(number);
    return number < 10 ? "0" + text : text;
}

std::string durationText(std::chrono::seconds duration) {
    const std::chrono::hh_mm_ss time(duration);
    const auto hours = time.hours().count();
    const auto minutes = time.minutes().count();
    const auto start = hours > 0 ? std::to_string(hours) + ":" + twoDigits(minutes) : std::to_string(minutes);
    return start + ":" + twoDigits(time.seconds().count());
}

} // namespace

std::string clientsText(std::size_t pairedClients) {
    if (pairedClients == 0) return "No client is paired.";
    if (pairedClients == 1) return "1 client is paired.";
    return std::to_string(pairedClients) + " clients are paired.";
}

std::string recordingText(const std::optional<std::chrono::seconds>& recordingFor) {
    if (!recordingFor) return "No recording is running.";
    return "Recording for " + durationText(*recordingFor) + ".";
}

} // namespace tarnly
