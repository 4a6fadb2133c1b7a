#include <boost/asio/cancellation_type.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/this_coro.hpp>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyClient/Companion/CompanionFinder.hpp"
#include "TarnlyClient/Companion/CompanionSession.hpp"
#include "TarnlyClient/Companion/RecordingFollower.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"

namespace tarnly::client {
namespace {

struct Watch {
    std::vector<std::string> names;
    bool recording = false;
    std::optional<std::int64_t> count;
    std::optional<std::chrono::milliseconds> time;
};

/// Closes the session when the person or the clock says so.
class WatchEnd {
  public:
    explicit WatchEnd(CompanionSession& session)
        : session_(session), signals_(session.executor(), SIGINT, SIGTERM), timer_(session.executor()) {
        // A handler may be on its way when this object is destroyed: it refers to the session alone.
        signals_.async_wait([&session](const boost::system::error_code& error, int) {
            if (!error) session.close();
        });
    }

    WatchEnd(const WatchEnd&) = delete;
    WatchEnd& operator=(const WatchEnd&) = delete;

    void closeAfter(std::chrono::milliseconds time) {
        auto closeNow = [&session = session_](const std::exception_ptr&) { session.close(); };
        timer_.spawn(closeLater(session_, time), std::move(closeNow));
    }

  private:
    static Task<> closeLater(CompanionSession& session, Clock::Duration time) {
        co_await session.clock().sleepFor(time);
        const auto cancellation = co_await boost::asio::this_coro::cancellation_state;
        if (cancellation.cancelled() == boost::asio::cancellation_type::none) session.close();
    }

    CompanionSession& session_;
    boost::asio::signal_set signals_;
    TaskGroup timer_;
};

Task<> watchValues(CompanionSession& session, Watch watch, Printer printer) {
    WatchEnd end(session);
    co_await session.pair();
    auto params = namesParams(watch.names);
    co_await session.request(MessageType::datarefSubscribeValues, std::move(params));
    if (watch.time) end.closeAfter(*watch.time);
    for (std::int64_t shown = 0; watch.count != shown; ++shown) {
        auto push = co_await session.nextPush();
        if (!push) co_return;
        printer.push(watch.names, *push);
    }
}

RecordingFollower::Listener listener(const CommandContext& context) {
    const auto recorded = [&context](const LogLine& line) {
        if (line.fired || context.options.json) context.printer().recorded(line);
    };
    return {recorded, [&context](const std::string& text) { context.remark(text); }};
}

/// Prints the triggers that fire in the companion's recording, and with --json the samples too, until `count`
/// triggers were shown, `time` has passed or a signal comes.
void watchRecording(const CommandContext& context, std::optional<std::int64_t> count,
                    std::optional<std::chrono::milliseconds> time) {
    RecordingFollower::Options options;
    options.session = context.sessionOptions();
    options.count = count;
    options.time = time;
    const auto companion = locateCompanion(context.options.companion);
    options.locate = locatorOf(context.options.companion, companion.name);

    SystemClock clock;
    boost::asio::io_context io(1);
    RecordingFollower follower(io.get_executor(), clock, companion.endpoint, std::move(options),
                               listener(context));
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

void runWatch(const CommandContext& context, const Watch& watch) {
    if (watch.recording) return watchRecording(context, watch.count, watch.time);
    if (watch.names.empty()) throw UsageError("watch what? NAME... or --recording is required");
    context.inSession(
        [&](CompanionSession& session) { return watchValues(session, watch, context.printer()); });
}

} // namespace

void addWatchCommand(CLI::App& app, CommandContext& context) {
    auto* command =
        app.add_subcommand("watch", "Print the values of datarefs, or what is recorded, until interrupted");
    const auto watch = std::make_shared<Watch>();
    auto* names = command->add_option("NAME", watch->names, "Datarefs")->check(simulatorName());
    command->add_flag("--recording", watch->recording, "Follow the recording: print the triggers that fire")
        ->excludes(names);
    command->add_option("--count", watch->count, "End after so many pushes, or triggers")
        ->type_name("N")
        ->check(CLI::Range(1, 1'000'000'000));
    addSeconds(*command, "--seconds", "End after this time", [watch](auto time) { watch->time = time; });
    command->callback([&context, watch] { runWatch(context, *watch); });
}

} // namespace tarnly::client
