#pragma once

#include <functional>
#include <string>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlySimulator/World/World.hpp"

namespace tarnly::simulator {

/// The stand-in's own address "/control", by which tests flip quirks while it runs:
///
///     GET /control                                             all quirks, and the phase of the flight
///     POST /control {"quirk":"slow","on":true,"milliseconds":500}
///     POST /control {"quirk":"drop"}                           hangs up on every WebSocket
///     POST /control {"quirk":"restart"}                        draws new ids and hangs up
///
/// Every POST is answered as the GET. Belongs to the thread of its world, which outlives it.
class Control {
  public:
    struct Actions {
        std::function<void()> drop;
        std::function<void()> restart;
    };

    Control(World& world, Actions actions) : world_(world), actions_(std::move(actions)) {}

    /// Whether `request` is for this address.
    static bool isMeant(const HttpRequest& request) { return request.target == "/control"; }

    HttpResponse answer(const HttpRequest& request);

  private:
    void carryOut(const std::string& body);
    std::string report() const;

    OnOneThread thread_;
    World& world_;
    Actions actions_;
};

} // namespace tarnly::simulator
