#include <cmath>
#include <optional>
#include <vector>

#include "TarnlyPlatform/Json/JsonWriter.hpp"
#include "TarnlyTrack/Export/Export.hpp"
#include "TarnlyTrack/Export/Track.hpp"

namespace tarnly::track {
namespace {

/// A point of a line: a sample, or the place between two where the line meets the 180th meridian, where RFC
/// 7946 wants it cut.
struct Point {
    Position position;
    double elapsedSeconds = 0;
    std::optional<std::uint32_t> sample;
};

using Line = std::vector<Point>;

bool crossesMeridian(Position from, Position to) { return std::abs(to.lon - from.lon) > 180; }

/// Ends the last of `lines` at the meridian, and begins another one on the other side.
void cut(std::vector<Line>& lines, const Point& from, const Point& to) {
    const double side = from.position.lon < 0 ? -180 : 180;
    const double before = std::abs(side - from.position.lon);
    const double behind = std::abs(side + to.position.lon);
    const double share = before + behind > 0 ? before / (before + behind) : 0.5;
    const double lat = from.position.lat + share * (to.position.lat - from.position.lat);
    const double time = from.elapsedSeconds + share * (to.elapsedSeconds - from.elapsedSeconds);
    lines.back().push_back({{lat, side}, time, std::nullopt});
    lines.push_back({{{lat, -side}, time, std::nullopt}});
}

/// A line takes two points: a sample alone between gaps is none.
std::vector<Line> linesOf(const FlightLog& log) {
    const auto track = trackOf(log);
    std::vector<Line> lines;
    for (const auto& part : track.parts) {
        if (part.end - part.begin < 2) continue;
        lines.emplace_back();
        lines.back().reserve(part.end - part.begin);
        for (auto at = part.begin; at < part.end; ++at) {
            const auto sample = track.samples[at];
            const Point point{log.position(sample).value(), log.elapsedSeconds(sample), sample};
            if (!lines.back().empty() && crossesMeridian(lines.back().back().position, point.position))
                cut(lines, lines.back().back(), point);
            lines.back().push_back(point);
        }
    }
    return lines;
}

/// Hands on what has become long.
class Json {
  public:
    explicit Json(TextSink& sink) : sink_(sink) {}

    JsonWriter writer;

    void pass() {
        if (writer.size() >= 64U << 10) passAll();
    }
    void passAll() { sink_.write(writer.takePiece()); }

  private:
    TextSink& sink_;
};

void member(JsonWriter& json, std::string_view key, std::string_view text) {
    json.key(key);
    json.string(text);
}

void writePosition(JsonWriter& json, Position position) {
    json.beginArray();
    json.number(position.lon);
    json.number(position.lat);
    json.endArray();
}

void numberOrNull(JsonWriter& json, std::optional<double> value) {
    if (value) {
        json.number(*value);
    } else {
        json.null();
    }
}

/// A list of lists, which has a value for each position of each line.
template <typename Write>
void writePerPosition(Json& json, std::string_view key, const std::vector<Line>& lines, Write write) {
    json.writer.key(key);
    json.writer.beginArray();
    for (const auto& line : lines) {
        json.writer.beginArray();
        for (const auto& point : line) {
            write(point);
            json.pass();
        }
        json.writer.endArray();
    }
    json.writer.endArray();
}

void writeTrack(Json& json, const ExportedFlight& flight, const std::vector<Line>& lines) {
    auto& writer = json.writer;
    const auto& log = flight.log;
    const auto quantity = [&](Quantity which) {
        return [&log, &writer, which](const Point& point) {
            numberOrNull(writer, point.sample ? log.value(which, *point.sample) : std::nullopt);
        };
    };
    writer.beginObject();
    member(writer, "type", "Feature");
    writer.key("geometry");
    if (lines.empty()) {
        writer.null();
    } else {
        writer.beginObject();
        member(writer, "type", "MultiLineString");
        writePerPosition(json, "coordinates", lines, [&](const Point& point) {
            writePosition(writer, point.position);
            flight.tell(point.sample.value_or(1));
        });
        writer.endObject();
    }
    writer.key("properties");
    writer.beginObject();
    member(writer, "name", flight.name);
    if (flight.aircraft) member(writer, "aircraft", *flight.aircraft);
    member(writer, "start", isoTime(flight.start));
    writePerPosition(json, "times", lines, [&](const Point& point) {
        writer.string(isoTime(momentOf(flight.start, point.elapsedSeconds)));
    });
    writePerPosition(json, "indicated_alt_ft", lines, quantity(Quantity::altitudeFt));
    writePerPosition(json, "agl_ft", lines, quantity(Quantity::aglFt));
    writer.endObject();
    writer.endObject();
}

void writeTrigger(JsonWriter& json, const ExportedFlight& flight, const FiredTrigger& fired) {
    const auto position = fired.sample ? flight.log.position(*fired.sample) : std::nullopt;
    json.beginObject();
    member(json, "type", "Feature");
    json.key("geometry");
    if (position) {
        json.beginObject();
        member(json, "type", "Point");
        json.key("coordinates");
        writePosition(json, *position);
        json.endObject();
    } else {
        json.null();
    }
    json.key("properties");
    json.beginObject();
    member(json, "trigger_id", fired.triggerId);
    member(json, "action_kind", fired.actionKind);
    member(json, "time", isoTime(momentOf(flight.start, fired.elapsedSeconds)));
    json.key("indicated_alt_ft");
    numberOrNull(json, fired.sample ? flight.log.value(Quantity::altitudeFt, *fired.sample) : std::nullopt);
    json.key("agl_ft");
    numberOrNull(json, fired.sample ? flight.log.value(Quantity::aglFt, *fired.sample) : std::nullopt);
    json.endObject();
    json.endObject();
}

} // namespace

void exportGeoJson(const ExportedFlight& flight, TextSink& sink) {
    Json json(sink);
    auto& writer = json.writer;
    writer.beginObject();
    member(writer, "type", "FeatureCollection");
    writer.key("features");
    writer.beginArray();
    writeTrack(json, flight, linesOf(flight.log));
    for (const auto& fired : flight.log.fired()) {
        writeTrigger(writer, flight, fired);
        json.pass();
    }
    writer.endArray();
    writer.endObject();
    json.passAll();
    sink.write("\n");
}

} // namespace tarnly::track
