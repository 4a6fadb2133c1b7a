#include "TarnlySimulator/Api/SituationPort.hpp"

#include <array>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <utility>

#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"
#include "TarnlySimulator/Api/Situation.hpp"

namespace tarnly::simulator {
namespace {

namespace asio = boost::asio;
using asio::ip::udp;

/// Longer datagrams are cut to it, which leaves them too long to be a request.
constexpr std::size_t largestDatagram = 1024;

} // namespace

struct SituationPort::State {
    State(const asio::any_io_executor& executor, Handler situationHandler, Handler ignoredHandler)
        : socket(executor), onSituation(std::move(situationHandler)), onIgnored(std::move(ignoredHandler)) {}

    udp::socket socket;
    Handler onSituation;
    Handler onIgnored;
    bool isCancelled = false;

    void handle(std::span<const std::byte> datagram) const {
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
            auto [error, size] =
                co_await state->socket.async_receive(space, asio::as_tuple(asio::use_awaitable));
            if (state->isCancelled) co_return;
            if (!error) state->handle(std::span(buffer).first(size));
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
    asio::co_spawn(executor, State::receiveAll(state_), asio::detached);
}

SituationPort::~SituationPort() { cancel(); }

std::uint16_t SituationPort::port() const { return state_->socket.local_endpoint().port(); }

void SituationPort::cancel() {
    state_->isCancelled = true;
    boost::system::error_code ignored;
    state_->socket.close(ignored);
}

} // namespace tarnly::simulator
