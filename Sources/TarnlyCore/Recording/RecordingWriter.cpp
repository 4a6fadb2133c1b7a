#include "TarnlyCore/Recording/RecordingWriter.hpp"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

#include "TarnlyCore/Recording/FiredEvent.hpp"

namespace tarnly {
namespace {

using SteadyClock = std::chrono::steady_clock;

/// How long the end of the program waits for a disk.
constexpr auto patience = std::chrono::seconds(10);

/// When so much waits, it is written before more is encoded.
constexpr std::size_t bytesAtOnce = 1024 * 1024;

struct Begin {
    std::filesystem::path file;
    RecordingWriter::FileName name;
};
struct End {};
struct Notify {
    std::function<void()> done;
};
struct LetGo {
    std::shared_ptr<const void> memory;
};
using Order = std::variant<Begin, RecordingWriter::Batch, End, Notify, LetGo>;

/// Empty where the system cannot tell.
std::string absoluteText(const std::filesystem::path& file) {
    std::error_code error;
    return std::filesystem::absolute(file, error).string();
}

/// A line that has no JSON form is left out.
template <typename Record>
void appendLine(std::string& lines, std::string_view kind, const Record& record) {
    try {
        JsonWriter writer;
        writer.beginObject();
        writer.key("kind");
        writer.string(kind);
        writeField(writer, kind, record);
        writer.endObject();
        lines.append(writer.take()).append("\n");
    } catch (const JsonError&) {
    }
}

void appendLines(std::string& lines, const RecordingWriter::Batch& batch) {
    appendLine(lines, LogLine::sampleKind, batch.sample.unpacked());
    for (std::size_t place = 0; place < batch.fired.size(); ++place)
        appendLine(lines, LogLine::firedKind, eventOf(batch.fired, place));
}

} // namespace

/// What the two sides share, and what the thread does.
class RecordingWriter::Room {
  public:
    Room(OpenLog openLog, std::chrono::nanoseconds flushInterval)
        : openLog_(std::move(openLog)), flushInterval_(flushInterval) {}

    void hand(Order order) {
        const std::lock_guard lock(mutex_);
        orders_.push_back(std::move(order));
        changed_.notify_all();
    }

    /// Has the thread end when all is done; says whether it has within `patience`.
    bool finish() {
        std::unique_lock lock(mutex_);
        isClosing_ = true;
        changed_.notify_all();
        return changed_.wait_for(lock, patience, [&] { return hasEnded_; });
    }

    /// The thread.
    void run() {
        while (auto orders = next()) {
            for (auto& order : *orders)
                tryTo(order);
            attempt([this] {
                writeLines();
                flushWhenDue();
            });
        }
        attempt([this] { closeLog(); });
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
        changed_.notify_all();
    }

  private:
    /// All that waits, which is nothing when it is time to flush; absent at the end.
    std::optional<std::deque<Order>> next() {
        std::unique_lock lock(mutex_);
        const auto isAwake = [&] { return isClosing_ || !orders_.empty(); };
        if (isFlushed_) {
            changed_.wait(lock, isAwake);
        } else {
            changed_.wait_until(lock, flushDue_, isAwake);
        }
        if (isClosing_ && orders_.empty()) return std::nullopt;
        return std::exchange(orders_, {});
    }

    /// A step that fails, for lack of memory say, ends neither thread nor program.
    static void attempt(const auto& step) {
        try {
            step();
        } catch (const std::exception&) {
        }
    }

    /// What fails, for lack of memory say, is lost alone.
    void tryTo(Order& order) {
        const auto whole = lines_.size();
        try {
            std::visit([&](auto& known) { carryOut(known); }, order);
        } catch (const std::exception&) {
            if (lines_.size() > whole) lines_.resize(whole);
        }
    }

    void carryOut(const Begin& order) {
        closeLog();
        auto sink = openLog_(order.file);
        if (!sink) return;
        log_.emplace(std::move(sink));
        order.name->with([&](std::string& name) { name = absoluteText(order.file); });
    }
    void carryOut(const Batch& order) {
        if (!log_ || isLogEnding_) return;
        appendLines(lines_, order);
        if (lines_.size() >= bytesAtOnce) writeLines();
    }
    void carryOut(const End&) { isLogEnding_ = true; }
    void carryOut(const Notify& order) {
        attempt([this] { writeLines(); });
        order.done(); // somebody waits for it
    }
    void carryOut(LetGo& order) { order.memory.reset(); }

    void writeLines() {
        if (lines_.empty()) return;
        log_->append(lines_);
        lines_.clear();
        if (lines_.capacity() > bytesAtOnce) lines_.shrink_to_fit();
        if (std::exchange(isFlushed_, false)) flushDue_ = SteadyClock::now() + flushInterval_;
    }

    /// Who waits for a recording's end has been answered by now.
    void flushWhenDue() {
        if (isLogEnding_) return closeLog();
        if (!isFlushed_ && SteadyClock::now() >= flushDue_) flush();
    }

    void flush() {
        if (!std::exchange(isFlushed_, true)) log_->flush();
    }

    void closeLog() {
        writeLines();
        flush();
        log_.reset();
        isLogEnding_ = false;
    }

    const OpenLog openLog_;
    const std::chrono::nanoseconds flushInterval_;

    // The thread's own
    std::optional<RecordingLog> log_;
    std::string lines_;
    bool isLogEnding_ = false;
    bool isFlushed_ = true;
    SteadyClock::time_point flushDue_;

    // State below is protected by the mutex
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Order> orders_;
    bool isClosing_ = false;
    bool hasEnded_ = false;
};

RecordingWriter::RecordingWriter(OpenLog openLog, std::chrono::nanoseconds flushInterval)
    : room_(std::make_shared<Room>(std::move(openLog), flushInterval)),
      thread_([room = room_] { room->run(); }) {}

RecordingWriter::~RecordingWriter() {
    if (room_->finish()) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

void RecordingWriter::begin(std::filesystem::path file, FileName name) {
    room_->hand(Begin{std::move(file), std::move(name)});
}

void RecordingWriter::write(Batch batch) { room_->hand(std::move(batch)); }

void RecordingWriter::end() { room_->hand(End{}); }

void RecordingWriter::notify(std::function<void()> done) { room_->hand(Notify{std::move(done)}); }

void RecordingWriter::letGo(std::shared_ptr<const void> memory) { room_->hand(LetGo{std::move(memory)}); }

} // namespace tarnly
