#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <cstdint>
#include <string_view>

namespace tarnly::simulator {

/// The parts of a request. Each throws `ApiError` "invalid_body" when the part is missing or of another kind.
const boost::json::object& objectFrom(const boost::json::value& json);
const boost::json::value& member(const boost::json::object& object, std::string_view key);
const boost::json::array& arrayMember(const boost::json::object& object, std::string_view key);
std::string_view stringMember(const boost::json::object& object, std::string_view key);
std::int64_t integerMember(const boost::json::object& object, std::string_view key);
bool boolMember(const boost::json::object& object, std::string_view key);

/// Throws `ApiError` unless `json` is how long a command may be held: a number of seconds from 0 to 10.
void checkDuration(const boost::json::value& json);

} // namespace tarnly::simulator
