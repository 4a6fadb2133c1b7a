#include "TarnlyApp/StatusFile.hpp"

#include <boost/asio/cancellation_type.hpp>
#include <boost/asio/this_coro.hpp>
#include <exception>
#include <stdexcept>
#include <utility>

#include "TarnlyApp/StatusReporter.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/WithinLimit.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"

namespace tarnly {
namespace {

/// At the end.
constexpr auto patience = std::chrono::seconds(1);

/// A pipe or a device has readers of its own, and is not ours to replace.
void requireFile(const std::filesystem::path& file) {
    std::error_code ignored;
    const auto present = std::filesystem::status(file, ignored);
    if (std::filesystem::exists(present) && !std::filesystem::is_regular_file(present))
        throw std::runtime_error("it is no ordinary file");
}

} // namespace

/// Belongs to one worker at a time.
class StatusFile::Writer {
  public:
    Writer(std::filesystem::path file, Complain complain)
        : file_(std::move(file)), complain_(std::move(complain)) {}

    void write(CompanionStatus status) {
        auto text = statusJson(std::move(status)) + "\n";
        if (text == written_) return;
        try {
            requireFile(file_);
            replaceFile(file_, text, Lasting::no);
            written_ = std::move(text);
            hasFailed_ = false;
        } catch (const std::exception& error) {
            if (!std::exchange(hasFailed_, true)) complainAbout(error);
        }
    }

  private:
    void complainAbout(const std::exception& error) const {
        complain_("the status file " + printable(file_.string()) + " cannot be written: " + error.what() +
                  "; name one by --status-file in a folder that you may write to");
    }

    const std::filesystem::path file_;
    const Complain complain_;
    std::string written_;
    bool hasFailed_ = false;
};

StatusFile::StatusFile(boost::asio::any_io_executor executor, WorkerPool& workers, Clock& clock,
                       std::filesystem::path file, Collect collect, Complain complain)
    : workers_(workers),
      clock_(clock),
      collect_(std::move(collect)),
      writer_(std::make_shared<Writer>(std::move(file), std::move(complain))),
      task_(std::move(executor)) {}

void StatusFile::start() {
    thread_.check();
    task_.keepUp([this] { return follow(workers_, clock_, collect_, writer_); });
}

Task<> StatusFile::follow(WorkerPool& workers, Clock& clock, Collect collect,
                          std::shared_ptr<Writer> writer) {
    for (;;) {
        try {
            auto write = [writer, status = collect()]() mutable { writer->write(std::move(status)); };
            co_await workers.run(std::move(write));
        } catch (const std::exception&) {
            // For lack of memory, say: the next one may do.
        }
        const auto cancellation = co_await boost::asio::this_coro::cancellation_state;
        if (cancellation.cancelled() != boost::asio::cancellation_type::none) co_return;
        co_await clock.sleepFor(interval);
    }
}

Task<> StatusFile::finish(CompanionStatus last) {
    thread_.check();
    task_.cancel();
    // What is being written just now comes first; a disk that hangs does not get another one.
    const auto deadline = clock_.now() + patience;
    const bool isQuiet = co_await task_.join(clock_, patience);
    if (!isQuiet) co_return;
    const auto left = deadline - clock_.now();
    auto write = [writer = writer_, status = std::move(last)]() mutable { writer->write(std::move(status)); };
    auto writing = workers_.run(std::move(write));
    co_await withinLimit(clock_, left, std::move(writing));
}

} // namespace tarnly
