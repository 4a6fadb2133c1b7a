#include "TarnlyTrack/Plot/PlotPicture.hpp"

#include "TarnlyPlatform/Base/TimeText.hpp"
#include "TarnlyTrack/Plot/Drawing.hpp"
#include "TarnlyTrack/Plot/PictureMarks.hpp"
#include "TarnlyTrack/Plot/PictureStrips.hpp"
#include "TarnlyTrack/Plot/PictureTrack.hpp"

namespace tarnly::track {
namespace {

constexpr double stripGap = 46;

} // namespace

std::string plotPicture(const std::vector<PlotFlight>& flights) {
    Drawing drawing;
    double y = 24;
    for (std::size_t place = 0; place < flights.size(); ++place) {
        const auto& flight = flights[place];
        drawing.line(picture::left, y - 4, picture::left + 40, y - 4, "line " + kindOf('i', place));
        const auto lead = flights.size() > 1 ? letterOf(place) + "  " : std::string();
        drawing.text(picture::left + 50, y, "", lead + flight.name + ", " + timeText(flight.seconds));
        y += 20;
    }
    drawTracks(drawing, flights, y);
    y += trackPanelHeight + stripGap;
    const bool hasStandstill =
        flights.size() == 1 && !(flights.front().gaps.empty() && flights.front().frozen.empty());
    if (hasStandstill) {
        drawing.text(picture::right, y - 8, "soft end",
                     "grey: nothing recorded, or the simulator was paused");
    }
    drawStrip(drawing, flights, 0, "Altitude, indicated, ft", y);
    y += stripHeight + stripGap;
    drawStrip(drawing, flights, 1, "Height above ground, ft", y);
    y = drawWords(drawing, flights, y + stripHeight + stripGap);
    return drawing.take(y - 16);
}

} // namespace tarnly::track
