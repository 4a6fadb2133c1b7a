#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnly {

/// The main group of a file in the Desktop Entry format, as read. A plain value.
class DesktopEntry {
  public:
    /// Absent where `text` has no group "Desktop Entry". Lines that are none of the format's are passed over;
    /// of a key that is there twice the last one counts.
    static std::optional<DesktopEntry> parse(std::string_view text);

    /// The value of `key`, with its escape sequences resolved; absent without that key.
    std::optional<std::string> value(const std::string& key) const;

    /// The truth of `key`; `otherwise` where it is absent or neither true nor false.
    bool flag(const std::string& key, bool otherwise) const;

  private:
    std::map<std::string, std::string> values_;
};

/// The line that gives `key` the value `value`, with its line feed. Throws `std::invalid_argument` for what
/// the format cannot carry: control characters other than the tab, and text that is not UTF-8.
std::string desktopEntryLine(std::string_view key, std::string_view value);

/// A program and its arguments as the value of the key Exec. Throws `std::invalid_argument` where the program
/// is missing or has "=" in its path.
std::string execValue(const std::vector<std::string>& command);

/// The program that a value of the key Exec starts; empty where there is none.
std::string programOfExec(std::string_view exec);

} // namespace tarnly
