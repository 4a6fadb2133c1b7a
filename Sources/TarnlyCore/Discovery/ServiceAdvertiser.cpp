#include "TarnlyCore/Discovery/ServiceAdvertiser.hpp"

#include <utility>

namespace tarnly {

ServiceAdvertiser::ServiceAdvertiser(boost::asio::any_io_executor executor, Clock& clock, Publish publish)
    : executor_(std::move(executor)), clock_(clock), publish_(std::move(publish)) {}

Task<> ServiceAdvertiser::start(Service service, WebSocketListener::ConnectionHandler onNewConnection,
                                WebSocketLimits limits) {
    thread_.check();
    if (listener_) throw ServiceAdvertiserError(ServiceAdvertiserError::Case::alreadyStarted);
    if (!onNewConnection) {
        onNewConnection = [](const std::shared_ptr<WebSocketConnection>& connection) {
            connection->cancel();
        };
    }
    WebSocketListener::Options options;
    options.port = service.port;
    options.limits = limits;
    auto listener = std::make_unique<WebSocketListener>(executor_, clock_, std::move(options),
                                                        std::move(onNewConnection));
    const auto port = listener->port();
    if (publish_) {
        PublishedService published{std::move(service.instanceName), std::string(serviceType), port, {}};
        published.txt.emplace_back("sim", std::move(service.simKind));
        published.txt.emplace_back("ver", std::move(service.appVersion));
        published.txt.emplace_back("pairing", service.pairingRequired ? "required" : "open");
        publication_ = publish_(std::move(published));
    }
    listener_ = std::move(listener);
    advertisedPort_.with([&](auto& advertised) { advertised = port; });
    co_return;
}

void ServiceAdvertiser::stop() {
    thread_.check();
    publication_.reset();
    listener_.reset();
    advertisedPort_.with([](auto& advertised) { advertised.reset(); });
}

std::optional<std::uint16_t> ServiceAdvertiser::advertisedPort() const { return advertisedPort_.copy(); }

std::optional<PublicationState> ServiceAdvertiser::publicationState() const {
    thread_.check();
    if (!publication_) return std::nullopt;
    return publication_->state();
}

std::shared_ptr<Publication> publishBySystemDaemon(PublishedService service) {
    return std::make_shared<ServicePublisher>(std::move(service));
}

} // namespace tarnly
