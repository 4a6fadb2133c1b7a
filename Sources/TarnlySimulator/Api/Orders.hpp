#pragma once

#include <chrono>
#include <functional>
#include <string_view>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlySimulator/World/World.hpp"

namespace tarnly::simulator {

/// How a restart goes.
struct Restart {
    /// Only "landing gear up" and "landing gear down" change their ids, with each other; else all ids change.
    bool isSwapped = false;
    /// The flight begins anew; else it goes on.
    bool isFresh = false;
    /// How long nobody listens.
    std::chrono::milliseconds away{0};
};

/// The orders that change a stand-in while it runs, one a line of words:
///
///     QUIRK on [MILLISECONDS]     QUIRK off      for each of the quirks
///     drop                                       hangs up on every WebSocket
///     restart [swapped] [fresh] [away MILLISECONDS]
///     aircraft [MILLISECONDS]                    another one: its add-ons register their datarefs so late
///     load [SITUATION]                           leaves the main menu; without a name: for the first flight
///
/// Words of a name may be parted by "_" as well as by "-". Belongs to the thread of its world, which
/// outlives it.
class Orders {
  public:
    struct Actions {
        std::function<void()> drop;
        std::function<void(const Restart&)> restart;
    };

    Orders(World& world, Actions actions) : world_(world), actions_(std::move(actions)) {}

    /// Throws `ApiError` "invalid_order" for a line that is none, having changed nothing.
    void obey(std::string_view line);

  private:
    OnOneThread thread_;
    World& world_;
    Actions actions_;
};

} // namespace tarnly::simulator
