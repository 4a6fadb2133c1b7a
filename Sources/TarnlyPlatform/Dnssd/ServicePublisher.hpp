#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// What is published by DNS-SD (RFC 6763).
struct PublishedService {
    /// The instance name, UTF-8, not empty; cut to the 63 bytes that DNS allows.
    std::string name;
    /// For example "_http._tcp".
    std::string type;
    std::uint16_t port = 0;
    /// Keys and values in the order in which they are published.
    std::vector<std::pair<std::string, std::string>> txt;
};

/// `name` as a DNS-SD instance name: at most 63 bytes (RFC 6763, section 4.1.1), not cut within a character.
std::string cutServiceName(std::string name);

/// The name to try after `name` was found taken: "rig" gives "rig (2)", "rig (2)" gives "rig (3)". At most 63
/// bytes, not cut within a character.
std::string nextServiceName(const std::string& name);

/// How a publication stands. A plain value.
struct PublicationState {
    enum class Kind {
        publishing, ///< under way
        published,  ///< found by whoever looks
        noDaemon,   ///< there is no daemon to publish it; it is waited for
        refused,    ///< the daemon does not take it; it is tried again and again
    };

    Kind kind = Kind::publishing;
    /// `published`: the name under which the service stands. `noDaemon`, `refused`: why not and what to do
    /// about it, a clause for people. Else empty.
    Phrase text;

    bool operator==(const PublicationState&) const = default;
};

/// What keeps a service published for as long as it lives.
class Publication {
  public:
    virtual ~Publication() = default;

    /// Safe from any thread.
    virtual PublicationState state() const = 0;

    /// Has `tell` called, from any thread, when the state has changed, until the publication's end. `tell`
    /// must not wait, nor ask the publication anything.
    virtual void onChange(std::function<void()> tell) = 0;
};

/// Publishes one service through the system's DNS-SD daemon for as long as it lives.
///
/// It finds its way through any start order: without a daemon, or even a system bus, it waits for one, after
/// a restart of either it publishes again. A name that another service has is replaced by the next free one:
/// "rig", "rig (2)", "rig (3)". All talk with the daemon happens on a thread of its own, so that a daemon
/// that hangs stops nobody.
class ServicePublisher final : public Publication {
  public:
    /// Throws `std::system_error` when the system lends no thread or file descriptor.
    explicit ServicePublisher(PublishedService service);

    ServicePublisher(const ServicePublisher&) = delete;
    ServicePublisher& operator=(const ServicePublisher&) = delete;

    /// Withdraws the service. Waits for the daemon's word for half a second at most.
    ~ServicePublisher() override;

    PublicationState state() const override;
    void onChange(std::function<void()> tell) override;

    /// The name under which the service stands now; empty while it is not published. Safe from any thread.
    std::string publishedName() const;

  private:
    class Worker;
    /// Shared with the thread, which outlives the publisher when the daemon hangs.
    std::shared_ptr<Worker> worker_;
    std::thread thread_; // depends-on: worker_
};

} // namespace tarnly
