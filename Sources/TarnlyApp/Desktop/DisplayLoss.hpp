#pragma once

#include <functional>

#include "TarnlyPlatform/Base/OnOneThread.hpp"

namespace tarnly {

/// Notices that the display has gone. Qt then ends the whole program, whatever else runs in it, as soon as
/// the main thread hears of it.
///
/// Made on the main thread once there is a QApplication; one at a time. Qt's words reach standard error as
/// before.
class DisplayLoss {
  public:
    /// `beforeEnd` is called once, on the main thread, instead of the program's end, which comes when it
    /// returns. No event is delivered meanwhile. Until this object's end, any exit counts as such a loss.
    explicit DisplayLoss(std::function<void()> beforeEnd);

    DisplayLoss(const DisplayLoss&) = delete;
    DisplayLoss& operator=(const DisplayLoss&) = delete;
    ~DisplayLoss();

    /// For the handlers, which are functions.
    static void notice();

  private:
    OnOneThread thread_;
    std::function<void()> beforeEnd_;
};

} // namespace tarnly
