#include "TarnlyTrack/Plot/PictureMarks.hpp"

#include <algorithm>
#include <string_view>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/TimeText.hpp"

namespace tarnly::track {
namespace {

using Kind = PictureMark::Kind;

constexpr double lineHeight = 18;
/// So many characters of the picture's font fit beside each other.
constexpr std::size_t lineLength = 120;
constexpr std::size_t mostLines = 60;

std::string labelOf(Kind kind, std::size_t number) {
    const std::string_view lead = kind == Kind::fired ? "" : kind == Kind::would ? "s" : "m";
    return std::string(lead) + std::to_string(number + 1);
}

/// Cut at blanks where there are any.
std::vector<std::string> linesOf(std::string text) {
    std::vector<std::string> lines;
    while (text.size() > lineLength) {
        const auto blank = text.rfind(' ', lineLength);
        const auto end = blank == std::string::npos || blank == 0 ? lineLength : blank;
        lines.push_back(text.substr(0, end));
        text.erase(0, blank == end ? end + 1 : end);
    }
    lines.push_back(std::move(text));
    return lines;
}

/// A line with its mark, or one that goes on.
struct Said {
    std::string text;
    std::optional<Kind> kind;
};

void say(std::vector<Said>& said, Kind kind, const std::string& text) {
    auto isFirst = true;
    for (auto& line : linesOf(printable(text))) {
        said.push_back({std::move(line), isFirst ? std::optional(kind) : std::nullopt});
        isFirst = false;
    }
}

std::vector<Said> saidOf(const std::vector<PlotGrade>& grades) {
    std::vector<Said> said;
    for (const auto& grade : grades) {
        for (auto& line : linesOf(printable(grade.verdict + ": " + grade.title + ": " + grade.words)))
            said.push_back({std::move(line), std::nullopt});
    }
    return said;
}

std::vector<Said> saidOf(const PlotTrial& trial) {
    std::vector<Said> said;
    for (std::size_t number = 0; number < trial.fired.size(); ++number) {
        const auto& fired = trial.fired[number];
        say(said, Kind::would,
            labelOf(Kind::would, number) + "  " + fired.id + ": would have fired at " + timeText(fired.at));
    }
    for (std::size_t number = 0; number < trial.missed.size(); ++number) {
        const auto& miss = trial.missed[number];
        say(said, Kind::miss,
            labelOf(Kind::miss, number) + "  " + miss.id + ": would not have fired: " + miss.words);
    }
    return said;
}

double drawSaid(Drawing& drawing, const std::string& title, const std::vector<Said>& said, std::size_t place,
                double top) {
    drawing.text(picture::left, top, "bold", title);
    const auto shown = std::min(said.size(), mostLines);
    for (std::size_t line = 0; line < shown; ++line) {
        top += lineHeight;
        if (said[line].kind) drawMark(drawing, *said[line].kind, place, picture::left + 8, top - 4);
        drawing.text(picture::left + 22, top, "", said[line].text);
    }
    if (shown < said.size()) {
        top += lineHeight;
        drawing.text(picture::left + 22, top, "soft",
                     "and " + std::to_string(said.size() - shown) + " more lines");
    }
    return top + 2 * lineHeight;
}

} // namespace

std::vector<PictureMark> marksOf(const PlotFlight& flight) {
    std::vector<PictureMark> marks;
    for (std::size_t number = 0; number < flight.fired.size(); ++number)
        marks.push_back({Kind::fired, labelOf(Kind::fired, number), flight.fired[number].at});
    if (!flight.trial) return marks;
    const auto& [script, fired, missed] = *flight.trial;
    for (std::size_t number = 0; number < fired.size(); ++number)
        marks.push_back({Kind::would, labelOf(Kind::would, number), fired[number].at});
    for (std::size_t number = 0; number < missed.size(); ++number) {
        if (missed[number].at) marks.push_back({Kind::miss, labelOf(Kind::miss, number), *missed[number].at});
    }
    return marks;
}

void drawMark(Drawing& drawing, Kind kind, std::size_t place, double x, double y) {
    switch (kind) {
        case Kind::fired:
            return drawing.path("M" + pixels(x) + " " + pixels(y) + "l-5 -9h10z", kindOf('f', place));
        case Kind::would:
            return drawing.path("M" + pixels(x - 6) + " " + pixels(y) + "l6 -6l6 6l-6 6z",
                                "would " + kindOf('s', place));
        case Kind::miss:
            return drawing.path("M" + pixels(x - 5) + " " + pixels(y - 5) + "l10 10m0 -10l-10 10",
                                "miss " + kindOf('s', place));
    }
}

double drawWords(Drawing& drawing, const std::vector<PlotFlight>& flights, double top) {
    for (std::size_t place = 0; place < flights.size(); ++place) {
        const auto& trial = flights[place].trial;
        const auto& grades = flights[place].grades;
        const auto of = flights.size() > 1 ? " on flight " + letterOf(place) : std::string();
        if (trial) {
            const auto title = "What the script " + trial->script + " would have done" + of;
            top = drawSaid(drawing, title, saidOf(*trial), place, top);
        }
        if (!grades.empty()) top = drawSaid(drawing, "Grades" + of, saidOf(grades), place, top);
    }
    return top;
}

} // namespace tarnly::track
