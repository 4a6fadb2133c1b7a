#include "TarnlyCore/Discovery/ServiceAdvertiser.hpp"

#include <boost/asio/post.hpp>
#include <utility>

#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {
namespace {

using MakeListener = std::function<std::unique_ptr<WebSocketListener>(std::uint16_t port)>;

/// On the first of `ports` that can be listened on. Throws what the last one does.
std::unique_ptr<WebSocketListener> listenOnFirst(const std::vector<std::uint16_t>& ports,
                                                 const MakeListener& make) {
    for (auto port = ports.begin(); port != ports.end() && port + 1 != ports.end(); ++port) {
        try {
            return make(*port);
        } catch (const NetworkError&) {
            continue; // taken, in all likelihood
        }
    }
    return make(ports.empty() ? std::uint16_t{0} : ports.back());
}

} // namespace

ServiceAdvertiser::ServiceAdvertiser(boost::asio::any_io_executor executor, Clock& clock, Publish publish)
    : executor_(std::move(executor)),
      clock_(clock),
      publish_(std::move(publish)),
      publicationChanged_(std::make_shared<Event>(executor_)) {}

Task<> ServiceAdvertiser::start(Service service, WebSocketListener::ConnectionHandler onNewConnection,
                                WebSocketListener::Options options) {
    thread_.check();
    if (listener_) throw ServiceAdvertiserError(ServiceAdvertiserError::Case::alreadyStarted);
    if (!onNewConnection) {
        onNewConnection = [](const std::shared_ptr<WebSocketConnection>& connection) {
            connection->cancel();
        };
    }
    auto listener = listenOnFirst(service.ports, [&](std::uint16_t port) {
        options.port = port;
        return std::make_unique<WebSocketListener>(executor_, clock_, options, onNewConnection);
    });
    const auto port = listener->port();
    service_ = std::move(service);
    service_.ports = {port};
    publish();
    listener_ = std::move(listener);
    advertisedPort_.with([&](auto& advertised) { advertised = port; });
    co_return;
}

void ServiceAdvertiser::publish() {
    if (!publish_ || !service_.instanceName) return;
    PublishedService published{*service_.instanceName, std::string(serviceType), service_.ports.front(), {}};
    published.txt.emplace_back("sim", service_.simKind);
    published.txt.emplace_back("ver", service_.appVersion);
    published.txt.emplace_back("pairing", service_.pairingRequired ? "required" : "open");
    publication_ = publish_(std::move(published));
    followPublication();
}

std::shared_ptr<Publication> ServiceAdvertiser::takeBack() {
    thread_.check();
    return std::exchange(publication_, nullptr);
}

void ServiceAdvertiser::publishAs(std::optional<std::string> instanceName, bool pairingRequired) {
    thread_.check();
    if (!listener_) return;
    publication_.reset();
    service_.instanceName = std::move(instanceName);
    service_.pairingRequired = pairingRequired;
    publish();
    publicationChanged_->notifyAll();
}

void ServiceAdvertiser::useGate(BrowserGate gate) {
    thread_.check();
    if (listener_) listener_->useGate(std::move(gate));
}

void ServiceAdvertiser::followPublication() {
    if (!publication_) return;
    publication_->onChange([executor = executor_, changed = std::weak_ptr(publicationChanged_)] {
        boost::asio::post(executor, [changed] {
            if (const auto alive = changed.lock()) alive->notifyAll();
        });
    });
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

Task<> ServiceAdvertiser::publicationSettled(Clock::Duration limit) const {
    const auto deadline = clock_.now() + limit;
    for (;;) {
        const auto state = publicationState();
        const auto left = deadline - clock_.now();
        if (!state || state->kind != PublicationState::Kind::publishing || left <= left.zero()) co_return;
        co_await waitFor(*publicationChanged_, clock_, left);
    }
}

Task<> ServiceAdvertiser::publicationChange() const {
    thread_.check();
    co_await publicationChanged_->wait();
}

std::shared_ptr<Publication> publishBySystemDaemon(PublishedService service) {
    return std::make_shared<ServicePublisher>(std::move(service));
}

} // namespace tarnly
