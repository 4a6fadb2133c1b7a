#include "TarnlySimulator/Api/SituationPort.hpp"

#include <algorithm>
#include <array>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <cstdint>
#include <string_view>
#include <utility>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly::simulator {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t datagramSize = 161;
constexpr auto label = "SIMO\0"sv;
constexpr std::size_t pathOffset = 9;
constexpr std::size_t pathSize = 150;
constexpr std::uint32_t loadSituation = 1;

std::uint32_t littleEndian(std::string_view bytes) {
    std::uint32_t value = 0;
    for (std::size_t at = 4; at-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[at]);
    return value;
}

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

namespace asio = boost::asio;
using asio::ip::udp;

/// Longer datagrams are cut to it, which leaves them too long to be a request.
constexpr std::size_t largestDatagram = 1024;

} // namespace

std::variant<Situation, UnusableDatagram> situationFrom(std::span<const std::byte> datagram) {
    const std::string_view bytes(reinterpret_cast<const char*>(datagram.data()), datagram.size());
    if (bytes.size() != datagramSize)
        return UnusableDatagram{"it has " + std::to_string(bytes.size()) + " bytes instead of 161"};
    if (!bytes.starts_with(label)) return UnusableDatagram{"it does not begin with SIMO and a zero byte"};
    const auto mode = littleEndian(bytes.substr(label.size()));
    if (mode != loadSituation)
        return UnusableDatagram{"its mode is " + std::to_string(mode) + " instead of 1"};
    const auto field = bytes.substr(pathOffset, pathSize);
    const auto path = field.substr(0, field.find('\0'));
    const auto rest = bytes.substr(pathOffset + path.size());
    if (path.empty()) return UnusableDatagram{"its path is empty"};
    if (std::ranges::any_of(path, isControl)) return UnusableDatagram{"its path contains control characters"};
    if (rest.find_first_not_of('\0') != std::string_view::npos)
        return UnusableDatagram{"its path is not followed by zero bytes alone"};
    return Situation{std::string(path)};
}

struct SituationPort::State {
    State(const asio::any_io_executor& executor, Handler situationHandler, Handler ignoredHandler)
        : socket(executor),
          onSituation(std::move(situationHandler)),
          onIgnored(std::move(ignoredHandler)),
          tasks(executor) {}

    OnOneThread thread;
    udp::socket socket;
    Handler onSituation;
    Handler onIgnored;
    bool isCancelled = false;
    TaskGroup tasks;

    void handle(std::span<const std::byte> datagram) const {
        thread.check();
        const auto read = situationFrom(datagram);
        if (const auto* situation = std::get_if<Situation>(&read)) {
            onSituation(wellFormedUtf8(situation->path)); // a path that was cut may end within a character
        } else {
            onIgnored(std::get<UnusableDatagram>(read).reason);
        }
    }

    static Task<> receiveAll(std::shared_ptr<State> state) {
        std::array<std::byte, largestDatagram> buffer{};
        while (!state->isCancelled) {
            const auto space = asio::buffer(buffer);
            auto [error, size] = co_await state->socket.async_receive(space, asTuple);
            if (state->isCancelled) co_return;
            try {
                if (!error) state->handle(std::span(buffer).first(size));
            } catch (const std::exception&) {
                // Out of memory, say: it costs this datagram, and the next may be handled.
            }
        }
    }
};

SituationPort::SituationPort(asio::any_io_executor executor, std::uint16_t port, Handler onSituation,
                             Handler onIgnored)
    : state_(std::make_shared<State>(executor, std::move(onSituation), std::move(onIgnored))) {
    try {
        state_->socket.open(udp::v4());
        state_->socket.bind(udp::endpoint(asio::ip::address_v4::loopback(), port));
    } catch (const boost::system::system_error& error) {
        throw NetworkError(NetworkError::Case::listenFailed,
                           "UDP port " + std::to_string(port) + ": " + error.code().message());
    }
    state_->tasks.spawn(State::receiveAll(state_), dropFailure); // none leaves it
}

SituationPort::~SituationPort() { cancel(); }

std::uint16_t SituationPort::port() const { return state_->socket.local_endpoint().port(); }

void SituationPort::cancel() {
    state_->isCancelled = true;
    boost::system::error_code ignored;
    state_->socket.close(ignored);
    state_->tasks.cancel();
}

} // namespace tarnly::simulator
