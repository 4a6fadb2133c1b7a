#include "TarnlyXPlane/Link/XPlaneTransport.hpp"

#include <utility>

#include "TarnlyPlatform/Net/DatagramSocket.hpp"
#include "TarnlyPlatform/Net/HttpClient.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly {
namespace {

class NetworkTransport final : public XPlaneTransport {
  public:
    NetworkTransport(boost::asio::any_io_executor executor, Clock& clock)
        : executor_(std::move(executor)), clock_(clock) {}

    Task<HttpResponse> fetch(Endpoint endpoint, HttpRequest request, std::chrono::milliseconds timeout,
                             OnceConnected onceConnected) override {
        return fetchHttp(clock_, std::move(endpoint), std::move(request), timeout, std::move(onceConnected));
    }

    std::shared_ptr<WebSocketConnection> openWebSocket(Endpoint endpoint, std::string target) override {
        return tarnly::openWebSocket(executor_, clock_, std::move(endpoint), std::move(target));
    }

    Task<> sendDatagram(Endpoint endpoint, std::vector<std::byte> bytes) override {
        return tarnly::sendDatagram(std::move(endpoint), std::move(bytes));
    }

  private:
    boost::asio::any_io_executor executor_;
    Clock& clock_;
};

} // namespace

std::shared_ptr<XPlaneTransport> makeNetworkTransport(boost::asio::any_io_executor executor, Clock& clock) {
    return std::make_shared<NetworkTransport>(std::move(executor), clock);
}

} // namespace tarnly
