#include "TarnlyClient/Commands/LessonFlying.hpp"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <exception>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "TarnlyClient/Commands/LessonEnd.hpp"
#include "TarnlyClient/Companion/CompanionFinder.hpp"
#include "TarnlyClient/Lesson/LessonStart.hpp"
#include "TarnlyClient/Lesson/LessonWatch.hpp"
#include "TarnlyClient/Lesson/Receipt.hpp"
#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyTrack/Trial/ScriptFlights.hpp"

namespace tarnly::client {
namespace {

/// What people are told beside results: there programs read those alone.
void say(const CommandContext& context, const std::string& text) {
    if (!context.options.json) context.stream << text << std::endl;
}

void brief(const CommandContext& context, const Lesson& lesson) {
    say(context, printable(lesson.name));
    std::istringstream lines(lesson.briefing);
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with('\r')) line.pop_back();
        say(context, line.empty() ? "" : "  " + printable(line));
    }
}

LessonWatch::Options watchOptions(const CommandContext& context, const LessonOptions& options,
                                  const Lesson& lesson, const CompanionPlace& companion) {
    LessonWatch::Options result;
    result.lesson = lesson.name;
    result.following.session = context.sessionOptions();
    result.following.time = options.time ? options.time : lesson.endTime;
    result.following.locate = locatorOf(context.options.companion, companion.name);
    const bool isTerminal = &context.stream == &std::cout && isOutputATerminal();
    if (isTerminal && !context.options.json) result.terminal = &context.stream;
    return result;
}

/// Why it ended, and whether the recording is still the lesson's own.
struct Watched {
    std::string end;
    bool isRecordingOwn = true;
    /// It may have moved.
    Endpoint companion;
};

Watched watch(const CommandContext& context, LessonWatch::Options options, const Endpoint& companion,
              LessonFlight& flight) {
    const auto recorded = [&context](const LogLine& line) {
        if (line.fired || context.options.json) context.printer().recorded(line);
    };
    SystemClock clock;
    boost::asio::io_context io(1);
    LessonWatch watch(io.get_executor(), clock, companion, std::move(options), flight,
                      {recorded, [&context](const std::string& text) { context.remark(text); }});
    std::exception_ptr failure;
    boost::asio::co_spawn(io, watch.run(), [&](std::exception_ptr error) { failure = error; });
    io.run();
    if (failure) std::rethrow_exception(failure);
    return {watch.end(), watch.isRecordingOwn(), watch.companion()};
}

void tryToEndRecording(CommandContext& context, const Watched& watched, LessonFlight& flight) {
    try {
        endRecording(context, watched.companion, watched.isRecordingOwn, flight);
        if (!watched.isRecordingOwn)
            context.remark("the recording goes on, as this lesson has not started it");
    } catch (const ClientError& error) {
        context.remark(error.what());
        context.remark(
            "so the recording was not stopped, and what came last is missing here: tarnly-client "
            "record stop ends it, tarnly-client catch-up shows it");
        context.exitCode = 1;
    }
}

/// Flies the script over what was recorded. A navigation database that fails now must not cost the receipt.
void withLessonScript(const CommandContext& context, const LessonOptions& options, const Lesson& lesson,
                      const std::function<void(const track::ScriptFlight&)>& work) {
    const auto ignored = [](const std::string&) {}; // of fixes that the companion knows, and nobody here
    try {
        track::withScript(lesson.script, options.navigationDatabase, ignored, work);
    } catch (const std::exception& error) {
        context.remark(error.what());
        const FixResolver nowhere = [](const std::string&) { return std::nullopt; };
        const auto engine = ScriptTriggerMapper::toEngine(lesson.script, nowhere);
        work([&](const track::FlightLog& log) { return track::tryScript(engine, log, nowhere); });
    }
}

Receipt receiptFor(const CommandContext& context, const LessonOptions& options, const Lesson& lesson,
                   const LessonFlight& flight, const std::vector<std::string>& files) {
    Receipt receipt;
    withLessonScript(context, options, lesson, [&](const track::ScriptFlight& fly) {
        receipt = receiptOf(flight, fly, lesson.tolerances, files);
    });
    return receipt;
}

} // namespace

void flyLesson(CommandContext& context, const LessonOptions& options, const Lesson& lesson) {
    brief(context, lesson);
    LessonStart start;
    if (options.wait) start.patience = *options.wait;
    start.progress = [&context](const std::string& text) { say(context, text); };
    start.remark = [&context](const std::string& text) { context.remark(text); };
    const auto companion = locateCompanion(context.options.companion);
    holdSession(companion.endpoint, context.sessionOptions(),
                [&](CompanionSession& session) { return startLesson(session, lesson, start); });
    say(context, "recording");

    LessonFlight flight(lesson.script, lesson.endTrigger);
    RecordingPaths paths(companion.endpoint, options.dataFolder);
    const auto watched =
        watch(context, watchOptions(context, options, lesson, companion), companion.endpoint, flight);
    const auto files = paths.ofParts(flight.parts().size(), watched.companion);
    tryToEndRecording(context, watched, flight);
    if (options.save) saveFlight(*options.save, flight);
    auto receipt = receiptFor(context, options, lesson, flight, files);
    receipt.lesson = lesson.name;
    receipt.end = watched.end;
    context.printer().line(context.options.json ? receiptJson(receipt) : receiptText(receipt));
}

} // namespace tarnly::client
