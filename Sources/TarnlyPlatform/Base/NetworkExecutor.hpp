#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/io_context.hpp>

namespace tarnly {

/// The executor of the network thread, by its own type: what is called a hundred thousand times a second goes
/// through no erased one.
using NetworkExecutor = boost::asio::io_context::executor_type;

/// `executor` is one of an `io_context`, as all are that sockets are used on.
inline NetworkExecutor networkExecutor(const boost::asio::any_io_executor& executor) {
    auto& context = boost::asio::query(executor, boost::asio::execution::context);
    return static_cast<boost::asio::io_context&>(context).get_executor();
}

} // namespace tarnly
