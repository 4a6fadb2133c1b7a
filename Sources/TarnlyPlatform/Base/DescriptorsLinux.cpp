#include <sys/resource.h>

#include <filesystem>
#include <iterator>
#include <limits>
#include <system_error>

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
    std::error_code error;
    const std::filesystem::directory_iterator entries("/proc/self/fd", error);
    if (error) return 0;
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

} // namespace tarnly
