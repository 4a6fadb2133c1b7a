#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"

namespace tarnly {

/// Keeps a file that tells other programs how the companion stands: one JSON object and a line feed, replaced
/// as a whole whenever that has changed, at most once a second.
///
/// Made, started and ended on the network thread; a worker writes. A file that cannot be written is
/// complained about once, and tried again.
class StatusFile {
  public:
    static constexpr std::chrono::seconds interval{1};

    using Collect = std::function<CompanionStatus()>;
    /// Told the reason and the cure, as a clause. Called from any thread.
    using Complain = std::function<void(const std::string& text)>;

    /// `workers` and `clock` must outlive all that runs on `executor`.
    StatusFile(boost::asio::any_io_executor executor, WorkerPool& workers, Clock& clock,
               std::filesystem::path file, Collect collect, Complain complain);

    StatusFile(const StatusFile&) = delete;
    StatusFile& operator=(const StatusFile&) = delete;

    /// Begins to look, and goes on until `finish`.
    void start();

    /// Stops looking, and writes `last`, unless the disk takes longer than a second.
    Task<> finish(CompanionStatus last);

  private:
    class Writer;
    static Task<> follow(WorkerPool& workers, Clock& clock, Collect collect, std::shared_ptr<Writer> writer);

    OnOneThread thread_;
    WorkerPool& workers_;
    Clock& clock_;
    const Collect collect_;
    const std::shared_ptr<Writer> writer_;
    TaskGroup task_;
};

} // namespace tarnly
