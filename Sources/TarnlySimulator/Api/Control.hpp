#pragma once

#include <string>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlySimulator/Api/Orders.hpp"
#include "TarnlySimulator/World/World.hpp"

namespace tarnly::simulator {

/// The stand-in's own address "/control", by which tests change it while it runs:
///
///     GET /control                                             all quirks, and the phase of the flight
///     POST /control {"order":"restart swapped"}                any line of `Orders`
///     POST /control {"quirk":"slow","on":true,"milliseconds":500}
///     POST /control {"quirk":"drop"}                           also "restart"
///
/// Every POST is answered as the GET. Belongs to the thread of its world, which outlives it, as its orders
/// do.
class Control {
  public:
    Control(const World& world, Orders& orders) : world_(world), orders_(orders) {}

    /// Whether `request` is for this address.
    static bool isMeant(const HttpRequest& request) { return request.target == "/control"; }

    HttpResponse answer(const HttpRequest& request);

  private:
    void carryOut(const std::string& body);
    std::string report() const;

    OnOneThread thread_;
    const World& world_;
    Orders& orders_;
};

} // namespace tarnly::simulator
