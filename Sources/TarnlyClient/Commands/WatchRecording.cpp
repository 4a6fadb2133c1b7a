#include "TarnlyClient/Commands/WatchRecording.hpp"

#include <algorithm>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <exception>

#include "TarnlyClient/Companion/CompanionFinder.hpp"
#include "TarnlyClient/Companion/Conversation.hpp"
#include "TarnlyClient/Companion/RecordingFollower.hpp"

namespace tarnly::client {
namespace {

/// Looks for the companion called `name`, and not for long: there will be another time.
std::function<Endpoint()> locator(ClientOptions options, const std::optional<std::string>& name) {
    if (!name) return {};
    options.instance = name;
    options.timeout = std::min(options.timeout, std::chrono::milliseconds(2'000));
    return [options = std::move(options)] { return locateCompanion(options).endpoint; };
}

RecordingFollower::Listener listener(const CommandContext& context) {
    const auto recorded = [&context](const LogLine& line) {
        if (line.fired || context.options.json) context.printer().recorded(line);
    };
    return {recorded, [&context](const std::string& text) { context.remark(text); }};
}

} // namespace

void watchRecording(const CommandContext& context, std::optional<std::int64_t> count,
                    std::optional<std::chrono::milliseconds> time) {
    RecordingFollower::Options options;
    options.session = sessionOptions(context.options);
    options.count = count;
    options.time = time;
    const auto companion = locateCompanion(context.options);
    options.locate = locator(context.options, companion.name);

    boost::asio::io_context io(1);
    RecordingFollower follower(io.get_executor(), companion.endpoint, std::move(options), listener(context));
    boost::asio::signal_set signals(io, SIGINT, SIGTERM);
    signals.async_wait([&follower](const boost::system::error_code& error, int) {
        if (!error) follower.end();
    });
    std::exception_ptr failure;
    boost::asio::co_spawn(io, follower.run(), [&](std::exception_ptr error) {
        failure = error;
        follower.end();
        signals.cancel();
    });
    io.run();
    if (failure) std::rethrow_exception(failure);
}

} // namespace tarnly::client
