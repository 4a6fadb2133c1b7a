#pragma once

#include <iostream>
#include <string>

#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// Says on standard error what is worth knowing and no reason to give up. From any thread: a line stays
/// whole.
inline void remark(const std::string& text) { std::cerr << "Tarnly: " + text + "\n" << std::flush; }

inline void remark(const Phrase& phrase) { remark(phrase.text()); }

} // namespace tarnly
