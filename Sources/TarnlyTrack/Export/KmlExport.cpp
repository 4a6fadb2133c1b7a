#include "TarnlyTrack/Export/Export.hpp"
#include "TarnlyTrack/Export/Track.hpp"
#include "TarnlyTrack/Export/XmlWriter.hpp"

// The order of the elements is that of the schema, http://schemas.opengis.net/kml/2.2.0/ogckml22.xsd.

namespace tarnly::track {
namespace {

/// One of the lines that a flight is drawn as.
struct DrawnLine {
    const char* name;
    const char* description;
    Quantity height;
    const char* altitudeMode;
    /// Whether a map shows it before anybody asks.
    bool isShown;
    /// Down to the ground.
    bool isCurtain;
};

constexpr DrawnLine aboveGround{
    "Height above ground",
    "Heights above ground, over the ground that the map has, which may differ from the simulator's.",
    Quantity::aglFt,
    "relativeToGround",
    true,
    true};

constexpr DrawnLine indicated{
    "Indicated altitude",
    "Indicated altitudes: what the altimeter showed with the setting that it had, drawn "
    "as if they were heights above "
    "sea level.",
    Quantity::altitudeFt,
    "absolute",
    false,
    false};

void writeStyle(XmlWriter& xml) {
    xml.begin("Style");
    xml.attribute("id", "line");
    xml.begin("LineStyle");
    xml.element("color", "ff0055ff"); // opacity, blue, green, red
    xml.element("width", "3");
    xml.end();
    xml.begin("PolyStyle");
    xml.element("color", "400055ff");
    xml.end();
    xml.end();
}

std::string coordinatesOf(const FlightLog& log, std::size_t sample, std::optional<double> heightFt) {
    const auto position = log.position(sample).value();
    std::string text;
    appendFixed(text, position.lon, degreeDecimals);
    text += ',';
    appendFixed(text, position.lat, degreeDecimals);
    if (heightFt) {
        text += ',';
        appendFixed(text, *heightFt * metersPerFoot, 2);
    }
    return text;
}

void writeLineString(XmlWriter& xml, const ExportedFlight& flight, const DrawnLine& line, const Track& track,
                     Stretch part) {
    xml.begin("LineString");
    if (line.isCurtain) xml.element("extrude", "1");
    xml.element("altitudeMode", line.altitudeMode);
    xml.begin("coordinates");
    for (auto point = part.begin; point < part.end; ++point) {
        const auto sample = track.samples[point];
        const auto text = coordinatesOf(flight.log, sample, flight.log.value(line.height, sample));
        xml.text(point == part.begin ? text : " " + text);
        flight.tell(sample);
    }
    xml.end();
    xml.end();
}

/// Nothing where there is nothing to draw: a line takes two samples.
void writeLine(XmlWriter& xml, const ExportedFlight& flight, const DrawnLine& line) {
    auto track = trackOf(flight.log, line.height);
    std::erase_if(track.parts, [](const Stretch& part) { return part.end - part.begin < 2; });
    if (track.parts.empty()) return;
    xml.begin("Placemark");
    xml.element("name", line.name);
    if (!line.isShown) xml.element("visibility", "0");
    xml.element("description", line.description);
    xml.begin("TimeSpan");
    xml.element("begin", isoTime(flight.momentAt(track.samples[track.parts.front().begin])));
    xml.element("end", isoTime(flight.momentAt(track.samples[track.parts.back().end - 1])));
    xml.end();
    xml.element("styleUrl", "#line");
    xml.begin("MultiGeometry");
    for (const auto& part : track.parts)
        writeLineString(xml, flight, line, track, part);
    xml.end();
    xml.end();
}

void writePlacemarks(XmlWriter& xml, const ExportedFlight& flight) {
    for (const auto& fired : flight.log.fired()) {
        if (!fired.sample || !flight.log.position(*fired.sample)) continue;
        xml.begin("Placemark");
        xml.element("name", fired.triggerId);
        xml.element("description", "Trigger fired: " + fired.actionKind);
        xml.begin("TimeStamp");
        xml.element("when", isoTime(momentOf(flight.start, fired.elapsedSeconds)));
        xml.end();
        const auto height = flight.log.value(Quantity::aglFt, *fired.sample);
        xml.begin("Point");
        if (height) xml.element("altitudeMode", "relativeToGround");
        xml.element("coordinates", coordinatesOf(flight.log, *fired.sample, height));
        xml.end();
        xml.end();
    }
}

} // namespace

void exportKml(const ExportedFlight& flight, TextSink& sink) {
    XmlWriter xml(sink);
    xml.begin("kml");
    xml.attribute("xmlns", "http://www.opengis.net/kml/2.2");
    xml.begin("Document");
    xml.element("name", flight.name);
    if (flight.aircraft) xml.element("description", *flight.aircraft);
    writeStyle(xml);
    writeLine(xml, flight, aboveGround);
    writeLine(xml, flight, indicated);
    writePlacemarks(xml, flight);
    xml.finish();
}

} // namespace tarnly::track
