#include <dirent.h>
#include <sys/resource.h>

#include <limits>

#include "TarnlyPlatform/Base/Descriptors.hpp"

namespace tarnly {

std::size_t raiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return std::numeric_limits<std::size_t>::max();
    const auto before = limit.rlim_cur;
    limit.rlim_cur = limit.rlim_max;
    return setrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_max : before;
}

std::size_t openDescriptors() {
    // The standard library's way to walk a folder ends the program where there is no memory.
    DIR* const entries = ::opendir("/proc/self/fd");
    if (entries == nullptr) return 0;
    std::size_t count = 0;
    while (const auto* const entry = ::readdir(entries)) {
        if (entry->d_name[0] != '.') ++count;
    }
    ::closedir(entries);
    return count;
}

} // namespace tarnly
