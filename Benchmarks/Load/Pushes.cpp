#include <algorithm>
#include <memory>
#include <stdexcept>

#include "Client.hpp"
#include "Modes.hpp"
#include "Poller.hpp"
#include "Report.hpp"

namespace tarnly::load {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr int requestId = 100'000;

/// A silence of all clients that is longer than this divides two ticks, which come twice a second.
constexpr std::chrono::milliseconds silence(150);

struct Tick {
    SteadyClock::time_point first, last;
    std::size_t pushes = 0;
    double bytes = 0;
};

std::vector<std::unique_ptr<Client>> subscribeAll(const PushOptions& options, std::vector<double>& replies) {
    std::vector<std::unique_ptr<Client>> clients;
    for (std::size_t i = 0; i < options.clients; ++i) {
        clients.push_back(std::make_unique<Client>(options.port));
        const auto begin = SteadyClock::now();
        const auto reply = clients.back()->request(subscriptionRequest(requestId, options.names), requestId);
        if (reply.starts_with(R"({"type":"error")")) throw std::runtime_error(reply.substr(0, 300));
        replies.push_back(Seconds(SteadyClock::now() - begin).count());
    }
    return clients;
}

/// Reads all that comes to all clients, and notes when.
class Listener {
  public:
    explicit Listener(const std::vector<std::unique_ptr<Client>>& clients) {
        for (const auto& client : clients) {
            stopBlocking(client->socket());
            poller_.watch(client->socket(), client.get());
        }
    }

    std::vector<Tick> listen(SteadyClock::time_point end) {
        std::vector<Tick> ticks;
        while (SteadyClock::now() < end)
            for (const auto& event : poller_.wait(std::chrono::milliseconds(10)))
                if ((event.events & EPOLLIN) != 0) hear(*static_cast<Client*>(event.data.ptr), ticks);
        return ticks;
    }

  private:
    void hear(Client& client, std::vector<Tick>& ticks) {
        for (;;) {
            const auto count = receive(client.socket(), room_);
            if (count == 0) throw std::runtime_error("the server hung up");
            if (count < 0) break;
            client.reader().append({room_.data(), static_cast<std::size_t>(count)});
        }
        const auto now = SteadyClock::now();
        while (const auto frame = client.reader().next()) {
            if (ticks.empty() || now - ticks.back().last > silence) ticks.push_back({now, now, 0, 0});
            ticks.back().last = now;
            ticks.back().pushes += frame->isFinal ? 1 : 0;
            ticks.back().bytes += static_cast<double>(frame->payload.size());
        }
    }

    Poller poller_;
    std::vector<char> room_ = std::vector<char>(262'144);
};

} // namespace

void measurePushes(const PushOptions& options) {
    std::vector<double> replies, spreads, pauses;
    const double emptyMemory = residentKibibytes(options.server);
    const auto clients = subscribeAll(options, replies);
    if (options.isRecording) clients.front()->request(R"({"type":"recording_start","req_id":2})", 2);
    Listener listener(clients);
    listener.listen(SteadyClock::now() + std::chrono::seconds(1));
    const auto begin = SteadyClock::now();
    const double processorBegin = processorSeconds(options.server);
    auto ticks =
        listener.listen(begin + std::chrono::duration_cast<SteadyClock::duration>(Seconds(options.seconds)));
    const double used = processorSeconds(options.server) - processorBegin;
    const double elapsed = Seconds(SteadyClock::now() - begin).count();
    if (ticks.size() < 3) throw std::runtime_error("there were no ticks");
    const double tickCount = static_cast<double>(ticks.size());
    for (std::size_t i = 1; i < ticks.size(); ++i)
        pauses.push_back(Seconds(ticks[i].first - ticks[i - 1].first).count() * 1e3);
    ticks.erase(ticks.begin()); // the first and the last may have been cut by the window
    ticks.pop_back();
    double pushes = 0, bytes = 0;
    for (const auto& tick : ticks) {
        spreads.push_back(Seconds(tick.last - tick.first).count() * 1e3);
        pushes += static_cast<double>(tick.pushes);
        bytes += tick.bytes;
    }
    print({{"clients", static_cast<double>(options.clients)},
           {"names", static_cast<double>(options.names.size())},
           {"ticks", tickCount},
           {"pushes_per_tick", pushes / static_cast<double>(ticks.size())},
           {"bytes_per_push", pushes > 0 ? bytes / pushes : 0},
           {"cpu_ms_per_tick", used * 1e3 / tickCount},
           {"server_busy", used / elapsed},
           {"spread_p50_ms", quantile(spreads, 0.5)},
           {"spread_max_ms", quantile(spreads, 1)},
           {"pause_max_ms", quantile(pauses, 1)},
           {"first_reply_ms", replies.front() * 1e3},
           {"reply_p50_ms", quantile(replies, 0.5) * 1e3},
           {"rss_empty_kib", emptyMemory},
           {"rss_end_kib", residentKibibytes(options.server)}});
}

} // namespace tarnly::load
