#pragma once

namespace tarnly {

/// Lets other threads go before the calling one from now on, where the system allows it.
void yieldToOtherThreads();

} // namespace tarnly
