#include <CLI/CLI.hpp>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>

#include "Modes.hpp"
#include "Socket.hpp"

/// tarnly-load: load on a companion of this machine, as `scripts/benchmark` puts it on.
namespace tarnly::load {
namespace {

std::vector<std::string> linesOf(const std::string& file, std::size_t most) {
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; lines.size() < most && std::getline(in, line);)
        lines.push_back(line);
    if (lines.size() < most) throw std::runtime_error("too few names in " + file);
    return lines;
}

const std::map<std::string, Neighbour> neighbours{{"none", Neighbour::none},
                                                  {"large", Neighbour::large},
                                                  {"names", Neighbour::names},
                                                  {"pings", Neighbour::pings},
                                                  {"silent", Neighbour::silent}};

int run(int argc, char** argv) {
    CLI::App app("Puts load on a companion of this machine, and tells how it bears it as one line of JSON.",
                 "tarnly-load");
    app.require_subcommand(1);
    int processor = -1;
    RoundTripOptions trips;
    PushOptions pushes;
    NeighbourOptions beside;
    std::string names;
    std::size_t nameCount = 1;
    app.add_option("--cpu", processor, "The processor to stay on");

    auto* echo = app.add_subcommand("echo", "Serve the raw echo");
    auto* roundTrips = app.add_subcommand("round-trips", "Request and reply, over and over");
    for (auto* mode : {echo, roundTrips}) {
        mode->add_option("--request-bytes", trips.sizes.request, "A request of the raw echo");
        mode->add_option("--reply-bytes", trips.sizes.reply, "A reply of the raw echo");
    }
    roundTrips->add_option("--port", trips.port)->required();
    roundTrips->add_option("--server", trips.server, "The server's process");
    roundTrips->add_option("--connections", trips.connections);
    roundTrips->add_option("--seconds", trips.seconds);
    roundTrips->add_option("--warm-up", trips.warmUp, "Seconds");
    roundTrips->add_option("--message-bytes", trips.messageSize, "A request's text");
    roundTrips->add_flag("--raw", trips.isRaw, "The server is the raw echo");

    auto* listen = app.add_subcommand("pushes", "Subscribe and listen");
    listen->add_option("--port", pushes.port)->required();
    listen->add_option("--server", pushes.server);
    listen->add_option("--clients", pushes.clients);
    listen->add_option("--seconds", pushes.seconds);
    listen->add_flag("--record", pushes.isRecording, "Start a recording");

    auto* neighbour = app.add_subcommand("beside", "Round trips beside a heavy client");
    neighbour->add_option("--port", beside.port)->required();
    neighbour->add_option("--server", beside.server);
    neighbour->add_option("--seconds", beside.seconds);
    neighbour->add_option("--neighbour", beside.neighbour)->transform(CLI::CheckedTransformer(neighbours));
    for (auto* mode : {listen, neighbour}) {
        mode->add_option("--names", names, "A file of datarefs, one a line")->required();
        mode->add_option("--name-count", nameCount, "How many of them");
    }
    CLI11_PARSE(app, argc, argv);

    raiseDescriptorLimit();
    pinTo(processor);
    if (!names.empty()) pushes.names = beside.names = linesOf(names, nameCount);
    if (*echo) serveEcho(trips.sizes);
    if (*roundTrips) measureRoundTrips(trips);
    if (*listen) measurePushes(pushes);
    if (*neighbour) measureBesideNeighbour(beside);
    return 0;
}

} // namespace
} // namespace tarnly::load

int main(int argc, char** argv) {
    try {
        return tarnly::load::run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "tarnly-load: " << error.what() << '\n';
        return 1;
    }
}
