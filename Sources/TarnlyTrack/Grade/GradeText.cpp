#include "TarnlyTrack/Grade/GradeText.hpp"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly::track {
namespace {

using Verdict = Grade::Verdict;
using Count = std::int64_t;

/// A grade as programs are told of it.
struct ShownGrade {
    std::string id;
    std::string title;
    std::string verdict;
    std::string words;
    std::optional<double> worstSeconds;
    std::optional<double> fromSeconds;
    std::optional<double> toSeconds;
    double judgedSeconds = 0;
    double outsideSeconds = 0;

    static constexpr auto fields() {
        return std::tuple(field("id", &ShownGrade::id), field("title", &ShownGrade::title),
                          field("verdict", &ShownGrade::verdict), field("words", &ShownGrade::words),
                          field("worst_s", &ShownGrade::worstSeconds),
                          field("from_s", &ShownGrade::fromSeconds), field("to_s", &ShownGrade::toSeconds),
                          field("judged_s", &ShownGrade::judgedSeconds),
                          field("outside_s", &ShownGrade::outsideSeconds));
    }
};

struct GradedRecording {
    std::string file;
    std::vector<ShownGrade> grades;
    Count met = 0;
    Count notMet = 0;
    Count notJudged = 0;

    static constexpr auto fields() {
        return std::tuple(field("file", &GradedRecording::file), field("grades", &GradedRecording::grades),
                          field("met", &GradedRecording::met), field("not_met", &GradedRecording::notMet),
                          field("not_judged", &GradedRecording::notJudged));
    }
};

Count countOf(const std::vector<Grade>& grades, Verdict verdict) {
    return std::ranges::count(grades, verdict, &Grade::verdict);
}

ShownGrade shown(const FlightLog& log, const Grade& grade) {
    ShownGrade result;
    result.id = grade.id;
    result.title = grade.title;
    result.verdict = verdictWords(grade.verdict);
    std::ranges::replace(result.verdict, ' ', '_');
    result.words = grade.words;
    if (grade.worst) result.worstSeconds = log.elapsedSeconds(*grade.worst);
    if (grade.part.begin < grade.part.end) {
        result.fromSeconds = log.elapsedSeconds(grade.part.begin);
        result.toSeconds = log.elapsedSeconds(grade.part.end - 1);
    }
    result.judgedSeconds = grade.judgedSeconds;
    result.outsideSeconds = grade.outsideSeconds;
    return result;
}

} // namespace

std::string gradeLine(const Grade& grade) {
    constexpr std::size_t width = 12; // of "not judged", and two blanks
    std::string line(verdictWords(grade.verdict));
    line.resize(width, ' ');
    return line + printable(grade.title) + ": " + grade.words;
}

std::string gradesSum(const std::vector<Grade>& grades) {
    auto text =
        std::to_string(countOf(grades, Verdict::met)) + " of " + std::to_string(grades.size()) + " met";
    if (const auto unjudged = countOf(grades, Verdict::notJudged); unjudged > 0) {
        text += ", " + std::to_string(unjudged) + " not judged";
    }
    return text;
}

std::string gradesJson(const std::filesystem::path& file, const FlightLog& log,
                       const std::vector<Grade>& grades) {
    GradedRecording result;
    result.file = wellFormedUtf8(file.string());
    for (const auto& grade : grades)
        result.grades.push_back(shown(log, grade));
    result.met = countOf(grades, Verdict::met);
    result.notMet = countOf(grades, Verdict::notMet);
    result.notJudged = countOf(grades, Verdict::notJudged);
    return encodeJson(result);
}

} // namespace tarnly::track
