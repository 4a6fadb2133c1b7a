#pragma once

#include <iostream>
#include <string>

namespace tarnly {

/// Says on standard error what is worth knowing and no reason to give up. From any thread: a line stays
/// whole.
inline void remark(const std::string& text) { std::cerr << "Tarnly: " + text + "\n" << std::flush; }

} // namespace tarnly
