#include "TarnlyCore/Recording/LogInProgress.hpp"

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
                             Pauses pauses, Tell tell)
    : openLog_(std::move(openLog)),
      wantedFile_(std::move(file)),
      account_(std::move(account)),
      pauses_(pauses),
      tell_(std::move(tell)),
      file_(wantedFile_) {}

void LogInProgress::add(Batch batch) {
    if (isEnding_) return;
    samples_.push_back(std::move(batch.sample));
    if (!batch.fired.empty()) fired_.push_back({samples_.size() - 1, std::move(batch.fired)});
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
    account_->with([this](Account& account) { account.file = absoluteText(file_); });
    return true;
}

bool LogInProgress::writeLines(TimePoint now) {
    // At the end it is looked for in any case: it may have been removed since the last line.
    const bool isLastLook = isEnding_ && !samples_.empty();
    if (isUpToDate() && !retryDue_ && !isLastLook) return true;
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
    if (!sink_ || waits(now, patience) || written_.count == safe_.count) return;
    if (isEnding_ || now >= flushDue_) flush(now);
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

bool LogInProgress::isWhole() const {
    return isEnding_ && sink_ && !retryDue_ && safe_.count == samples_.size();
}

std::optional<LogInProgress::TimePoint> LogInProgress::due() const {
    if (retryDue_) return retryDue_;
    if (written_.count != safe_.count) return flushDue_;
    return std::nullopt;
}

std::string LogInProgress::problem() const { return account_->copy().problem; }

void LogInProgress::giveUp() {
    if (retryDue_) tell_("The log " + name() + " stays as it is: it lacks what was recorded last.");
}

void LogInProgress::beginAnew() {
    sink_.reset();
    written_ = safe_ = {};
    account_->with([](Account& account) { account.file.clear(); });
}

void LogInProgress::fail(const std::error_code& error, TimePoint now) {
    const auto folder = printable(file_.parent_path().string());
    const auto message = error.message();
    if (isAnyOf(error, {std::errc::no_space_on_device, std::errc::file_too_large})) {
        fail({"there is no room in " + folder + " (" + message + ")", "Free some space there"}, now);
    } else if (isAnyOf(error, {std::errc::no_such_file_or_directory, std::errc::not_a_directory})) {
        fail({"there is no folder " + folder, "Make it again, as the next recording does"}, now);
    } else if (isAnyOf(error, {std::errc::permission_denied, std::errc::operation_not_permitted,
                               std::errc::read_only_file_system})) {
        fail({folder + " may not be written to (" + message + ")", "Make it writable"}, now);
    } else {
        fail({printable(file_.string()) + ": " + message, "Look after the disk"}, now);
    }
}

void LogInProgress::failWithoutFile(TimePoint now) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(file_.parent_path(), ignored)) {
        return fail(std::make_error_code(std::errc::no_such_file_or_directory), now);
    }
    fail({printable(file_.string()) + " has been moved or removed", "It is made anew within a second"}, now);
}

void LogInProgress::fail(const Trouble& trouble, TimePoint now) {
    retryDue_ = now + pauses_.retry;
    const auto text = "The log " + name() + " is not being written: " + trouble.cause + ". " + trouble.cure +
                      "; the flight is kept in memory meanwhile, and the log is completed from it.";
    const auto before =
        account_->with([&](Account& account) { return std::exchange(account.problem, text); });
    if (text != before) tell_(text);
}

void LogInProgress::recover() {
    retryDue_.reset();
    account_->with([](Account& account) { account.problem.clear(); });
    tell_("The log " + name() + " is being written again, and lacks nothing.");
}

std::string LogInProgress::name() const { return printable(file_.filename().string()); }

} // namespace tarnly
