#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace tarnly::client {

/// Lines at the end of a terminal that are written over in place, by the control sequences of ECMA-48.
///
/// `stream` outlives it. Nobody else writes to the terminal while lines stand there: `clear` first. For one
/// thread.
class RedrawnTable {
  public:
    explicit RedrawnTable(std::ostream& stream) : stream_(stream) {}

    /// Puts `lines` in place of those that stand there. None is wider than the terminal.
    void draw(const std::vector<std::string>& lines);

    /// Takes away what stands there.
    void clear();

  private:
    void goBack();

    std::ostream& stream_;
    std::size_t drawn_ = 0;
};

} // namespace tarnly::client
