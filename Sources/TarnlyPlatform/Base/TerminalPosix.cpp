#include <unistd.h>

#include "TarnlyPlatform/Base/Terminal.hpp"

namespace tarnly {

bool isErrorATerminal() { return ::isatty(STDERR_FILENO) == 1; }

} // namespace tarnly
