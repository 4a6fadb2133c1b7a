#include "TarnlySimulator/Api/Duration.hpp"

#include "TarnlySimulator/Api/ApiError.hpp"

namespace tarnly::simulator {

void checkDuration(const boost::json::value& json) {
    constexpr double longestS = 10;
    const double seconds = json.is_number() ? json.to_number<double>() : -1;
    if (!(seconds >= 0 && seconds <= longestS))
        throw ApiError(400, "invalid_duration", "A duration is a number of seconds from 0 to 10.");
}

} // namespace tarnly::simulator
