#include "TarnlyClient/Output/Printer.hpp"

#include <cstdint>

#include "TarnlyClient/Output/ReadableText.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly::client {
namespace {

/// A companion as programs are told of it.
struct CompanionListing {
    std::string name;
    std::string host;
    std::string address;
    std::int64_t port = 0;
    std::map<std::string, std::string> txt;

    static constexpr auto fields() {
        return std::tuple(field("name", &CompanionListing::name), field("host", &CompanionListing::host),
                          field("address", &CompanionListing::address),
                          field("port", &CompanionListing::port), field("txt", &CompanionListing::txt));
    }
};

/// A finding as programs are told of it.
struct FindingListing {
    std::string file;
    std::int64_t line = 0;
    std::int64_t column = 0;
    std::string severity;
    std::string text;

    static constexpr auto fields() {
        return std::tuple(field("file", &FindingListing::file), field("line", &FindingListing::line),
                          field("column", &FindingListing::column),
                          field("severity", &FindingListing::severity), field("text", &FindingListing::text));
    }
};

FindingListing listing(const std::string& file, const ScriptFinding& finding) {
    const bool isWarning = finding.severity == ScriptFinding::Severity::warning;
    return {wellFormedUtf8(file), static_cast<std::int64_t>(finding.place.line),
            static_cast<std::int64_t>(finding.place.column), isWarning ? "warning" : "error", finding.text};
}

CompanionListing listing(const FoundService& service) {
    CompanionListing result{
        wellFormedUtf8(service.name), wellFormedUtf8(service.hostName), service.address, service.port, {}};
    for (const auto& [key, value] : service.txt)
        result.txt[wellFormedUtf8(key)] = wellFormedUtf8(value);
    return result;
}

std::string jsonObject(const std::vector<std::string>& names, const Values& values) {
    JsonWriter writer;
    Values left = values;
    writer.beginObject();
    for (const auto& name : names) {
        const auto value = left.extract(name);
        if (value) writeField(writer, name, value.mapped());
    }
    writer.endObject();
    return writer.take();
}

std::vector<std::string> assignments(const std::vector<std::string>& names, const Values& values) {
    std::vector<std::string> result;
    for (const auto& name : names) {
        const auto value = values.find(name);
        if (value != values.end()) result.push_back(name + "=" + numberText(value->second));
    }
    return result;
}

} // namespace

void Printer::line(std::string_view text) { stream_ << text << std::endl; }

void Printer::values(const std::vector<std::string>& names, const Values& values) {
    if (json_) return line(jsonObject(names, values));
    for (const auto& assignment : assignments(names, values))
        line(printable(assignment));
}

void Printer::push(const std::vector<std::string>& names, const Values& values) {
    if (json_) return line(jsonObject(names, values));
    std::string text;
    for (const auto& assignment : assignments(names, values)) {
        if (!text.empty()) text += ' ';
        text += printable(assignment);
    }
    line(text);
}

void Printer::ok() { line(json_ ? encodeJson(OkPayload{}) : "ok"); }

void Printer::simulator(const std::string& sim, const std::string& version) {
    line(json_ ? encodeJson(SimInfo{sim, version}) : printable(sim + " " + version));
}

void Printer::companion(const FoundService& service) {
    if (json_) return line(encodeJson(listing(service)));
    std::string text = service.name + "  " + describe(Endpoint{service.address, service.port});
    for (const auto& [key, value] : service.txt)
        text.append("  ").append(key).append("=").append(value);
    line(printable(text));
}

void Printer::finding(const std::string& file, const ScriptFinding& finding) {
    line(json_ ? encodeJson(listing(file, finding)) : findingText(file, finding));
}

void Printer::flight(const FlightListing& flight) {
    if (json_) return line(encodeJson(flight));
    line(printable(flight.name + "  " + describe(flight.modifiedAt) + "  " + flight.path));
}

void Printer::recorded(const LogLine& recorded) {
    if (json_) return line(encodeJson(recorded));
    line(printable(recorded.sample ? describe(*recorded.sample) : describe(*recorded.fired)));
}

} // namespace tarnly::client
