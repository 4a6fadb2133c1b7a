#include <algorithm>
#include <string>

#include "Fuzz/Targets.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyTrack/Grade/GradeText.hpp"
#include "TarnlyTrack/Grade/ToleranceCheck.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"

namespace tarnly::fuzz {
namespace {

bool isWithin(const track::Grade& grade, std::size_t samples) {
    if (grade.part.begin > grade.part.end || grade.part.end > samples) return false;
    return !grade.worst || (*grade.worst >= grade.part.begin && *grade.worst < grade.part.end);
}

void requireGrade(const track::Grade& grade, std::size_t samples) {
    using Verdict = track::Grade::Verdict;
    require(isWithin(grade, samples), "the worst moment is one of the part, and the part one of the flight");
    require(grade.verdict == Verdict::notJudged || grade.part.begin < grade.part.end,
            "what never came is not judged");
    require(grade.outsideSeconds >= 0 && grade.judgedSeconds >= grade.outsideSeconds,
            "no more is outside than was judged");
    const auto line = track::gradeLine(grade);
    require(!grade.words.empty() && line == printable(line),
            "there are words, which a terminal may be given");
}

} // namespace

/// Tolerances, and behind a zero byte the recording that is graded by them.
void tolerances(std::string_view bytes) {
    const auto end = std::min(bytes.find('\0'), bytes.size());
    const auto checked = track::readTolerances(bytes.substr(0, end));
    for (const auto& finding : checked.findings) {
        const auto text = findingText("it", finding);
        require(text == printable(text), "a terminal may be given what is found");
    }
    if (!checked.isUsable()) return;
    track::FlightLogReader reader;
    reader.add(bytes.substr(std::min(end + 1, bytes.size())));
    const auto log = reader.finish();
    const auto grades = track::gradesOf(log, checked.tolerances);
    require(grades.size() == checked.tolerances.size(), "each tolerance has its grade");
    for (const auto& grade : grades)
        requireGrade(grade, log.size());
    track::gradesJson("it", log, grades);
}

} // namespace tarnly::fuzz
