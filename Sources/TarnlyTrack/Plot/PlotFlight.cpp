#include "TarnlyTrack/Plot/PlotFlight.hpp"

#include <cmath>
#include <utility>

#include "TarnlyTrack/Plot/Plotter.hpp"

namespace tarnly::track {
namespace {

std::optional<double> greatest(const Plotter::Column& values) {
    std::optional<double> result;
    for (const double value : values) {
        if (!std::isnan(value) && (!result || value > *result)) result = value;
    }
    return result;
}

std::vector<PlotLine> linesOf(const Plotter& plotter, std::string_view key) {
    if (key == "alt_ft") return plotter.lines(plotter.column(Quantity::altitudeFt));
    if (key == "agl_ft") return plotter.lines(plotter.column(Quantity::aglFt));
    if (key == "bank_deg") return plotter.lines(plotter.column(Quantity::bankDeg));
    if (key == "pitch_deg") return plotter.lines(plotter.column(Quantity::pitchDeg));
    if (key == "flap_ratio") return plotter.lines(plotter.column(Quantity::flapRatio));
    if (key == "gear_ratio") return plotter.lines(plotter.column(Quantity::gearRatio));
    if (key == "gear_down") return plotter.lines(plotter.column(Switch::gearDown));
    if (key == "autopilot_on") return plotter.lines(plotter.column(Switch::autopilotOn));
    if (key == "throttle_ratio") return plotter.lines(Lever::throttle);
    if (key == "mixture_ratio") return plotter.lines(Lever::mixture);
    return plotter.lines(Lever::prop);
}

} // namespace

PlotFlight plotFlight(const FlightLog& log, std::string name, std::optional<std::string> start,
                      std::size_t columns, std::span<const std::size_t> marked) {
    const Plotter plotter(log, columns, marked);
    PlotFlight result;
    result.name = std::move(name);
    result.start = std::move(start);
    result.samples = plotter.count();
    result.leftOut = log.size() - plotter.count();
    if (plotter.count() > 0) result.seconds = plotter.timeOf(plotter.count() - 1);
    result.gaps = plotter.gaps();
    result.frozen = plotter.frozen();
    result.highestFt = greatest(plotter.column(Quantity::altitudeFt));
    for (std::size_t i = 0; i < plotKeys.size(); ++i)
        result.lines[i] = linesOf(plotter, plotKeys[i].key);
    result.track = plotter.track(result);
    for (const auto& fired : log.fired()) {
        const bool isDrawn = fired.sample && *fired.sample < plotter.count();
        if (!isDrawn) continue;
        result.fired.push_back({fired.triggerId, fired.actionKind, plotter.timeOf(*fired.sample)});
    }
    return result;
}

} // namespace tarnly::track
