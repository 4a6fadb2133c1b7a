#include "TarnlyCore/Recording/LogInProgress.hpp"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "TarnlyCore/Recording/FiredEvent.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

/// When so much is encoded, it is written before more is.
constexpr std::size_t bytesAtOnce = 1024 * 1024;

/// Empty where the system cannot tell.
std::string absoluteText(const std::filesystem::path& file) {
    std::error_code error;
    return std::filesystem::absolute(file, error).string();
}

std::string nameOf(const std::filesystem::path& file) { return printable(file.filename().string()); }

bool isAnyOf(const std::error_code& error, std::initializer_list<std::errc> conditions) {
    for (const auto condition : conditions)
        if (error == condition) return true;
    return false;
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

} // namespace

LogInProgress::LogInProgress(OpenLog openLog, std::filesystem::path file, SharedAccount account,
                             Pauses pauses, Tell tell, std::launch flushing)
    : openLog_(std::move(openLog)),
      wantedFile_(std::move(file)),
      account_(std::move(account)),
      pauses_(pauses),
      tell_(std::move(tell)),
      flushing_(flushing),
      file_(wantedFile_) {}

void LogInProgress::add(const Batch& batch) {
    if (isEnding_) return;
    if (!batch.fired.empty()) fired_.push_back({samples_.size(), batch.fired});
    try {
        samples_.push_back(batch.sample);
    } catch (const std::exception&) {
        if (!batch.fired.empty()) fired_.pop_back();
        throw;
    }
}

bool LogInProgress::waits(TimePoint now, Patience patience) const {
    return retryDue_ && patience == Patience::pauses && now < *retryDue_;
}

void LogInProgress::write(TimePoint now, Patience patience) {
    if (waits(now, patience)) return;
    if (retryDue_) retryDue_ = now + pauses_.retry;
    if (!sink_ && !open(now)) return;
    if (!writeLines(now)) return;
    // Out of trouble is only what the disk has as well: a failed flush may have taken back what was written.
    if (retryDue_ && flush(now)) recover();
}

bool LogInProgress::open(TimePoint now) {
    // Whoever removes the folder during a recording means it: it is made again for the next one only.
    const auto missing = wasOpened_ ? MissingFolder::leave : MissingFolder::make;
    auto opened = openLog_(wantedFile_, missing);
    wasOpened_ = true;
    file_ = opened.file;
    if (!opened.sink) {
        fail(opened.error, now);
        return false;
    }
    sink_ = std::move(opened.sink);
    lookDue_ = now + pauses_.look;
    account_->with([this](Account& account) { account.file = absoluteText(file_); });
    return true;
}

bool LogInProgress::writeLines(TimePoint now) {
    // At the end it is looked for in any case: it may have been removed since the last line.
    const bool isLastLook = isEnding_ && !samples_.empty();
    const bool isLookDue = !isEnding_ && now >= lookDue_;
    if (isUpToDate() && !retryDue_ && !isLastLook && !isLookDue) return true;
    lookDue_ = now + pauses_.look;
    if (!sink_->isInPlace(written_.size)) {
        beginAnew();
        failWithoutFile(now);
        return false;
    }
    while (!isUpToDate()) {
        auto mark = written_;
        const auto lines = encodeFrom(mark);
        if (const auto error = sink_->write(written_.size, lines)) {
            fail(error, now);
            return false;
        }
        if (written_.count == safe_.count) flushDue_ = now + pauses_.flush;
        written_ = mark;
    }
    return true;
}

std::string LogInProgress::encodeFrom(Mark& mark) const {
    std::string lines;
    while (mark.count < samples_.size() && lines.size() < bytesAtOnce)
        appendLines(lines, mark);
    mark.size += lines.size();
    return lines;
}

void LogInProgress::appendLines(std::string& lines, Mark& mark) const {
    appendLine(lines, LogLine::sampleKind, samples_[mark.count].unpacked());
    if (mark.firedCount < fired_.size() && fired_[mark.firedCount].sample == mark.count) {
        const auto& triggers = fired_[mark.firedCount++].triggers;
        for (std::size_t place = 0; place < triggers.size(); ++place)
            appendLine(lines, LogLine::firedKind, eventOf(triggers, place));
    }
    ++mark.count;
}

void LogInProgress::flushWhenDue(TimePoint now, Patience patience) {
    if (!sink_ || waits(now, patience)) return;
    if ((isEnding_ || !isFlushing()) && !takeFlushed(now)) return;
    if (written_.count == safe_.count) return;
    if (isEnding_) {
        flush(now);
    } else if (underWay_) {
        flushDue_ = now + pauses_.flush; // nobody tells when it is done
    } else if (now >= flushDue_) {
        beginFlush(now);
        if (!isFlushing()) takeFlushed(now);
    }
}

