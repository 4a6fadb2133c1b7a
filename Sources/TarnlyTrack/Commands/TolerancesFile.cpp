#include "TarnlyTrack/Commands/TolerancesFile.hpp"

#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyTrack/Grade/ToleranceCheck.hpp"

namespace tarnly::track {

std::vector<Tolerance> usableTolerances(const CommandContext& context, const std::filesystem::path& file) {
    auto checked = readTolerances(readText(file));
    for (const auto& finding : checked.findings)
        context.err << findingText(file.string(), finding) << std::endl;
    if (checked.isUsable()) return std::move(checked.tolerances);
    throw UsageError("nothing is graded by " + printable(file.string()) +
                     " as it stands; mend what is told above");
}

} // namespace tarnly::track
