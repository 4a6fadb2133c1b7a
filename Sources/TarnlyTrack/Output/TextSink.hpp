#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly::track {

/// Where an export goes, piece by piece. For one thread.
class TextSink {
  public:
    virtual ~TextSink() = default;

    /// Throws `TrackError` when not all of it can be written.
    virtual void write(std::string_view text) = 0;

    /// After the last piece. Throws `TrackError` when not all can be kept.
    virtual void finish() = 0;
};

/// The standard output, or what a test has in its place. The stream outlives it.
class StreamSink final : public TextSink {
  public:
    explicit StreamSink(std::ostream& stream) : stream_(stream) {}
    void write(std::string_view text) override;
    void finish() override;

  private:
    std::ostream& stream_;
};

/// A file that is whole or as it was before: written beside its place, and put there by `finish`. Without
/// that nothing is left behind. For its owner only, as recordings are.
class FileSink final : public TextSink {
  public:
    /// Throws `TrackError` when no file can be made there.
    explicit FileSink(std::filesystem::path target);
    FileSink(const FileSink&) = delete;
    FileSink& operator=(const FileSink&) = delete;
    ~FileSink() override;
    void write(std::string_view text) override;
    void finish() override;

  private:
    std::filesystem::path target_;
    std::optional<NewFile> made_;
};

/// Hands text on in large pieces, so that small ones may be appended to `text`.
class PieceWriter {
  public:
    explicit PieceWriter(TextSink& sink) : sink_(sink) {}

    /// Append to it freely, and call `pass` now and then.
    std::string text;

    void pass() {
        if (text.size() >= pieceSize) passAll();
    }
    void passAll() {
        sink_.write(text);
        text.clear();
    }

  private:
    static constexpr std::size_t pieceSize = std::size_t(64) << 10;

    TextSink& sink_;
};

} // namespace tarnly::track
