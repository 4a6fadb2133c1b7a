#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "TarnlyCore/Flight/TrackSample.hpp"

namespace tarnly {

/// A sample as it is kept: in words of eight bytes, one for each number that it has, and one that says which
/// it has. A typical one takes 19 words, a third of a `TrackSample` with its lists.
///
/// Shares the words with the list that they stand in, and keeps them alive. They never change: safe from any
/// thread. A plain value.
class PackedSample {
  public:
    using Word = std::uint64_t;

    /// `sample` in words.
    static void pack(const TrackSample& sample, std::vector<Word>& words);

    /// `words` is the first of a sample's.
    explicit PackedSample(std::shared_ptr<const Word> words) : words_(std::move(words)) {}

    /// How many words the sample whose first word is `words` takes, and its time.
    static std::size_t sizeOf(const Word* words) { return *words >> sizeShift; }
    static double elapsedSecondsOf(const Word* words);
    /// Reads the sample whose first word is `words` into `sample`, whose lists are reused.
    static void unpack(const Word* words, TrackSample& sample);

    TrackSample unpacked() const;

  private:
    static constexpr unsigned sizeShift = 32;

    std::shared_ptr<const Word> words_;
};

} // namespace tarnly
