#include "TarnlyTrack/Output/Progress.hpp"

#include <utility>

namespace tarnly::track {

void Progress::show(const std::string& what, std::size_t done, std::size_t total) {
    if (!isWatched_ || total == 0) return;
    auto line = what + " " + std::to_string(done >= total ? 100 : done * 100 / total) + " %";
    if (line == shown_) return;
    shown_ = std::move(line);
    stream_ << "\r\033[K" << shown_ << std::flush; // to the margin, and erase to the end of the line
}

void Progress::clear() {
    if (shown_.empty()) return;
    shown_.clear();
    stream_ << "\r\033[K" << std::flush;
}

} // namespace tarnly::track
