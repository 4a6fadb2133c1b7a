#include <array>
#include <string_view>

#include "TarnlyPlatform/Base/NumberText.hpp"
#include "TarnlyTrack/Export/Export.hpp"
#include "TarnlyTrack/Log/Derived.hpp"

namespace tarnly::track {
namespace {

/// Writes records; each field ends by a comma, but the last.
class Records {
  public:
    explicit Records(TextSink& sink) : out_(sink) {}

    void field(std::string_view text) {
        separate();
        if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
            out_.text += text;
            return;
        }
        out_.text += '"';
        for (const char c : text) {
            if (c == '"') out_.text += '"';
            out_.text += c;
        }
        out_.text += '"';
    }

    /// The number itself; empty where it is not known.
    void number(std::optional<double> value) {
        separate();
        if (value) appendNumber(out_.text, *value);
    }

    void rounded(std::optional<double> value, int decimals) {
        separate();
        if (value) appendFixed(out_.text, *value, decimals);
    }

    void time(Moment moment) {
        separate();
        appendIsoTime(out_.text, moment);
    }

    void boolean(std::optional<bool> value) { field(!value ? "" : *value ? "1" : "0"); }

    void end() {
        out_.text += "\r\n";
        isFirst_ = true;
        out_.pass();
    }

    void finish() { out_.passAll(); }

  private:
    void separate() {
        if (!isFirst_) out_.text += ',';
        isFirst_ = false;
    }

    PieceWriter out_;
    bool isFirst_ = true;
};

struct LeverName {
    Lever lever;
    std::string_view name;
};

constexpr std::array levers{LeverName{Lever::throttle, "throttle_ratio_"},
                            LeverName{Lever::mixture, "mixture_ratio_"},
                            LeverName{Lever::prop, "prop_ratio_"}};

void writeHeader(Records& records, const ExportedFlight& flight) {
    for (const auto* name :
         {"time_utc", "elapsed_s", "segment", "lat_deg", "lon_deg", "indicated_alt_ft", "agl_ft", "bank_deg",
          "pitch_deg", "gear_down", "gear_ratio", "flap_ratio", "autopilot_on"})
        records.field(name);
    for (const auto& lever : levers) {
        for (std::size_t engine = 1; engine <= flight.log.engines(lever.lever); ++engine)
            records.field(std::string(lever.name) + std::to_string(engine));
    }
    for (const auto* name :
         {"derived_ground_speed_kt", "derived_track_deg", "derived_vertical_speed_ft_min", "frozen", "fired"})
        records.field(name);
    if (flight.aircraft) records.field("aircraft");
    records.end();
}

void writeLevers(Records& records, const FlightLog& log, std::size_t sample) {
    for (const auto& lever : levers) {
        const auto values = log.value(lever.lever, sample);
        for (std::size_t engine = 0; engine < log.engines(lever.lever); ++engine) {
            const bool isKnown = values && engine < values->size();
            records.number(isKnown ? std::optional((*values)[engine]) : std::nullopt);
        }
    }
}

void writeDerived(Records& records, const Derived& derived) {
    records.rounded(derived.groundSpeedKt, 1);
    records.rounded(derived.trackDeg, 1);
    records.rounded(derived.verticalSpeedFtMin, 0);
}

/// Goes along the samples with what stands beside them.
class Walk {
  public:
    explicit Walk(const FlightLog& log) : log_(log), segments_(log.segments()), frozen_(log.frozen()) {}

    /// From 1.
    std::size_t segmentOf(std::size_t sample) {
        while (segments_[segment_].end <= sample)
            ++segment_;
        return segment_ + 1;
    }

    bool isFrozen(std::size_t sample) {
        while (stretch_ < frozen_.size() && frozen_[stretch_].end <= sample)
            ++stretch_;
        return stretch_ < frozen_.size() && frozen_[stretch_].begin <= sample;
    }

    /// What fired on the sample, with blanks between; on the first one also what fired before it.
    std::string firedOn(std::size_t sample) {
        std::string ids;
        for (; next_ < log_.fired().size() && log_.fired()[next_].sample.value_or(0) <= sample; ++next_)
            ids += (ids.empty() ? "" : " ") + log_.fired()[next_].triggerId;
        return ids;
    }

  private:
    const FlightLog& log_;
    const std::vector<Stretch> segments_;
    const std::vector<Stretch> frozen_;
    std::size_t segment_ = 0;
    std::size_t stretch_ = 0;
    std::size_t next_ = 0;
};

} // namespace

void exportCsv(const ExportedFlight& flight, TextSink& sink) {
    const auto& log = flight.log;
    Records records(sink);
    Walk walk(log);
    writeHeader(records, flight);
    for (std::size_t i = 0; i < log.size(); ++i) {
        records.time(flight.momentAt(i));
        records.number(log.elapsedSeconds(i));
        records.field(std::to_string(walk.segmentOf(i)));
        for (const auto quantity : {Quantity::lat, Quantity::lon, Quantity::altitudeFt, Quantity::aglFt,
                                    Quantity::bankDeg, Quantity::pitchDeg})
            records.number(log.value(quantity, i));
        records.boolean(log.value(Switch::gearDown, i));
        records.number(log.value(Quantity::gearRatio, i));
        records.number(log.value(Quantity::flapRatio, i));
        records.boolean(log.value(Switch::autopilotOn, i));
        writeLevers(records, log, i);
        writeDerived(records, derivedAt(log, i));
        records.boolean(walk.isFrozen(i));
        records.field(walk.firedOn(i));
        if (flight.aircraft) records.field(*flight.aircraft);
        records.end();
        flight.tell(i);
    }
    records.finish();
}

} // namespace tarnly::track
