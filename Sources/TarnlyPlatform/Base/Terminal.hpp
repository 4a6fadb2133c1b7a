#pragma once

namespace tarnly {

/// Whether a person sees what goes to standard error, which can then be written over. From any thread.
bool isErrorATerminal();

} // namespace tarnly
