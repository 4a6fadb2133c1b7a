#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlySimulator/Api/ApiError.hpp"
#include "TarnlySimulator/CommandLine.hpp"
#include "TarnlySimulator/Simulator.hpp"
#include "TarnlySimulator/StandardInput.hpp"

namespace {

using namespace tarnly::simulator;

/// Carries out a line of standard input, and says so; what is no order costs its line and nothing else.
void obey(Simulator& simulator, const std::string& line) {
    if (line.find_first_not_of(" \t\r") == std::string::npos || line.starts_with('#')) return;
    try {
        simulator.obey(line);
        std::cout << "Done: " << line << std::endl;
    } catch (const ApiError& error) {
        std::cerr << error.what() << std::endl;
    }
}

/// Runs until it is told to end by a signal.
void run(SimulatorOptions options) {
    options.onSituation = [](const std::string& line) { std::cout << line << std::endl; };
    options.onIgnored = [](const std::string& line) { std::cerr << line << std::endl; };
    const bool takesOrders = options.takesOrders;
    tarnly::SystemClock clock;
    boost::asio::io_context io(1);
    boost::asio::signal_set signals(io, SIGINT, SIGTERM);
    Simulator simulator(io.get_executor(), clock, std::move(options));
    signals.async_wait([&](const boost::system::error_code&, int) {
        simulator.stop();
        io.stop();
    });
    std::cout << "Simulating on port " << simulator.port() << ", UDP port " << simulator.udpPort() << "."
              << std::endl;
    std::optional<StandardInput> orders;
    if (takesOrders)
        orders.emplace(io.get_executor(), [&](const std::string& line) { obey(simulator, line); });
    io.run();
}

} // namespace

int main(int argc, char** argv) {
    auto parsed = parseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    if (const auto* end = std::get_if<EarlyEnd>(&parsed)) {
        (end->exitCode == 0 ? std::cout : std::cerr) << end->text;
        return end->exitCode;
    }
    try {
        run(std::get<SimulatorOptions>(std::move(parsed)));
    } catch (const std::exception& error) {
        std::cerr << "Failed to start: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