bool LogInProgress::flush(TimePoint now) {
    if (const auto error = sink_->flush()) {
        written_ = safe_; // what stands behind it may be gone, and is written again
        fail(error, now);
        return false;
    }
    safe_ = written_;
    return true;
}

/// Lines that wait behind a slow disk would die with the process.
void LogInProgress::beginFlush(TimePoint now) {
    try {
        underWay_ = {safe_, written_, now, std::async(flushing_, [sink = sink_] { return sink->flush(); })};
    } catch (const std::system_error&) { // there is no thread for it
        flush(now);
    }
}

bool LogInProgress::isFlushing() const {
    return underWay_ && underWay_->outcome.wait_for(std::chrono::seconds(0)) == std::future_status::timeout;
}

/// Waits for it, if there is one; false where it has failed.
bool LogInProgress::takeFlushed(TimePoint now) {
    if (!underWay_) return true;
    auto done = std::move(*underWay_);
    underWay_.reset();
    if (const auto error = done.outcome.get()) {
        written_ = safe_ = done.from; // whatever a later one said: the system tells of a loss once
        fail(error, now);
        return false;
    }
    if (safe_.count < done.upTo.count) safe_ = done.upTo;
    flushDue_ = done.begun + pauses_.flush;
    return true;
}

bool LogInProgress::isWhole() const {
    return isEnding_ && sink_ && !retryDue_ && safe_.count == samples_.size();
}

std::optional<LogInProgress::TimePoint> LogInProgress::due() const {
    if (retryDue_) return retryDue_;
    if (isEnding_) return written_.count != safe_.count ? std::optional(flushDue_) : std::nullopt;
    const auto& kept = underWay_ ? underWay_->upTo : safe_;
    return written_.count != kept.count ? std::min(flushDue_, lookDue_) : lookDue_;
}

Phrase LogInProgress::problem() const { return account_->copy().problem; }

void LogInProgress::giveUp() {
    if (retryDue_) tell_("The log " + nameOf(file_) + " stays as it is: it lacks what was recorded last.");
}

void LogInProgress::beginAnew() {
    underWay_.reset();
    sink_.reset();
    written_ = safe_ = {};
    account_->with([](Account& account) { account.file.clear(); });
}

void LogInProgress::fail(const std::error_code& error, TimePoint now) {
    const auto folder = printable(file_.parent_path().string());
    const auto message = error.message();
    if (isAnyOf(error, {std::errc::no_space_on_device, std::errc::file_too_large})) {
        fail(
            {Phrase::of("there is no room in %1 (%2)", folder, message), Phrase::of("Free some space there")},
            now);
    } else if (isAnyOf(error, {std::errc::no_such_file_or_directory, std::errc::not_a_directory})) {
        fail({Phrase::of("there is no folder %1", folder),
              Phrase::of("Make it again, as the next recording does")},
             now);
    } else if (isAnyOf(error, {std::errc::permission_denied, std::errc::operation_not_permitted,
                               std::errc::read_only_file_system})) {
        fail({Phrase::of("%1 may not be written to (%2)", folder, message), Phrase::of("Make it writable")},
             now);
    } else {
        fail(
            {Phrase::verbatim(printable(file_.string()) + ": " + message), Phrase::of("Look after the disk")},
            now);
    }
}

void LogInProgress::failWithoutFile(TimePoint now) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(file_.parent_path(), ignored)) {
        return fail(std::make_error_code(std::errc::no_such_file_or_directory), now);
    }
    fail({Phrase::of("%1 has been moved or removed", printable(file_.string())),
          Phrase::of("It is made anew within a second")},
         now);
}

void LogInProgress::fail(const Trouble& trouble, TimePoint now) {
    retryDue_ = now + pauses_.retry;
    const auto text = problemText(file_, trouble.cause, trouble.cure);
    const auto before =
        account_->with([&](Account& account) { return std::exchange(account.problem, text); });
    if (text != before) tell_(text.text());
}

void LogInProgress::recover() {
    retryDue_.reset();
    account_->with([](Account& account) { account.problem = {}; });
    tell_(recoveredText(file_));
}

Phrase LogInProgress::problemText(const std::filesystem::path& file, const Phrase& cause,
                                  const Phrase& cure) {
    return Phrase::of(
        "The log %1 is not being written: %2. %3; the flight is kept in memory meanwhile, and the log is "
        "completed from it.",
        nameOf(file), cause, cure);
}

std::string LogInProgress::recoveredText(const std::filesystem::path& file) {
    return "The log " + nameOf(file) + " is being written again, and lacks nothing.";
}

} // namespace tarnly
