#include "TarnlyClient/Lesson/RedrawnTable.hpp"

#include <utility>

namespace tarnly::client {
namespace {

constexpr auto restOfLine = "\x1b[K";
constexpr auto restOfScreen = "\x1b[J";

} // namespace

void RedrawnTable::draw(const std::vector<std::string>& lines) {
    goBack();
    // Line by line, and what is left over last: cleared as a whole beforehand it would flicker.
    for (const auto& line : lines)
        stream_ << line << restOfLine << "\r\n";
    stream_ << restOfScreen << std::flush;
    drawn_ = lines.size();
}

void RedrawnTable::clear() {
    if (drawn_ == 0) return;
    goBack();
    stream_ << restOfScreen << std::flush;
}

void RedrawnTable::goBack() {
    if (drawn_ > 0) stream_ << "\r\x1b[" << std::exchange(drawn_, 0) << 'A';
}

} // namespace tarnly::client
