#include <sys/resource.h>

#include "TarnlyPlatform/Base/ThreadPriority.hpp"

namespace tarnly {

void yieldToOtherThreads() {
    constexpr id_t callingThread = 0; // as Linux has it; elsewhere that is the process
    constexpr int nicest = 19;
    setpriority(PRIO_PROCESS, callingThread, nicest);
}

} // namespace tarnly
