#pragma once

#include <array>
#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Error.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Dnssd/ServicePublisher.hpp"
#include "TarnlyPlatform/Net/WebSocketListener.hpp"

namespace tarnly {

struct ServiceAdvertiserErrorCases {
    enum class Case { alreadyStarted };
    static constexpr std::array<std::string_view, 1> names{"alreadyStarted"};
};
using ServiceAdvertiserError = Error<ServiceAdvertiserErrorCases>;

/// Owns the companion's one listening port and publishes it by DNS-SD, so that clients find it without
/// configuration.
///
/// Belongs to the network thread; `advertisedPort` is safe from any thread.
class ServiceAdvertiser {
  public:
    static constexpr std::string_view serviceType = "_tarnly._tcp";

    /// Begins to publish. Without a publication in the answer nobody knows how it stands.
    using Publish = std::function<std::shared_ptr<Publication>(PublishedService)>;

    struct Service {
        /// Absent: it listens, and is not published.
        std::optional<std::string> instanceName;
        /// Tried in this order. 0: a free port that the system chooses.
        std::vector<std::uint16_t> ports{0};
        std::string simKind;
        std::string appVersion;
        bool pairingRequired = false;
    };

    /// Without `publish` the companion listens and tells nobody. `clock` must outlive all that runs on
    /// `executor`.
    ServiceAdvertiser(boost::asio::any_io_executor executor, Clock& clock, Publish publish);

    /// Returns when a port listens, the first of the service's that can; publishing goes on behind it. A
    /// connection is closed at once when there is no `onNewConnection`. Throws
    /// `ServiceAdvertiserError::alreadyStarted`, or the `NetworkError` of the last port where none listens.
    Task<> start(Service service, WebSocketListener::ConnectionHandler onNewConnection,
                 WebSocketListener::Options options = {});

    /// Takes the service back. Whoever lets go of what is returned withdraws it, and waits for the daemon's
    /// word, for half a second at most; null where nothing is published.
    std::shared_ptr<Publication> takeBack();

    /// Publishes the service under another name, or not at all; the port stays. To be called when what was
    /// published before is withdrawn, else the daemon takes the two for rivals. Does nothing before `start`
    /// and after `stop`.
    void publishAs(std::optional<std::string> instanceName, bool pairingRequired);

    /// Keeps other web pages out from now on, where the port has a gate.
    void useGate(BrowserGate gate);

    /// Withdraws the service and closes the port; connections that were handed over live on. May be
    /// started again.
    void stop();

    /// Absent until started and after `stop`.
    std::optional<std::uint16_t> advertisedPort() const;

    /// How the publication stands; absent while there is none.
    std::optional<PublicationState> publicationState() const;

    /// Waits while the publication is under way, for `limit` at most. Returns at once when there is none.
    Task<> publicationSettled(Clock::Duration limit) const;

    /// Waits for the next change of the publication, and may return without one. Where there is none to
    /// change, it waits until its task is told to end.
    Task<> publicationChange() const;

  private:
    void publish();
    void followPublication();

    OnOneThread thread_;
    const boost::asio::any_io_executor executor_;
    Clock& clock_;
    const Publish publish_;
    Service service_;
    std::unique_ptr<WebSocketListener> listener_;
    /// Told by whatever thread the publication has.
    const std::shared_ptr<Event> publicationChanged_;
    std::shared_ptr<Publication> publication_;
    Guarded<std::optional<std::uint16_t>> advertisedPort_;
};

/// Publishes through the system's DNS-SD daemon.
std::shared_ptr<Publication> publishBySystemDaemon(PublishedService service);

} // namespace tarnly
