#pragma once

#include <boost/asio/io_context.hpp>

namespace tarnly {

/// Runs a loop, and tells which of its turns have held it for more than a millisecond.
///
/// For developers: only in builds that define TARNLY_LOOP_WATCH, and only where the environment variable of
/// that name has the path of a file, to which each such turn adds a line, "3.20 ms, 3.15 on the processor:
/// push". What another process took away from the thread does not count; what the thread waited for does:
/// locks, disks. Otherwise it costs nothing.
class LoopWatch {
  public:
    LoopWatch() = delete;

#ifdef TARNLY_LOOP_WATCH
    /// Like `loop.run()`.
    static void run(boost::asio::io_context& loop);

    /// What the present turn is about, if this is the thread of a loop that is watched; `what` stays where it
    /// is. Costs next to nothing elsewhere.
    static void note(const char* what);
#else
    static void run(boost::asio::io_context& loop) { loop.run(); }
    static void note(const char*) {}
#endif
};

} // namespace tarnly
