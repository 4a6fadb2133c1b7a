#include "TarnlyXPlane/Link/SharedAttempt.hpp"

#include <utility>

namespace tarnly {

SharedAttempt::SharedAttempt(const boost::asio::any_io_executor& executor) : finishedEvent_(executor) {}

void SharedAttempt::finish(std::exception_ptr failure) {
    thread_.check();
    finished_ = true;
    failure_ = std::move(failure);
    finishedEvent_.notifyAll();
}

Task<> SharedAttempt::wait() {
    thread_.check();
    while (!finished_) {
        co_await finishedEvent_.wait();
    }
    if (failure_) std::rethrow_exception(failure_);
}

} // namespace tarnly
