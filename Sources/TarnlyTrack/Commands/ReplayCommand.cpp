#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"
#include "TarnlySimulator/Simulator.hpp"
#include "TarnlyTrack/Commands/CommandLine.hpp"
#include "TarnlyTrack/Output/Listing.hpp"
#include "TarnlyTrack/Output/Words.hpp"
#include "TarnlyTrack/Replay/ReplayFlight.hpp"

/// replay: a recording as a simulator, until a signal ends it.
namespace tarnly::track {
namespace {

constexpr double slowest = 1;
constexpr double fastest = 60;

struct ReplayArguments {
    std::filesystem::path file;
    simulator::SimulatorOptions simulator;
    ReplayOptions replay;

    std::string name() const { return printable(file.filename().string()); }
};

void check(const ReplayArguments& arguments) {
    // NaN is in no range.
    const bool isSpeed = arguments.simulator.speed >= slowest && arguments.simulator.speed <= fastest;
    if (!isSpeed) throw UsageError("--speed takes a number from 1 to 60");
    if (!(arguments.replay.from >= 0)) throw UsageError("--from takes seconds of the recording, from 0 on");
}

RecordedFlight recordedFlight(const CommandContext& context, const ReplayArguments& arguments) {
    auto log = context.read(arguments.file);
    const auto name = arguments.name();
    if (const auto faults = faultsText(log.faults); !faults.empty()) context.remark(name + " has " + faults);
    if (log.size() == 0) throw TrackError(name + " has no samples: there is nothing to replay");
    RecordedFlight flight(std::move(log));
    if (flight.leftOut() > 0) {
        context.remark(name + " has two recordings: the second one, of " + std::to_string(flight.leftOut()) +
                       " samples, is not replayed");
    }
    if (arguments.replay.from > flight.end()) {
        throw UsageError("--from is behind the end of " + name + ", at " + fixedText(flight.end(), 1) +
                         " seconds");
    }
    return flight;
}

std::unique_ptr<simulator::Simulator> listening(boost::asio::io_context& io, Clock& clock,
                                                simulator::SimulatorOptions options,
                                                std::unique_ptr<ReplayFlight> flight) {
    try {
        return std::make_unique<simulator::Simulator>(io.get_executor(), clock, std::move(options),
                                                      std::move(flight));
    } catch (const NetworkError& error) {
        throw TrackError("the replay cannot listen on " + error.payload() +
                         "; end the simulator that has it, or choose others by --port and --udp-port");
    }
}

/// Until a signal ends it.
void serve(const CommandContext& context, ReplayArguments arguments, RecordedFlight flight) {
    const auto tell = [&context](const std::string& line) { context.out << line << std::endl; };
    const auto name = arguments.name();
    const bool isPaused = arguments.replay.isPaused;
    arguments.simulator.onIgnored = [&context](const std::string& line) { context.remark(line); };
    arguments.replay.onEnd = [&tell] { tell("The recording has ended: its last values stay."); };
    SystemClock clock;
    boost::asio::io_context io(1);
    boost::asio::signal_set signals(io, SIGINT, SIGTERM);
    auto replayed = std::make_unique<ReplayFlight>(std::move(flight), std::move(arguments.replay));
    const auto simulator = listening(io, clock, std::move(arguments.simulator), std::move(replayed));
    signals.async_wait([&](const boost::system::error_code&, int) {
        simulator->stop();
        io.stop();
    });
    tell("Replaying " + name + " on port " + std::to_string(simulator->port()) + ", UDP port " +
         std::to_string(simulator->udpPort()) + ".");
    tell("A recording cannot be flown: what clients write is refused.");
    if (isPaused) tell("It is paused until a client runs sim/operation/pause_off.");
    io.run();
}

void replay(const CommandContext& context, const ReplayArguments& arguments) {
    check(arguments);
    serve(context, arguments, recordedFlight(context, arguments));
}

} // namespace

void addReplayCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("replay", "Fly a recording again, as a simulator for the companion");
    const auto arguments = std::make_shared<ReplayArguments>();
    auto& simulator = arguments->simulator;
    command->add_option("FILE", arguments->file, "The recording")->required();
    command->add_option("--speed", simulator.speed, "How many times as fast, from 1 to 60 (default: 1)")
        ->type_name("FACTOR");
    command->add_option("--from", arguments->replay.from, "Where to begin, seconds of the recording")
        ->type_name("SECONDS");
    command->add_flag("--repeat", arguments->replay.isRepeated, "Begin anew at the end");
    command->add_flag("--paused", arguments->replay.isPaused,
                      "Stand at the beginning until a client runs sim/operation/pause_off");
    command
        ->add_option("--port", simulator.port, "Port of the web interface (default: 8086; 0: any free one)")
        ->check(CLI::Range(0, 65535))
        ->option_text("PORT");
    command
        ->add_option("--udp-port", simulator.udpPort,
                     "UDP port for loading situations (default: 49000; 0: any free one)")
        ->check(CLI::Range(0, 65535))
        ->option_text("PORT");
    command->callback([&context, arguments] { replay(context, *arguments); });
}

} // namespace tarnly::track
