#include <malloc.h>

#include "TarnlyPlatform/Base/FreedMemory.hpp"

namespace tarnly {
namespace {

/// Larger blocks are the system's own, and go back at once. A piece of a long reply stays below it.
constexpr int largestKept = 4 * 1024 * 1024;

} // namespace

void giveBackFreedMemory() { malloc_trim(0); }

void keepLittleFreedMemory() {
    // Setting one of them ends that the allocator raises both by itself.
    mallopt(M_MMAP_THRESHOLD, largestKept);
    mallopt(M_TRIM_THRESHOLD, largestKept);
    // Small blocks join their free neighbours at once: what joins them later, and only at the end of a
    // thread's memory, stays there even when it is given back.
    mallopt(M_MXFAST, 0);
}

} // namespace tarnly
