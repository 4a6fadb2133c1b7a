#pragma once

#include "TarnlyPlatform/Login/LoginItemError.hpp"

namespace tarnly {

/// The program's entry among those that the person's desktop starts at login. What counts is what stands on
/// the disk: people change it with their desktop's own tools as well. Owned by the settings; may be called
/// from any thread, from one at a time.
class LoginItem {
  public:
    enum class Status {
        /// There is no entry, or it has been turned off.
        notRegistered,
        /// The desktop will start the program.
        enabled,
        /// There is an entry, for a program that is not there.
        notFound
    };

    LoginItem() = default;
    LoginItem(const LoginItem&) = delete;
    LoginItem& operator=(const LoginItem&) = delete;
    virtual ~LoginItem() = default;

    /// Never throws; an entry that cannot be read is `notRegistered`.
    virtual Status status() const = 0;
    /// Makes the entry, or makes it anew, turned on. Throws `LoginItemError`.
    virtual void registerItem() = 0;
    /// Removes the entry; fine where there is none. Throws `LoginItemError`.
    virtual void unregisterItem() = 0;
};

} // namespace tarnly
