#include <unistd.h>

#include "TarnlyTrack/Output/Progress.hpp"

namespace tarnly::track {

bool isStandardErrorWatched() { return ::isatty(STDERR_FILENO) == 1; }

} // namespace tarnly::track
