#pragma once

#include <boost/json/value.hpp>

namespace tarnly::simulator {

/// Throws `ApiError` unless `json` is how long a command may be held: a number of seconds from 0 to 10.
void checkDuration(const boost::json::value& json);

} // namespace tarnly::simulator
