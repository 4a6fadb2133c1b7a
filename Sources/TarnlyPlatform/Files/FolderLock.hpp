#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly {

/// A claim to a folder, by a lock on a file in it, which stays when the claim ends and means nothing then.
/// The system drops the lock with the process, however that ends. Belongs to one thread at a time.
class FolderLock {
  public:
    enum class Outcome {
        taken,
        /// Another process has it, or another claim of this one.
        heldByAnother,
        /// There can be no such file, or the file system has no locks.
        impossible
    };

    /// Makes the folder, for its owner only, where it is missing. Does not wait.
    explicit FolderLock(const std::filesystem::path& folder);

    Outcome outcome() const { return outcome_; }

    /// The process that has the lock; absent where it is not told, or nobody has it.
    std::optional<std::int64_t> holder() const { return holder_; }

    /// With `impossible`: why.
    const std::error_code& error() const { return error_; }

  private:
    File file_;
    Outcome outcome_ = Outcome::impossible;
    std::optional<std::int64_t> holder_;
    std::error_code error_;
};

} // namespace tarnly
