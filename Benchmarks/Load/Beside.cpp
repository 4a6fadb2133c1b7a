#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

#include "Client.hpp"
#include "Modes.hpp"
#include "Report.hpp"

namespace tarnly::load {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr std::size_t largeMessage = 24'000'000;
constexpr int pingCount = 100'000;
constexpr int requestId = 100'000;

/// The heavy client's side, on a thread of its own that gives way to the witness's.
class NeighbourThread {
  public:
    explicit NeighbourThread(const NeighbourOptions& options) : options_(options), client_(options.port) {
        if (options.neighbour == Neighbour::large)
            prepared_ = encodeFrame(Opcode::text, simInfoRequest(requestId, largeMessage));
        if (options.neighbour == Neighbour::pings)
            for (int i = 0; i < pingCount; ++i)
                prepared_ += encodeFrame(Opcode::ping, "ping");
        thread_ = std::thread([this] { run(); });
    }

    /// Waits for the end of what it is doing.
    void join() {
        isEnough_ = true;
        thread_.join();
    }

    int rounds() const { return rounds_; }

  private:
    void run() {
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 19);
        try {
            if (options_.neighbour == Neighbour::silent) beSilent();
            if (options_.neighbour == Neighbour::names) subscribeAndRead();
            while (!isEnough_ && !prepared_.empty())
                sendOnce();
        } catch (const std::exception&) {
            // The server hung up on it, as it may.
        }
    }

    void sendOnce() {
        std::thread reader;
        if (options_.neighbour == Neighbour::pings) reader = std::thread([this] { readPongs(); });
        sendAll(client_.socket(), prepared_);
        if (reader.joinable())
            reader.join();
        else
            client_.receiveText();
        ++rounds_;
    }

    void readPongs() {
        std::vector<char> room(65'536);
        int pongs = 0;
        while (pongs < pingCount) {
            const auto count = receive(client_.socket(), room);
            if (count <= 0) return;
            client_.reader().append({room.data(), static_cast<std::size_t>(count)});
            while (const auto frame = client_.reader().next())
                pongs += frame->opcode == Opcode::pong ? 1 : 0;
        }
    }

    void subscribeAndRead() {
        const auto reply = client_.request(subscriptionRequest(requestId, options_.names), requestId);
        if (reply.starts_with(R"({"type":"error")")) return;
        ++rounds_;
        while (!isEnough_) {
            client_.receiveText();
            ++rounds_;
        }
    }

    /// Asks for replies of 24 MB, the error that repeats the kind that nobody knows, and reads none.
    void beSilent() {
        const auto kind = R"({"type":")" + std::string(largeMessage, 'x') + R"(","req_id":1})";
        client_.sendText(kind);
        ++rounds_;
        while (!isEnough_)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }

    const NeighbourOptions& options_;
    Client client_;
    std::string prepared_;
    std::atomic<bool> isEnough_ = false;
    std::atomic<int> rounds_ = 0;
    std::thread thread_;
};

/// The pushes of another connection of the witness, by a thread that only waits for them: in milliseconds,
/// how long after the last one each came.
class PushWatch {
  public:
    PushWatch(std::uint16_t port, const std::string& name) : client_(port) {
        client_.request(subscriptionRequest(requestId, {&name, 1}), requestId);
        thread_ = std::thread([this] {
            client_.receiveText();
            for (auto last = SteadyClock::now(); !isEnough_;) {
                client_.receiveText();
                const auto now = SteadyClock::now();
                pauses_.push_back(Seconds(now - last).count() * 1e3);
                last = now;
            }
        });
    }

    std::vector<double> end() {
        isEnough_ = true;
        thread_.join();
        return pauses_;
    }

  private:
    Client client_;
    std::vector<double> pauses_;
    std::atomic<bool> isEnough_ = false;
    std::thread thread_;
};

} // namespace

void measureBesideNeighbour(const NeighbourOptions& options) {
    constexpr std::chrono::milliseconds pace(5);
    Client witness(options.port);
    PushWatch watch(options.port, options.names.at(0));
    std::optional<NeighbourThread> neighbour;
    if (options.neighbour != Neighbour::none) neighbour.emplace(options);
    std::vector<double> trips;
    const auto begin = SteadyClock::now();
    const double processorBegin = processorSeconds(options.server);
    const auto end = begin + std::chrono::duration_cast<SteadyClock::duration>(Seconds(options.seconds));
    // A request that is late because the last one was counts from when it was due.
    for (auto due = begin; due < end; due += pace) {
        std::this_thread::sleep_until(due);
        witness.request(simInfoRequest(requestId), requestId);
        trips.push_back(Seconds(SteadyClock::now() - due).count() * 1e3);
    }
    const double used = processorSeconds(options.server) - processorBegin;
    if (neighbour) neighbour->join();
    auto pauses = watch.end();
    if (neighbour && neighbour->rounds() == 0) throw std::runtime_error("the neighbour did nothing");
    print({{"requests", static_cast<double>(trips.size())},
           {"p50_ms", quantile(trips, 0.5)},
           {"p99_ms", quantile(trips, 0.99)},
           {"p999_ms", quantile(trips, 0.999)},
           {"max_ms", quantile(trips, 1)},
           {"push_pause_p50_ms", quantile(pauses, 0.5)},
           {"push_pause_max_ms", quantile(pauses, 1)},
           {"server_busy", used / options.seconds},
           {"neighbour_rounds", neighbour ? static_cast<double>(neighbour->rounds()) : 0}});
}

} // namespace tarnly::load
