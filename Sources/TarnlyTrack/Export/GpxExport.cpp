#include "TarnlyTrack/Export/Export.hpp"
#include "TarnlyTrack/Export/Track.hpp"
#include "TarnlyTrack/Export/XmlWriter.hpp"

// The order of the elements is that of the schema, https://www.topografix.com/GPX/1/1/gpx.xsd.

namespace tarnly::track {
namespace {

constexpr const char* about =
    "Elevations (ele) are indicated altitudes: what the altimeter showed with the setting that it had, in "
    "metres. "
    "They are neither heights above sea level nor above the ellipsoid. Where the track is interrupted, "
    "nothing was "
    "recorded.";

/// The format has -180 and no 180.
std::string lonText(double lon) {
    const auto text = fixedText(lon, degreeDecimals);
    return text == "180" ? "-180" : text;
}

void writePlace(XmlWriter& xml, const ExportedFlight& flight, std::size_t sample) {
    const auto position = flight.log.position(sample).value();
    xml.attribute("lat", fixedText(position.lat, degreeDecimals));
    xml.attribute("lon", lonText(position.lon));
    const auto altitude = flight.log.value(Quantity::altitudeFt, sample);
    if (altitude) xml.element("ele", fixedText(*altitude * metersPerFoot, 2));
}

void writeWaypoints(XmlWriter& xml, const ExportedFlight& flight) {
    for (const auto& fired : flight.log.fired()) {
        if (!fired.sample || !flight.log.position(*fired.sample)) continue;
        xml.begin("wpt");
        writePlace(xml, flight, *fired.sample);
        xml.element("time", isoTime(momentOf(flight.start, fired.elapsedSeconds)));
        xml.element("name", fired.triggerId);
        xml.element("desc", "Trigger fired: " + fired.actionKind);
        xml.end();
    }
}

void writeTrack(XmlWriter& xml, const ExportedFlight& flight, const Track& track) {
    xml.begin("trk");
    xml.element("name", flight.name);
    if (flight.aircraft) xml.element("cmt", "Aircraft: " + *flight.aircraft);
    xml.element("desc", about);
    for (const auto& part : track.parts) {
        xml.begin("trkseg");
        for (auto point = part.begin; point < part.end; ++point) {
            const auto sample = track.samples[point];
            xml.begin("trkpt");
            writePlace(xml, flight, sample);
            xml.element("time", isoTime(flight.momentAt(sample)));
            xml.end();
            flight.tell(sample);
        }
        xml.end();
    }
    xml.end();
}

} // namespace

void exportGpx(const ExportedFlight& flight, TextSink& sink) {
    XmlWriter xml(sink);
    xml.begin("gpx");
    xml.attribute("xmlns", "http://www.topografix.com/GPX/1/1");
    xml.attribute("version", "1.1");
    xml.attribute("creator", "tarnly-track " TARNLY_VERSION);
    xml.begin("metadata");
    xml.element("name", flight.name);
    xml.element("desc", about);
    xml.element("time", isoTime(flight.start));
    xml.end();
    writeWaypoints(xml, flight);
    writeTrack(xml, flight, trackOf(flight.log));
    xml.finish();
}

} // namespace tarnly::track
