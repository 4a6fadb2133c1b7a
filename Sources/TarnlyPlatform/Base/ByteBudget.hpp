#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

#include "TarnlyPlatform/Base/OnOneThread.hpp"

namespace tarnly {

/// How many bytes of messages may be decoded or encoded at once, whoever they belong to.
///
/// Who needs room takes a `Lease` of it and keeps that until the work is done. Where there is no room, takers
/// wait in the order in which they came, also behind one that wants more than is free: nobody is passed over
/// for ever. Belongs to one thread, with its leases: a lease that went along to a worker comes back before it
/// is let go. Leases may outlive the budget; takers that still wait when it goes are dropped.
class ByteBudget {
    struct State;

  public:
    /// Room for some bytes; gives it back on destruction. A value that is moved, not copied.
    class Lease {
      public:
        /// Of nothing.
        Lease() = default;
        Lease(Lease&& other) noexcept;
        Lease& operator=(Lease&& other) noexcept;
        /// May call those who wait, who may take and let go in turn.
        ~Lease();

        std::size_t bytes() const { return bytes_; }

      private:
        friend ByteBudget;
        Lease(std::shared_ptr<State> state, std::size_t bytes);
        void release() noexcept;

        std::shared_ptr<State> state_;
        std::size_t bytes_ = 0;
    };

    /// Is handed the lease. Must not throw.
    using Granted = std::function<void(Lease lease)>;

    /// Room for `bytes` in all.
    explicit ByteBudget(std::size_t bytes);
    ~ByteBudget();

    ByteBudget(const ByteBudget&) = delete;
    ByteBudget& operator=(const ByteBudget&) = delete;

    /// Absent when there is no room now, or others wait. More than there is in all is granted when nothing
    /// else is taken.
    std::optional<Lease> tryTake(std::size_t bytes);

    /// Calls `granted` at once, or when there is room. Who no longer wants the lease lets it go when it
    /// comes.
    void take(std::size_t bytes, Granted granted);

    /// Bytes that are taken now.
    std::size_t taken() const;
    /// Takers that wait.
    std::size_t waiting() const;

  private:
    std::shared_ptr<State> state_;
};

} // namespace tarnly
