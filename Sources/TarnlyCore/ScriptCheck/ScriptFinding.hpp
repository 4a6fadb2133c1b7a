#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyPlatform/Base/TextPlace.hpp"

/// What is found wrong with a script before anybody flies it. Plain values; nothing here belongs to a thread.
namespace tarnly {

/// One thing that the person who wrote the script had better look at.
struct ScriptFinding {
    enum class Severity {
        /// A trigger that can never fire, or a script that companions refuse.
        error,
        /// What works, and hardly as it was meant.
        warning
    };

    Severity severity = Severity::error;
    TextPlace place{};
    /// What is wrong, and what to do about it, on one line; what is quoted from the script is printable.
    std::string text{};

    bool operator==(const ScriptFinding&) const = default;
};

/// "lesson.json:3:7: what is wrong with it".
std::string findingText(const std::string& file, const ScriptFinding& finding);

/// Collects findings by the byte of the script at which they stand.
class ScriptFindings {
  public:
    void error(std::size_t at, std::string text);
    void warning(std::size_t at, std::string text);

    /// In the order of `script`, in which they stand.
    std::vector<ScriptFinding> inOrder(std::string_view script) &&;

  private:
    struct Placed {
        std::size_t at;
        ScriptFinding finding;
    };

    std::vector<Placed> all_;
};

/// As a finding quotes it: in quotation marks, printable, and not at length.
std::string inQuotes(std::string_view text);

} // namespace tarnly
