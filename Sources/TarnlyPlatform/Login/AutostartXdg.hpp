#pragma once

#include <filesystem>

#include "TarnlyPlatform/Login/LoginItem.hpp"

namespace tarnly {

/// The login item of desktops that keep to XDG Autostart: a file in the person's autostart folder. An entry
/// for all people of the computer is none of its business.
class AutostartEntry final : public LoginItem {
  public:
    /// `folder` need not exist; usually it is "autostart" in the configuration folder.
    AutostartEntry(const std::filesystem::path& folder, Description description);

    Status status() const override;
    void enable() override;
    void disable() override;

  private:
    std::filesystem::path file_;
    Description description_;
};

} // namespace tarnly
