#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

#include "TarnlyCore/Recording/PackedSample.hpp"

namespace tarnly {

/// The samples of a recording: a list that only grows, and of which a snapshot costs next to nothing.
///
/// The samples stand packed in blocks that snapshots share; a word never moves or changes once it is in the
/// list. The list itself is for one thread at a time (its owner keeps it under a lock); a snapshot may be
/// read by any thread while the list goes on growing.
class SampleList {
    using Word = PackedSample::Word;
    struct Block {
        std::unique_ptr<Word[]> words;
        std::size_t capacity = 0;
        /// How many words are taken.
        std::size_t size = 0;
        /// The latest of its samples' times.
        double latest = -std::numeric_limits<double>::infinity();
    };

  public:
    /// The samples that the list had at one moment.
    class Snapshot {
      public:
        /// A place among them, at first before the first one.
        struct Cursor {
            std::size_t block = 0;
            std::size_t word = 0;
        };

        /// Reads the next sample whose time is after `since`, in seconds, into `sample`; false at the end.
        /// Looks at every sample: the times need not ascend.
        bool next(Cursor& cursor, double since, TrackSample& sample) const;

      private:
        friend class SampleList;
        /// How many words of the block stand in the snapshot.
        std::size_t sizeOf(std::size_t block) const;
        /// Whether no sample of the block is after `since`. Of the last block, which may still grow, nobody
        /// can tell.
        bool isPassed(std::size_t block, double since) const;

        std::vector<std::shared_ptr<const Block>> blocks_;
        std::size_t sizeOfLast_ = 0;
    };

    /// The sample where it stands now.
    PackedSample append(const TrackSample& sample);

    /// As if the last `append` had not been; to be called before anything else is.
    void takeBackLast() {
        blocks_.back()->size -= packed_.size();
        --size_;
    }

    std::size_t size() const { return size_; }

    Snapshot snapshot() const;

  private:
    static constexpr std::size_t blockWords = 8 * 1024;

    std::vector<std::shared_ptr<Block>> blocks_;
    std::size_t size_ = 0;
    /// Kept, so that a sample needs no memory of its own on its way.
    std::vector<Word> packed_;
};

} // namespace tarnly
