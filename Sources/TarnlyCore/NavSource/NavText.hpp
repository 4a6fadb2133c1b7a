#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyCore/NavSource/NavRow.hpp"

namespace tarnly {

/// Reads one file of the simulator's navigation data as it comes, piece by piece, and keeps one line of it at
/// most. Whatever the bytes are, it ends with what could be read and an account of what could not.
///
/// Belongs to one thread.
class NavText {
  public:
    using Take = std::function<void(NavEntry entry)>;

    /// `take` is called for each entry, in the order of the file.
    NavText(NavFileKind kind, Take take) : kind_(kind), take_(std::move(take)) {}

    void feed(std::string_view piece);
    /// Behind the last piece: the last line may have no line feed.
    void finish();

    /// Absent until it has been read, and in a file that has none, of which nothing else is read.
    const std::optional<NavHeader>& header() const { return header_; }
    /// Nothing that follows is read: the last row has come, or there is no header.
    bool isOver() const { return isOver_; }

    std::size_t entries() const { return entries_; }
    std::size_t unreadable() const { return unreadable_; }
    /// Of the first row that could not be read, from 1; 0 while there is none.
    std::size_t firstUnreadableLine() const { return firstUnreadableLine_; }

  private:
    void endLine(std::string_view line);
    void takeHeader(std::string_view line);
    void noteUnreadable();

    const NavFileKind kind_;
    const Take take_;
    /// The beginning of a line whose end has not come.
    std::string torn_;
    bool isTooLong_ = false;
    bool isOver_ = false;
    std::optional<NavHeader> header_;
    std::size_t line_ = 0;
    std::size_t linesBeforeHeader_ = 0;
    std::size_t entries_ = 0;
    std::size_t unreadable_ = 0;
    std::size_t firstUnreadableLine_ = 0;
};

/// The formats that are read: older ones have other columns, newer ones nobody knows.
struct NavFormat {
    static constexpr int oldest = 1100;
    /// The newest that is known.
    static int newest(NavFileKind kind) { return kind == NavFileKind::airports ? 1210 : 1200; }
};

} // namespace tarnly
