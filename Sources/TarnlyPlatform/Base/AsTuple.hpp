#pragma once

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/use_awaitable.hpp>

namespace tarnly {

/// Has `co_await` give an operation's error beside its results, and throw nothing.
inline constexpr auto asTuple = boost::asio::as_tuple(boost::asio::use_awaitable);

} // namespace tarnly
