#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "TarnlyCore/ScriptCheck/ScriptCheck.hpp"

namespace tarnly::test {

/// "2:5: what is wrong" for each finding; warnings begin with "2:5: warning: ".
inline std::vector<std::string> findingsIn(std::string_view script, const FixResolver& fixPosition = {}) {
    std::vector<std::string> result;
    for (const auto& [severity, place, text] : checkScript(script, fixPosition)) {
        const bool isWarning = severity == ScriptFinding::Severity::warning;
        result.push_back(std::to_string(place.line) + ":" + std::to_string(place.column) + ": " +
                         (isWarning ? "warning: " : "") + text);
    }
    return result;
}

/// A script of one trigger, whose condition begins at line 1, column 54.
inline std::string withCondition(const std::string& kind, const std::string& condition) {
    return R"([{"id":"a","action_kind":"b","action":{},"condition":)" + condition + R"(,"condition_kind":")" +
           kind + R"("}])";
}

} // namespace tarnly::test
