#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "TarnlyPlatform/Login/LoginItem.hpp"

namespace tarnly {

/// The login item of desktops that keep to XDG Autostart: a file in the person's autostart folder. An entry
/// for all people of the computer is none of its business.
class AutostartEntry final : public LoginItem {
  public:
    struct Description {
        /// The name of the file without ".desktop".
        std::string id;
        /// What the person sees in the desktop's tools. Comment and icon may be empty.
        std::string name;
        std::string comment;
        std::string icon;
        /// The program, by its absolute path, and its arguments.
        std::vector<std::string> command;
    };

    /// `folder` need not exist; usually it is "autostart" in the configuration folder.
    AutostartEntry(const std::filesystem::path& folder, Description description);

    Status status() const override;
    void registerItem() override;
    void unregisterItem() override;

  private:
    std::filesystem::path file_;
    Description description_;
};

} // namespace tarnly
