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

Task<> SharedAttempt::wait(std::shared_ptr<SharedAttempt> attempt) {
    attempt->thread_.check();
    while (!attempt->finished_) {
        co_await attempt->finishedEvent_.wait();
    }
    if (attempt->failure_) std::rethrow_exception(attempt->failure_);
}

} // namespace tarnly
