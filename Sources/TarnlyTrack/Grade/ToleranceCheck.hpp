#pragma once

#include <string_view>
#include <vector>

#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyTrack/Grade/Tolerance.hpp"

namespace tarnly::track {

/// A file of tolerances as it was read, and what is wrong with it.
struct CheckedTolerances {
    std::vector<Tolerance> tolerances;
    /// In the order of the text; with an error among them the file is not graded by.
    std::vector<ScriptFinding> findings;

    bool isUsable() const;
};

/// Reads the tolerances in `text`, an object with their list, or the list alone. Never throws for what stands
/// there: all that is wrong is a finding, with line, column and cure.
CheckedTolerances readTolerances(std::string_view text);

} // namespace tarnly::track
