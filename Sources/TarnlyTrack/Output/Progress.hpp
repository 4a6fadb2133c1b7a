#pragma once

#include <cstddef>
#include <ostream>
#include <string>

namespace tarnly::track {

/// One line on the terminal that tells how far a long work is, drawn over and over, and gone at the end.
/// Nothing where nobody watches. For one thread.
class Progress {
  public:
    /// `stream` outlives it; `isWatched`: it is a terminal.
    Progress(std::ostream& stream, bool isWatched) : stream_(stream), isWatched_(isWatched) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { clear(); }

    /// `what` is a text that a terminal may be given. Draws when the percentage has become another.
    void show(const std::string& what, std::size_t done, std::size_t total);

    /// Makes room for other lines.
    void clear();

  private:
    std::ostream& stream_;
    const bool isWatched_;
    std::string shown_;
};

/// Whether the standard error stream is a terminal, before somebody's eyes.
bool isStandardErrorWatched();

} // namespace tarnly::track
