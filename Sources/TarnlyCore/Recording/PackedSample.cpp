#include "TarnlyCore/Recording/PackedSample.hpp"

#include <bit>
#include <optional>
#include <tuple>

namespace tarnly {
namespace {

using Word = PackedSample::Word;

// A word's lower half has two bits for each field of the table, in its order: whether the sample has a value,
// and the value itself where that is a bool. The upper half is the number of all words. The numbers follow in
// the table's order, before each list its length.

constexpr auto table = fieldsOf<TrackSample>();
static_assert(std::tuple_size_v<decltype(table)> * 2 <= 32, "the fields have no room in half a word");
static_assert(std::get<0>(table).member == &TrackSample::elapsedSeconds, "the time is the first number");

/// Puts values behind each other. An overload for each type of the table.
class Packer {
  public:
    explicit Packer(std::vector<Word>& words) : words_(words) {}

    template <typename T>
    void put(const T& value) {
        bits_ |= bit_;
        putPresent(value);
        bit_ <<= 2;
    }
    template <typename T>
    void put(const std::optional<T>& value) {
        if (value) return put(*value);
        bit_ <<= 2;
    }

    /// Of all fields.
    Word bits() const { return bits_; }

  private:
    void putPresent(bool value) {
        if (value) bits_ |= bit_ << 1;
    }
    void putPresent(double value) { words_.push_back(std::bit_cast<Word>(value)); }
    void putPresent(const std::vector<double>& values) {
        words_.push_back(values.size());
        for (const double value : values)
            putPresent(value);
    }

    std::vector<Word>& words_;
    Word bits_ = 0;
    Word bit_ = 1;
};

class Unpacker {
  public:
    explicit Unpacker(const Word* words) : bits_(*words), next_(words + 1) {}

    template <typename T>
    void take(T& value) {
        takePresent(value);
        bits_ >>= 2;
    }
    template <typename T>
    void take(std::optional<T>& value) {
        if ((bits_ & 1) == 0) {
            value.reset();
            bits_ >>= 2;
            return;
        }
        if (!value) value.emplace();
        take(*value);
    }

  private:
    void takePresent(bool& value) const { value = (bits_ & 2) != 0; }
    void takePresent(double& value) { value = std::bit_cast<double>(*next_++); }
    void takePresent(std::vector<double>& values) {
        values.resize(static_cast<std::size_t>(*next_++));
        for (double& value : values)
            takePresent(value);
    }

    Word bits_;
    const Word* next_;
};

} // namespace

void PackedSample::pack(const TrackSample& sample, std::vector<Word>& words) {
    words.assign(1, 0);
    Packer packer(words);
    std::apply([&](const auto&... fields) { (packer.put(sample.*fields.member), ...); }, table);
    words.front() = packer.bits() | words.size() << sizeShift;
}

double PackedSample::elapsedSecondsOf(const Word* words) { return std::bit_cast<double>(words[1]); }

void PackedSample::unpack(const Word* words, TrackSample& sample) {
    Unpacker unpacker(words);
    std::apply([&](const auto&... fields) { (unpacker.take(sample.*fields.member), ...); }, table);
}

TrackSample PackedSample::unpacked() const {
    TrackSample sample;
    unpack(words_.get(), sample);
    return sample;
}

} // namespace tarnly
