#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace tarnly {

/// The bytes that wait to be written to one peer, in order, and the account of them. Knows no socket and no
/// clock.
///
/// Short frames are joined, so that those that are ready together leave in one write; a long text is never
/// copied. A plain value of the connection.
class OutgoingQueue {
  public:
    /// What may go out next: two runs of bytes, one of which may be empty.
    using Runs = std::array<std::string_view, 2>;

    /// Puts a frame at the end. `isUnsolicited`: counts as backlog until it has gone.
    void push(std::string_view header, std::string payload, bool isUnsolicited = false);

    /// Puts a control frame before all that has not begun to leave, in place of the last such frame if that
    /// waits still: of several pings, only the last is worth an answer.
    void pushUrgent(std::string frame);

    bool isEmpty() const { return chunks_.empty(); }

    /// At most `limit` bytes. Valid until the queue changes.
    Runs next(std::size_t limit) const;

    /// The first `bytes` of what `next` gave have gone.
    void noteWritten(std::size_t bytes);

    /// Bytes that wait.
    std::size_t size() const { return static_cast<std::size_t>(queued_ - written_); }

    /// Payload bytes of unsolicited frames that wait.
    std::size_t backlog() const { return backlog_; }

    /// Bytes that were ever put in, and that have gone.
    std::uint64_t queued() const { return queued_; }
    std::uint64_t written() const { return written_; }

  private:
    /// Frames that leave together.
    struct Chunk {
        std::string head;
        std::string body;
        std::size_t unsolicited = 0;
        bool isUrgent = false;

        std::size_t size() const { return head.size() + body.size(); }
    };

    Chunk& joinable(std::size_t bytes);

    std::deque<Chunk> chunks_;
    /// How much of the first chunk has gone.
    std::size_t gone_ = 0;
    std::size_t backlog_ = 0;
    std::uint64_t queued_ = 0;
    std::uint64_t written_ = 0;
};

} // namespace tarnly
