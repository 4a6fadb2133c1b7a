#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnly {

/// A file from which a navigation database was made, as it was then.
struct NavSourceStamp {
    /// Its name below the simulator's folder.
    std::string name;
    /// In bytes.
    std::int64_t size = 0;
    /// When it was changed last, in microseconds since 1970.
    std::int64_t changed = 0;
    /// Of its format.
    int version = 0;
    /// Both may be empty.
    std::string cycle{};
    std::string build{};

    bool operator==(const NavSourceStamp&) const = default;
};

/// What a navigation database says of itself, if it was made by Tarnly.
struct NavAbout {
    /// Of the layout of its tables.
    static constexpr int presentLayout = 1;

    int layout = presentLayout;
    /// Of the navigation data, "2501"; both may be empty.
    std::string cycle{};
    std::string build{};
    /// The simulator's folder.
    std::string folder{};
    std::vector<NavSourceStamp> sources{};

    bool operator==(const NavAbout&) const = default;
};

/// Absent where the file at `path` cannot be read, or says nothing of itself. Blocks for as long as its disk
/// does; safe from any thread.
std::optional<NavAbout> readNavAbout(const std::string& path);

} // namespace tarnly
