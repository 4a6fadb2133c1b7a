#pragma once

#include <chrono>
#include <filesystem>
#include <string>

namespace tarnly {

/// A socket in the file system that listens, and the claim to its name. Closes nothing of the socket itself,
/// which `release` hands over.
class LocalSocketFile {
  public:
    /// Throws `std::system_error`; with `std::errc::address_in_use` when another process has the name.
    explicit LocalSocketFile(std::filesystem::path file);

    LocalSocketFile(const LocalSocketFile&) = delete;
    LocalSocketFile& operator=(const LocalSocketFile&) = delete;

    /// Removes the file, and lets go of the name.
    ~LocalSocketFile();

    /// The listening socket, which is the caller's from now on.
    int release();

  private:
    const std::filesystem::path file_;
    int lock_ = -1;
    int socket_ = -1;
};

/// All that is sent by who listens at `file`, until he hangs up. Blocks for `limit` at most. Throws
/// `std::system_error`; with `std::errc::timed_out` when it takes longer.
std::string readFromLocalSocket(const std::filesystem::path& file, std::chrono::milliseconds limit);

} // namespace tarnly
