#pragma once

#include <boost/asio/awaitable.hpp>

namespace tarnly {

/// An asynchronous operation that may fail: a coroutine, which reports failure by throwing.
///
/// House rule (g++ 12 miscompiles several other forms): one `co_await` a statement, on a call whose arguments
/// have names; never in a condition, a conditional operand, braces or a catch block; no capturing coroutine
/// lambda.
template <typename T = void>
using Task = boost::asio::awaitable<T>;

} // namespace tarnly
