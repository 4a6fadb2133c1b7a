#pragma once

#include <QObject>
#include <QPalette>
#include <functional>
#include <memory>

#include "TarnlyPlatform/Base/OnOneThread.hpp"

namespace tarnly {

/// Follows the person's wish for a dark desktop where Qt itself does not.
///
/// One per application, for as long as its windows. Belongs to the main thread.
class ColorScheme {
  public:
    ColorScheme();

    ColorScheme(const ColorScheme&) = delete;
    ColorScheme& operator=(const ColorScheme&) = delete;

  private:
    void adopt(bool isDark);

    OnOneThread thread_;
    /// Whether the palette in force is ours.
    bool isOurs_ = false;
    std::unique_ptr<QObject> watch_;
};

/// Light texts on dark surfaces.
QPalette darkPalette();

/// The dark palette, with a box that can be told from the surface that it stands on also while it is empty.
QPalette darkCheckBoxPalette();

/// Tells whether the person wants a dark desktop, soon and upon each change, for as long as what it returns
/// lives; nothing where the system does not say. Each system has its own way.
std::unique_ptr<QObject> watchWishForDark(std::function<void(bool isDark)> tell);

} // namespace tarnly
