#pragma once

#include <new>

namespace tarnly {

/// Takes `step`, and once more where there was no memory for it: for what nobody else would try again. Throws
/// what the second try throws. A step that throws has done nothing.
template <typename Step>
void onceMoreWithoutMemory(const Step& step) {
    try {
        step();
    } catch (const std::bad_alloc&) {
        step();
    }
}

} // namespace tarnly
