#include "TarnlyTrack/Export/Export.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyTrack/Export/XmlWriter.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"
#include "TarnlyTrack/Log/LogName.hpp"

namespace tarnly::track {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::filesystem::path golden = TARNLY_GOLDEN;
const std::filesystem::path recording = golden / "session-2026-11-16T010938Z.jsonl";

using Exporter = void (*)(const ExportedFlight&, TextSink&);

std::string exported(Exporter write, const FlightLog& log, std::optional<std::string> aircraft = {}) {
    std::ostringstream stream;
    StreamSink sink(stream);
    const auto start = startByName(recording).value();
    write(ExportedFlight{log, start, "session-2026-11-16T010938Z", std::move(aircraft), {}}, sink);
    sink.finish();
    return stream.str();
}

/// The file that a format is expected to be, for the present version.
std::string expected(const std::string& name) {
    auto text = test::contentOf(golden / name);
    const std::string placeholder = "@VERSION@";
    if (const auto at = text.find(placeholder); at != std::string::npos)
        text.replace(at, placeholder.size(), TARNLY_VERSION);
    return text;
}

struct Format {
    std::string file;
    Exporter write;
};

class ExportTest : public testing::TestWithParam<Format> {};

// A recording with a gap, a frozen stretch, the 180th meridian, altitudes and heights that are not known, two
// engines of which one is lost, and text that each format must escape.
TEST_P(ExportTest, IsTheExpectedFile) {
    const auto log = readFlightLog(recording);
    EXPECT_EQ(exported(GetParam().write, log, "C172 & \"co\""), expected(GetParam().file));
}

TEST_P(ExportTest, AnEmptyRecordingIsWrittenAsWell) {
    EXPECT_THAT(exported(GetParam().write, FlightLog()), Not(testing::IsEmpty()));
}

TEST_P(ExportTest, NothingGoesAfterASinkThatFails) {
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    StreamSink sink(stream);
    const auto log = readFlightLog(recording);
    EXPECT_THROW(GetParam().write(ExportedFlight{log, Moment(), "flight", std::nullopt, {}}, sink),
                 TrackError);
}

INSTANTIATE_TEST_SUITE_P(Formats, ExportTest,
                         testing::Values(Format{"flight.gpx", exportGpx}, Format{"flight.kml", exportKml},
                                         Format{"flight.csv", exportCsv},
                                         Format{"flight.geojson", exportGeoJson}),
                         [](const auto& format) {
                             return format.param.file.substr(format.param.file.find('.') + 1);
                         });

TEST(XmlWriterTest, WhatXmlCannotHoldIsReplaced) {
    std::ostringstream stream;
    StreamSink sink(stream);
    {
        XmlWriter xml(sink);
        xml.begin("a");
        xml.attribute("b", "<\"&\x01\n");
        xml.text("]]>\x1F\xFF \xEF\xBF\xBF t\tz\u00E9");
        xml.finish();
    }
    EXPECT_THAT(stream.str(),
                HasSubstr("<a b=\"&lt;&quot;&amp;\uFFFD&#10;\">]]&gt;\uFFFD\uFFFD \uFFFD t\tz\u00E9</a>"));
}

} // namespace
} // namespace tarnly::track
