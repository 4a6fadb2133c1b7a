#include "TarnlyXPlane/Link/SharedAttempt.hpp"

#include <utility>

namespace tarnly {

SharedAttempt::SharedAttempt(boost::asio::any_io_executor executor) : finishedEvent_(std::move(executor)) {}

void SharedAttempt::finish(std::exception_ptr failure) {
    finished_ = true;
    failure_ = std::move(failure);
    finishedEvent_.notifyAll();
}

Task<> SharedAttempt::wait() {
    while (!finished_) {
        co_await finishedEvent_.wait();
    }
    if (failure_) std::rethrow_exception(failure_);
}

} // namespace tarnly
