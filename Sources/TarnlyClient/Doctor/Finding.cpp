#include "TarnlyClient/Doctor/Finding.hpp"

namespace tarnly::client {
namespace {

const char* markOf(const std::optional<bool>& ok) {
    if (!ok) return "--  ";
    return *ok ? "ok  " : "!!  ";
}

} // namespace

std::vector<std::string> findingLines(const Finding& finding) {
    std::vector<std::string> lines{markOf(finding.ok) + finding.step + ": " + finding.text};
    if (!finding.cure.empty()) lines.push_back("      " + finding.cure);
    return lines;
}

} // namespace tarnly::client
