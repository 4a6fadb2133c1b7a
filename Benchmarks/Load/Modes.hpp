#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

/// What the load generator can do. Each mode prints its figures as one line of JSON and ends; what goes
/// against the protocol meanwhile (a hang-up, a reply that is another request's) throws.
namespace tarnly::load {

/// Requests and replies of the raw echo, in bytes. They are those of `sim_info` with their frames' headers.
struct EchoSizes {
    std::size_t request = 41;
    std::size_t reply = 81;
};

/// Answers every `sizes.request` bytes with `sizes.reply` bytes that mean nothing: what this machine's
/// sockets can do at best. Prints its port, and serves until it is ended by a signal.
void serveEcho(const EchoSizes& sizes);

struct RoundTripOptions {
    std::uint16_t port = 0;
    std::size_t connections = 1;
    double seconds = 5;
    double warmUp = 0.5;         ///< seconds
    std::size_t messageSize = 0; ///< bytes of each request's text; 0 for as it comes
    bool isRaw = false;          ///< the server is the raw echo
    EchoSizes sizes;
    pid_t server = 0; ///< whose processor time and memory are looked at
};

/// On every connection one request after another, the next when the last is answered.
void measureRoundTrips(const RoundTripOptions& options);

struct PushOptions {
    std::uint16_t port = 0;
    std::size_t clients = 1;
    std::vector<std::string> names; ///< each client subscribes to all
    double seconds = 10;
    bool isRecording = false;
    pid_t server = 0;
};

/// How the pushes of one tick come to the clients, and what a tick costs the server.
void measurePushes(const PushOptions& options);

enum class Neighbour { none, large, names, pings, silent };

struct NeighbourOptions {
    std::uint16_t port = 0;
    Neighbour neighbour = Neighbour::none;
    std::vector<std::string> names; ///< the first is the witness's, all are the neighbour's
    double seconds = 10;
    pid_t server = 0;
};

/// What a client notices of another one that is heavy or hostile: its round trips, 200 a second, and its
/// pushes.
void measureBesideNeighbour(const NeighbourOptions& options);

} // namespace tarnly::load
