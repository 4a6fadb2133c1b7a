#pragma once

#include <cstdint>
#include <deque>
#include <optional>

namespace tarnly::client {

/// Where the simulator says the aircraft is: degrees, degrees, feet.
struct AircraftPlace {
    double lat = 0;
    double lon = 0;
    double altitudeFt = 0;

    bool operator==(const AircraftPlace&) const = default;
};

/// Tells from where the aircraft is, look by look, whether the simulator has loaded a saved flight: nobody
/// says so, and a loading may take a minute.
///
/// A loading shows itself by an aircraft that is suddenly elsewhere, or by a simulator that told of none for
/// a while. Where neither comes and the aircraft stands still, it was there already, or not far away, since
/// a lesson is often flown again. One that flies on has not been loaded. A plain value.
class SituationArrival {
  public:
    enum class State : std::uint8_t {
        waiting,
        /// Loaded, and values have come without a break ever since.
        arrived,
        /// Nothing was seen of a loading, and the aircraft stands still.
        still
    };

    /// `before` is where it was when the simulator was told to load; absent where the simulator told nothing.
    explicit SituationArrival(const std::optional<AircraftPlace>& before);

    /// What was seen so many seconds after that, which never decrease; absent while the simulator tells of no
    /// aircraft.
    State see(double seconds, const std::optional<AircraftPlace>& now);

    /// Whether anything was seen of a loading.
    bool hasBegun() const { return hasBegun_; }
    /// Whether the simulator told of an aircraft when it was last looked at.
    bool isPlaceKnown() const { return last_.has_value(); }

  private:
    bool hasJumped(double seconds, const AircraftPlace& now);
    void watchStanding(double seconds, const AircraftPlace& now);

    std::optional<AircraftPlace> last_;
    double lastAt_ = 0;
    bool hasBegun_;
    /// Of the last looks, in metres a second.
    std::deque<double> speeds_;
    /// Where it stands, and since when.
    std::optional<AircraftPlace> standing_;
    double standingSince_ = 0;
    /// Since when values come without a break.
    double steadySince_ = 0;
};

} // namespace tarnly::client
