#include <sys/resource.h>
#include <ctime>

#include "TarnlyPlatform/Base/ThreadUse.hpp"

namespace tarnly {

ThreadUse threadUse() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return {std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec), usage.ru_nvcsw};
}

} // namespace tarnly
