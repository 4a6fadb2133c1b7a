#include "TarnlyCore/NavSource/NavText.hpp"

#include <utility>

namespace tarnly {
namespace {

/// Bytes. Headers have up to a thousand, rows a hundred.
constexpr std::size_t longestLine = 8192;

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

} // namespace

void NavText::feed(std::string_view piece) {
    while (!isOver_ && !piece.empty()) {
        const auto end = piece.find('\n');
        const auto part = piece.substr(0, end);
        const bool isTorn = end == std::string_view::npos;
        piece.remove_prefix(isTorn ? piece.size() : end + 1);
        isTooLong_ = isTooLong_ || torn_.size() + part.size() > longestLine;
        if (isTooLong_) {
            torn_.clear();
        } else if (isTorn || !torn_.empty()) {
            torn_ += part;
        }
        if (isTorn) return;
        // Kept for its memory.
        endLine(torn_.empty() ? part : std::string_view(torn_));
        torn_.clear();
    }
}

void NavText::finish() {
    if (!isOver_ && (isTooLong_ || !torn_.empty())) endLine(std::exchange(torn_, {}));
    isOver_ = true;
}

void NavText::endLine(std::string_view line) {
    ++line_;
    if (std::exchange(isTooLong_, false)) return noteUnreadable();
    if (line_ == 1 && line.starts_with(byteOrderMark)) line.remove_prefix(byteOrderMark.size());
    if (!header_) return takeHeader(line);
    auto row = parseNavRow(kind_, line);
    switch (row.kind) {
        case NavRow::Kind::entry:
            ++entries_;
            take_(std::move(row.entry));
            break;
        case NavRow::Kind::nothing:
            break;
        case NavRow::Kind::end:
            isOver_ = true;
            break;
        case NavRow::Kind::unreadable:
            noteUnreadable();
            break;
    }
}

/// The first line says on which computers the file was made, once; the header is the second.
void NavText::takeHeader(std::string_view line) {
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) return;
    header_ = parseNavHeader(line);
    if (!header_ && ++linesBeforeHeader_ == 2) isOver_ = true;
}

void NavText::noteUnreadable() {
    if (++unreadable_ == 1) firstUnreadableLine_ = line_;
}

} // namespace tarnly
