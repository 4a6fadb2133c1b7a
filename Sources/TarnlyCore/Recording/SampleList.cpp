#include "TarnlyCore/Recording/SampleList.hpp"

#include <algorithm>

namespace tarnly {

PackedSample SampleList::append(const TrackSample& sample) {
    PackedSample::pack(sample, packed_);
    if (blocks_.empty() || blocks_.back()->capacity - blocks_.back()->size < packed_.size()) {
        auto block = std::make_shared<Block>();
        block->capacity = std::max(blockWords, packed_.size());
        block->words = std::make_unique_for_overwrite<Word[]>(block->capacity);
        blocks_.push_back(std::move(block));
    }
    const auto& block = blocks_.back();
    // No snapshot reaches as far as these words yet.
    Word* const begin = block->words.get() + block->size;
    std::ranges::copy(packed_, begin);
    block->size += packed_.size();
    block->latest = std::max(block->latest, sample.elapsedSeconds);
    ++size_;
    return PackedSample(std::shared_ptr<const Word>(block, begin));
}

SampleList::Snapshot SampleList::snapshot() const {
    Snapshot result;
    result.blocks_.assign(blocks_.begin(), blocks_.end());
    if (!blocks_.empty()) result.sizeOfLast_ = blocks_.back()->size;
    return result;
}

std::size_t SampleList::Snapshot::sizeOf(std::size_t block) const {
    return block + 1 == blocks_.size() ? sizeOfLast_ : blocks_[block]->size;
}

bool SampleList::Snapshot::isPassed(std::size_t block, double since) const {
    return block + 1 < blocks_.size() && blocks_[block]->latest <= since;
}

bool SampleList::Snapshot::next(Cursor& cursor, double since, TrackSample& sample) const {
    while (cursor.block < blocks_.size()) {
        if (cursor.word == sizeOf(cursor.block) || isPassed(cursor.block, since)) {
            cursor = {cursor.block + 1, 0};
            continue;
        }
        const Word* const words = blocks_[cursor.block]->words.get() + cursor.word;
        cursor.word += PackedSample::sizeOf(words);
        if (!(PackedSample::elapsedSecondsOf(words) > since)) continue;
        PackedSample::unpack(words, sample);
        return true;
    }
    return false;
}

} // namespace tarnly
