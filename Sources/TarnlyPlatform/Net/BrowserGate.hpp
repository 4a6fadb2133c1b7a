#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/WebOrigin.hpp"

namespace tarnly {

/// Keeps the web pages out that somebody on this network happens to look at: a browser opens WebSockets to
/// wherever a page likes, but it says in the header Origin whose page that is.
///
/// Pages that were loaded from this very port pass, and programs that are no browsers, which send no Origin.
/// A page could also have a name of its own point to this computer (DNS rebinding) and so seem to come from
/// here; so the header Host must name this computer in a way that nobody outside of this network can lay
/// claim to. A plain value.
class BrowserGate {
  public:
    /// `hostName` is this computer's. Pages of `allowedOrigins` pass as well.
    explicit BrowserGate(std::string hostName, std::vector<WebOrigin> allowedOrigins = {});

    /// Why a request may not pass, for whoever reads the answer to it; absent for one that may.
    std::optional<std::string> refusalOf(const HttpRequest& request, bool isUpgrade) const;

  private:
    bool isOurs(const WebAuthority& host) const;
    bool mayOpen(const HttpRequest& request, const WebAuthority& host) const;

    WebAuthority own_;
    std::vector<WebOrigin> allowedOrigins_;
};

} // namespace tarnly
