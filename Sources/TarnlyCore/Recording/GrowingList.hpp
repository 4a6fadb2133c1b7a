#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace tarnly {

/// A list that only grows and of which a snapshot costs next to nothing, however long it is.
///
/// The elements stand in blocks that snapshots share; an element never moves or changes once it is in the
/// list. The list itself is for one thread at a time (its owner keeps it under a lock); a snapshot may be
/// read by any thread while the list goes on growing.
template <typename T>
class GrowingList {
    static constexpr std::size_t blockSize = 256;
    using Block = std::array<T, blockSize>;

    template <typename BlockPointer>
    static auto& at(const std::vector<BlockPointer>& blocks, std::size_t index) {
        return (*blocks[index / blockSize])[index % blockSize];
    }

  public:
    /// The elements that the list had at one moment.
    class Snapshot {
      public:
        std::size_t size() const { return size_; }
        const T& operator[](std::size_t index) const { return at(blocks_, index); }

      private:
        friend class GrowingList;
        std::vector<std::shared_ptr<const Block>> blocks_;
        std::size_t size_ = 0;
    };

    /// The next `append` needs no memory of the list's own after this.
    void makeRoom() {
        if (size_ == blocks_.size() * blockSize) blocks_.push_back(std::make_shared<Block>());
    }

    void append(T element) {
        makeRoom();
        // No snapshot reaches as far as this element yet.
        at(blocks_, size_) = std::move(element);
        ++size_;
    }

    std::size_t size() const { return size_; }

    Snapshot snapshot() const {
        Snapshot result;
        result.blocks_.assign(blocks_.begin(), blocks_.end());
        result.size_ = size_;
        return result;
    }

  private:
    std::vector<std::shared_ptr<Block>> blocks_;
    std::size_t size_ = 0;
};

} // namespace tarnly
