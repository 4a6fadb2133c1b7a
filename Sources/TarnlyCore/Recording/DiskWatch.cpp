#include "TarnlyCore/Recording/DiskWatch.hpp"

#include <utility>

namespace tarnly {

/// A call that is under way as long as this object lives.
class DiskWatch::Watched {
  public:
    Watched(DiskWatch& watch, const std::filesystem::path& log) : watch_(watch) {
        std::list<Call> call{{log, std::chrono::steady_clock::now()}};
        place_ = call.begin();
        watch_.calls_.with([&](auto& calls) { calls.splice(calls.end(), call); });
    }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;
    ~Watched() {
        watch_.calls_.with([this](auto& calls) { calls.erase(place_); });
    }

  private:
    DiskWatch& watch_;
    std::list<Call>::iterator place_;
};

class DiskWatch::Sink final : public LogSink {
  public:
    Sink(std::shared_ptr<DiskWatch> watch, std::filesystem::path log, std::unique_ptr<LogSink> disk)
        : watch_(std::move(watch)), log_(std::move(log)), disk_(std::move(disk)) {}

    std::error_code write(std::size_t place, std::string_view text) override {
        const Watched call(*watch_, log_);
        return disk_->write(place, text);
    }
    std::error_code flush() override {
        const Watched call(*watch_, log_);
        return disk_->flush();
    }
    bool isInPlace(std::size_t size) const override {
        const Watched call(*watch_, log_);
        return disk_->isInPlace(size);
    }

  private:
    const std::shared_ptr<DiskWatch> watch_;
    const std::filesystem::path log_;
    const std::unique_ptr<LogSink> disk_;
};

LogInProgress::OpenLog DiskWatch::watched(LogInProgress::OpenLog open) {
    return [watch = shared_from_this(), open = std::move(open)](const std::filesystem::path& file,
                                                                MissingFolder missing) {
        const Watched call(*watch, file);
        auto opened = open(file, missing);
        if (opened.sink) opened.sink = std::make_unique<Sink>(watch, opened.file, std::move(opened.sink));
        return opened;
    };
}

std::optional<std::filesystem::path> DiskWatch::hanging() const {
    const auto now = std::chrono::steady_clock::now();
    return calls_.with([&](const auto& calls) -> std::optional<std::filesystem::path> {
        if (calls.empty() || now - calls.front().begun < patience_) return std::nullopt;
        return calls.front().log;
    });
}

} // namespace tarnly
