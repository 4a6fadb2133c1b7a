#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"

#include <algorithm>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {

void ScriptFindings::error(std::size_t at, std::string text) {
    all_.push_back({at, {ScriptFinding::Severity::error, {}, std::move(text)}});
}

void ScriptFindings::warning(std::size_t at, std::string text) {
    all_.push_back({at, {ScriptFinding::Severity::warning, {}, std::move(text)}});
}

std::vector<ScriptFinding> ScriptFindings::inOrder(std::string_view script) && {
    std::ranges::stable_sort(all_, {}, &Placed::at);
    TextPlaces places(script);
    std::vector<ScriptFinding> result;
    result.reserve(all_.size());
    for (auto& placed : all_) {
        placed.finding.place = places.at(placed.at);
        result.push_back(std::move(placed.finding));
    }
    return result;
}

std::string findingText(const std::string& file, const ScriptFinding& finding) {
    const bool isWarning = finding.severity == ScriptFinding::Severity::warning;
    return printable(file) + ":" + std::to_string(finding.place.line) + ":" +
           std::to_string(finding.place.column) + (isWarning ? ": warning: " : ": ") + finding.text;
}

std::string inQuotes(std::string_view text) {
    constexpr std::size_t longest = 60;
    const bool isLong = text.size() > longest;
    // A character that is cut in two becomes one that says so.
    return "\"" + printable(text.substr(0, longest)) + (isLong ? "…\"" : "\"");
}

} // namespace tarnly
