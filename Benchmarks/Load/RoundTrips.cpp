#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <stdexcept>

#include "Client.hpp"
#include "Modes.hpp"
#include "Poller.hpp"
#include "Report.hpp"

namespace tarnly::load {
namespace {

using Seconds = std::chrono::duration<double>;

/// One connection and the request that it repeats.
class Peer {
  public:
    Peer(const RoundTripOptions& options, int requestId) {
        if (options.isRaw) {
            rawReply_ = options.sizes.reply;
            socket_ = connectTo(options.port);
            request_ = std::string(options.sizes.request, 'x');
        } else {
            client_ = std::make_unique<Client>(options.port);
            request_ = encodeFrame(Opcode::text, simInfoRequest(requestId, options.messageSize));
            replyBegin_ = simInfoReplyBegin(requestId);
        }
        stopBlocking(socket());
    }

    const Descriptor& socket() const { return client_ ? client_->socket() : socket_; }
    SteadyClock::time_point sentAt() const { return sentAt_; }

    void ask() {
        sentAt_ = SteadyClock::now();
        unsent_ = request_;
        flush();
    }

    void flush() {
        while (!unsent_.empty()) {
            const auto count = send(socket().number(), unsent_.data(), unsent_.size(), MSG_NOSIGNAL);
            if (count < 0 && errno == EAGAIN) return;
            if (count < 0) throw std::system_error(errno, std::generic_category(), "send");
            unsent_.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    /// Reads what has come; whether the reply is there.
    bool hear(std::span<char> room) {
        bool isAnswered = false;
        for (;;) {
            const auto count = receive(socket(), room);
            if (count == 0) throw std::runtime_error("the server hung up");
            if (count < 0) return isAnswered;
            const auto bytes = room.first(static_cast<std::size_t>(count));
            isAnswered = (client_ ? readFrames(bytes) : countBytes(bytes.size())) || isAnswered;
            if (bytes.size() < room.size()) return isAnswered; // there is no more
        }
    }

  private:
    bool countBytes(std::size_t bytes) {
        received_ += bytes;
        if (received_ < rawReply_) return false;
        received_ -= rawReply_;
        return true;
    }

    bool readFrames(std::span<const char> bytes) {
        client_->reader().append(bytes);
        bool isAnswered = false;
        while (const auto frame = client_->reader().next()) {
            if (frame->opcode != Opcode::text || !frame->isFinal || !frame->payload.starts_with(replyBegin_))
                throw std::runtime_error("not the reply: " + std::string(frame->payload.substr(0, 200)));
            isAnswered = true;
        }
        return isAnswered;
    }

    std::unique_ptr<Client> client_; ///< none for the raw echo
    Descriptor socket_;              ///< of the raw echo
    std::string request_, replyBegin_;
    std::string_view unsent_;
    std::size_t rawReply_ = 0, received_ = 0;
    SteadyClock::time_point sentAt_;
};

std::vector<std::unique_ptr<Peer>> connectAll(const RoundTripOptions& options, Poller& poller) {
    constexpr int firstId = 100'000; // as many digits for each, so that all replies have one length
    std::vector<std::unique_ptr<Peer>> peers;
    for (std::size_t i = 0; i < options.connections; ++i) {
        peers.push_back(std::make_unique<Peer>(options, firstId + static_cast<int>(i)));
        poller.watch(peers.back()->socket(), peers.back().get());
    }
    return peers;
}

/// Lets all peers ask until `end`; gives the round trips in microseconds.
class Window {
  public:
    explicit Window(Poller& poller) : poller_(poller) {}

    std::vector<double> run(SteadyClock::time_point end) {
        std::vector<double> microseconds;
        for (auto now = SteadyClock::now(); now < end;) {
            const auto ready = poller_.wait(std::chrono::milliseconds(100));
            for (const auto& event : ready) {
                auto& peer = *static_cast<Peer*>(event.data.ptr);
                if ((event.events & EPOLLIN) != 0 && peer.hear(room_)) {
                    now = SteadyClock::now();
                    microseconds.push_back(
                        std::chrono::duration<double, std::micro>(now - peer.sentAt()).count());
                    peer.ask();
                } else {
                    peer.flush();
                }
            }
            if (ready.empty()) now = SteadyClock::now();
        }
        return microseconds;
    }

  private:
    Poller& poller_;
    std::vector<char> room_ = std::vector<char>(65'536);
};

} // namespace

void measureRoundTrips(const RoundTripOptions& options) {
    Poller poller;
    const double emptyMemory = residentKibibytes(options.server);
    const auto peers = connectAll(options, poller);
    const double pairedMemory = residentKibibytes(options.server);
    for (const auto& peer : peers)
        peer->ask();
    Window window(poller);
    window.run(SteadyClock::now() +
               std::chrono::duration_cast<SteadyClock::duration>(Seconds(options.warmUp)));
    const auto begin = SteadyClock::now();
    const double processorBegin = processorSeconds(options.server), ownBegin = processorSeconds(getpid());
    auto trips =
        window.run(begin + std::chrono::duration_cast<SteadyClock::duration>(Seconds(options.seconds)));
    const double elapsed = Seconds(SteadyClock::now() - begin).count();
    const double used = processorSeconds(options.server) - processorBegin;
    const double own = processorSeconds(getpid()) - ownBegin;
    if (trips.empty()) throw std::runtime_error("nothing was answered");
    const auto count = static_cast<double>(trips.size());
    print({{"connections", static_cast<double>(options.connections)},
           {"replies", count},
           {"rate", count / elapsed},
           {"p50_us", quantile(trips, 0.5)},
           {"p99_us", quantile(trips, 0.99)},
           {"p999_us", quantile(trips, 0.999)},
           {"max_us", quantile(trips, 1)},
           {"server_cpu_s_per_100k", used * 1e5 / count},
           {"server_busy", used / elapsed},
           {"load_busy", own / elapsed},
           {"rss_empty_kib", emptyMemory},
           {"rss_paired_kib", pairedMemory},
           {"rss_end_kib", residentKibibytes(options.server)}});
}

} // namespace tarnly::load
