#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyPlatform/Base/Error.hpp"

namespace tarnly {

/// A login item that could not be registered or unregistered.
struct LoginItemErrorCases {
    enum class Case {
        /// The entry could not be put in its place.
        cannotWrite,
        /// The entry is there still.
        cannotRemove,
        /// The program's name or arguments have no form in an entry.
        notRepresentable
    };
    static constexpr std::array<std::string_view, 3> names{"cannotWrite", "cannotRemove", "notRepresentable"};
};
using LoginItemError = Error<LoginItemErrorCases>;

/// The program's entry among those that the person's desktop starts at login. What counts is what stands on
/// the disk: people change it with their desktop's own tools as well. Owned by the settings; may be called
/// from any thread, from one at a time.
class LoginItem {
  public:
    enum class Status {
        /// There is no entry, or it has been turned off.
        disabled,
        /// The desktop will start the program.
        enabled,
        /// It will, with other arguments than these.
        outdated,
        /// There is an entry, for a program that is not there.
        broken
    };

    struct Description {
        /// What tells the entry from others, as part of a file's name.
        std::string id;
        /// What the person sees in the desktop's tools. Comment and icon may be empty.
        std::string name;
        std::string comment;
        std::string icon;
        /// The program, by its absolute path, and its arguments.
        std::vector<std::string> command;
    };

    /// The one of this system's desktop. Throws `std::runtime_error` for a person without a home folder.
    static std::unique_ptr<LoginItem> create(Description description);

    LoginItem() = default;
    LoginItem(const LoginItem&) = delete;
    LoginItem& operator=(const LoginItem&) = delete;
    virtual ~LoginItem() = default;

    /// Never throws; an entry that cannot be read is `disabled`.
    virtual Status status() const = 0;
    /// Makes the entry, or makes it anew, turned on. Throws `LoginItemError`.
    virtual void enable() = 0;
    /// Removes the entry; fine where there is none. Throws `LoginItemError`.
    virtual void disable() = 0;
};

} // namespace tarnly
