#include "TarnlyPlatform/Net/OutgoingQueue.hpp"

#include <algorithm>
#include <utility>

namespace tarnly {
namespace {

/// A longer payload is worth a chunk of its own.
constexpr std::size_t longestJoined = 4 * 1024;
constexpr std::size_t joinedSize = 16 * 1024;

} // namespace

void OutgoingQueue::push(std::string_view header, std::string payload, bool isUnsolicited) {
    const auto size = header.size() + payload.size();
    const auto unsolicited = isUnsolicited ? payload.size() : 0;
    if (payload.size() <= longestJoined) {
        auto& chunk = joinable(size);
        chunk.head.append(header).append(payload);
        chunk.unsolicited += unsolicited;
    } else {
        chunks_.push_back({std::string(header), std::move(payload), unsolicited});
    }
    queued_ += size;
    backlog_ += unsolicited;
}

/// The last chunk, or a new one where that has no room.
OutgoingQueue::Chunk& OutgoingQueue::joinable(std::size_t bytes) {
    const bool isJoinable = !chunks_.empty() && !chunks_.back().isUrgent && chunks_.back().body.empty() &&
                            chunks_.back().size() + bytes <= joinedSize;
    if (!isJoinable) chunks_.emplace_back();
    return chunks_.back();
}

void OutgoingQueue::pushUrgent(std::string frame) {
    const std::size_t at = gone_ > 0 ? 1 : 0;
    queued_ += frame.size();
    if (chunks_.size() > at && chunks_[at].isUrgent) {
        queued_ -= chunks_[at].size();
        chunks_[at].head = std::move(frame);
        return;
    }
    chunks_.insert(chunks_.begin() + static_cast<std::ptrdiff_t>(at), {std::move(frame), {}, 0, true});
}

OutgoingQueue::Runs OutgoingQueue::next(std::size_t limit) const {
    if (chunks_.empty()) return {};
    const auto& chunk = chunks_.front();
    std::string_view head(chunk.head);
    std::string_view body(chunk.body);
    const auto goneOfHead = std::min(gone_, head.size());
    head.remove_prefix(goneOfHead);
    body.remove_prefix(gone_ - goneOfHead);
    head = head.substr(0, limit);
    return {head, body.substr(0, limit - head.size())};
}

void OutgoingQueue::noteWritten(std::size_t bytes) {
    written_ += bytes;
    gone_ += bytes;
    if (chunks_.empty() || gone_ < chunks_.front().size()) return;
    gone_ = 0;
    backlog_ -= chunks_.front().unsolicited;
    chunks_.pop_front();
}

} // namespace tarnly
