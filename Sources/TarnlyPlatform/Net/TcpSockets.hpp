#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <memory>
#include <vector>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

/// What every conversation over TCP needs: the peer's addresses, options, and a deadline.
namespace tarnly {

struct ResolvedTcp {
    boost::system::error_code error;
    std::vector<boost::asio::ip::tcp::endpoint> addresses;
};

/// The addresses of an endpoint. A literal address takes no detour over the system's resolver, which cannot
/// be interrupted.
Task<ResolvedTcp> resolveTcp(Endpoint endpoint);

/// Prepares a connection for small messages that shall not wait, and has a peer that vanished without a word,
/// as a tablet does that leaves the Wi-Fi, noticed within a minute. A connection can do without: nothing here
/// fails.
void setConversationOptions(boost::asio::ip::tcp::socket::native_handle_type socket);

/// Closes a socket when its time is over, so that whoever waits for the peer waits no longer.
///
/// A member of who talks over the socket. Belongs to the network thread.
class SocketDeadline {
  public:
    /// `clock` must outlive all that runs on the socket's executor.
    SocketDeadline(Clock& clock, std::shared_ptr<boost::asio::ip::tcp::socket> socket);

    /// From now on, whatever was said before.
    void expireAfter(Clock::Duration patience);

    /// The peer may take as long as it likes.
    void cancel() { timer_.cancel(); }

    bool hasExpired() const { return *hasExpired_; }

  private:
    OnOneThread thread_;
    Clock& clock_;
    const std::shared_ptr<boost::asio::ip::tcp::socket> socket_;
    const std::shared_ptr<bool> hasExpired_ = std::make_shared<bool>(false);
    TaskGroup timer_;
};

} // namespace tarnly
