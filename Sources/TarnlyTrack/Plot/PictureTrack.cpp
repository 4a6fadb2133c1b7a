#include "TarnlyTrack/Plot/PictureTrack.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string>

#include "TarnlyTrack/Log/GreatCircle.hpp"
#include "TarnlyTrack/Plot/PictureMarks.hpp"

namespace tarnly::track {
namespace {

constexpr double metresPerDegree = 6'371'009 * std::numbers::pi / 180;

/// The tracks, on a plane that touches the earth at the first position.
class TrackPanel {
  public:
    TrackPanel(const std::vector<PlotFlight>& flights, double top) : flights_(flights), top_(top) {
        for (const auto& flight : flights)
            measure(flight.track);
        const double inside = std::min((picture::right - picture::left - 60) / std::max(east_.length(), 1.0),
                                       (trackPanelHeight - 80) / std::max(north_.length(), 1.0));
        perMetre_ = std::min(inside, 1.0);
    }

    void draw(Drawing& drawing) const {
        drawing.box(picture::left, top_, picture::right - picture::left, trackPanelHeight, "panel");
        if (east_.isEmpty())
            return drawing.text(picture::left + 20, top_ + 30, "soft", "No position was recorded.");
        for (std::size_t place = 0; place < flights_.size(); ++place)
            drawTrack(drawing, flights_[place].track, place);
        for (std::size_t place = 0; place < flights_.size(); ++place)
            drawMarks(drawing, flights_[place], place);
        drawScale(drawing);
    }

  private:
    struct Point {
        double x;
        double y;
    };

    void measure(const PlotTrack& track) {
        for (std::size_t i = 0; i < track.at.size(); ++i) {
            if (east_.isEmpty()) {
                middle_ = {track.lat[i], track.lon[i]};
                perLongitude_ =
                    metresPerDegree * std::max(0.01, std::cos(track.lat[i] * std::numbers::pi / 180));
            }
            east_.add(east(track.lon[i]));
            north_.add(north(track.lat[i]));
        }
    }

    double east(double lon) const { return std::remainder(lon - middle_.lon, 360) * perLongitude_; }
    double north(double lat) const { return (lat - middle_.lat) * metresPerDegree; }

    Point point(double lat, double lon) const {
        return {(picture::left + picture::right) / 2 + (east(lon) - (east_.low + east_.high) / 2) * perMetre_,
                top_ + trackPanelHeight / 2 - (north(lat) - (north_.low + north_.high) / 2) * perMetre_};
    }

    void drawTrack(Drawing& drawing, const PlotTrack& track, std::size_t place) const {
        const auto pointOf = [&](std::size_t i) { return point(track.lat[i], track.lon[i]); };
        drawing.path(polyline(track.at.size(), track.breaks, pointOf), "line " + kindOf('i', place));
    }

    void drawMarks(Drawing& drawing, const PlotFlight& flight, std::size_t place) const {
        const auto& track = flight.track;
        for (const auto& mark : marksOf(flight)) {
            // The moments that are marked are kept in the track.
            const auto next = std::lower_bound(track.at.begin(), track.at.end(), mark.at);
            if (next == track.at.end() || *next != mark.at) continue;
            const auto index = static_cast<std::size_t>(next - track.at.begin());
            const auto [x, y] = point(track.lat[index], track.lon[index]);
            drawMark(drawing, mark.kind, place, x, y);
            // Above and below, so that both can be read where the script would have done the same.
            const auto labelY = mark.kind == PictureMark::Kind::fired ? y - 12 : y + 20;
            drawing.text(x, labelY, "middle bold", (flights_.size() > 1 ? letterOf(place) : "") + mark.label);
        }
    }

    void drawScale(Drawing& drawing) const {
        const double miles = roundLength(180 / perMetre_ / metersPerNauticalMile);
        const double length = miles * metersPerNauticalMile * perMetre_;
        const double y = top_ + trackPanelHeight - 16;
        drawing.path("M" + pixels(picture::left + 16) + " " + pixels(y - 6) + "v6h" + pixels(length) + "v-6",
                     "scale");
        const int digits = std::max(0, static_cast<int>(-std::floor(std::log10(miles))));
        drawing.text(picture::left + 16 + length / 2, y - 8, "middle", decimal(miles, digits) + " nm");
        drawing.path("M" + pixels(picture::right - 24) + " " + pixels(top_ + 10) + "l7 18l-7 -5l-7 5z", "");
        drawing.text(picture::right - 24, top_ + 44, "middle", "N");
    }

    const std::vector<PlotFlight>& flights_;
    double top_;
    Range east_;
    Range north_;
    Position middle_;
    double perLongitude_ = 1;
    double perMetre_ = 1;
};

} // namespace

void drawTracks(Drawing& drawing, const std::vector<PlotFlight>& flights, double top) {
    TrackPanel(flights, top).draw(drawing);
}

} // namespace tarnly::track
