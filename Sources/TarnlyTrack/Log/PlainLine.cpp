#include "TarnlyTrack/Log/PlainLine.hpp"

#include <charconv>
#include <system_error>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::track {
namespace {

/// What is left of a line.
class Rest {
  public:
    explicit Rest(std::string_view line) : next_(line.data()), end_(line.data() + line.size()) {}

    bool isEmpty() const { return next_ == end_; }

    bool take(char c) {
        if (next_ == end_ || *next_ != c) return false;
        ++next_;
        return true;
    }

    bool take(std::string_view text) {
        if (!std::string_view(next_, static_cast<std::size_t>(end_ - next_)).starts_with(text)) return false;
        next_ += text.size();
        return true;
    }

    /// A key with its colon. False for one that has an escape in it, or no end.
    bool takeKey(std::string_view& key) {
        if (!take('"')) return false;
        const char* const begin = next_;
        while (next_ != end_ && *next_ != '"' && *next_ != '\\')
            ++next_;
        key = {begin, static_cast<std::size_t>(next_ - begin)};
        return take("\":");
    }

    /// False for one that JSON would not take, and for one beyond the range of a double.
    bool takeNumber(double& value) {
        const char* const begin = next_;
        take('-');
        if (!take('0') && !takeDigits()) return false;
        if (take('.') && !takeDigits()) return false;
        if (take('e') || take('E')) {
            if (!take('+')) take('-');
            if (!takeDigits()) return false;
        }
        const auto [rest, error] = std::from_chars(begin, next_, value);
        return error == std::errc() && rest == next_;
    }

    bool takeList(std::vector<double>& values) {
        values.clear();
        if (!take('[')) return false;
        if (take(']')) return true;
        do {
            double value = 0;
            if (!takeNumber(value)) return false;
            values.push_back(value);
        } while (take(','));
        return take(']');
    }

    bool takeBoolean(std::optional<bool>& value) {
        if (take("true")) {
            value = true;
            return true;
        }
        value = false;
        return take("false");
    }

  private:
    bool takeDigits() {
        const char* const begin = next_;
        while (next_ != end_ && isDigit(*next_))
            ++next_;
        return next_ != begin;
    }

    const char* next_;
    const char* end_;
};

/// Null for a key that is not known. The keys stand in the order of the table, so that the search goes on
/// from `from`.
const FieldPlace* placeOf(std::string_view key, std::size_t& from) {
    for (std::size_t tried = 0; tried < fieldPlaces.size(); ++tried) {
        const auto& place = fieldPlaces[from];
        from = from + 1 == fieldPlaces.size() ? 0 : from + 1;
        if (place.key == key) return &place;
    }
    return nullptr;
}

bool takeValue(Rest& rest, const FieldPlace& place, LogSample& sample) {
    switch (place.kind) {
        case FieldPlace::Kind::number:
            return rest.takeNumber(sample.numbers[place.index]);
        case FieldPlace::Kind::boolean:
            return rest.takeBoolean(sample.switches[place.index]);
        case FieldPlace::Kind::list:
            sample.hasLever[place.index] = true;
            return rest.takeList(sample.levers[place.index]);
    }
    return false;
}

} // namespace

bool readPlainSample(std::string_view line, LogSample& sample) {
    sample.clear();
    Rest rest(line);
    if (!rest.take(R"({"kind":"sample","sample":{)")) return false;
    std::size_t from = 0;
    do {
        std::string_view key;
        if (!rest.takeKey(key)) return false;
        const auto* const place = placeOf(key, from);
        if (place == nullptr || !takeValue(rest, *place, sample)) return false;
    } while (rest.take(','));
    return rest.take("}}") && rest.isEmpty();
}

} // namespace tarnly::track
