#include "TarnlySimulator/Api/Orders.hpp"

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "TarnlySimulator/Api/ApiError.hpp"
#include "TarnlySimulator/World/Parts.hpp"

namespace tarnly::simulator {
namespace {

using std::chrono::milliseconds;

constexpr std::int64_t longestMs = 600'000;
constexpr milliseconds aircraftChange{3000};

/// The words of an order, taken one by one; what is left over makes it none.
class Words {
  public:
    explicit Words(std::string_view line) : line_(line) {
        for (const auto word : parts(line, ' ')) {
            if (!word.empty()) words_.push_back(word);
        }
    }

    [[noreturn]] void refuse() const {
        throw ApiError(400, "invalid_order", "That is no order: " + std::string(line_));
    }

    bool take(std::string_view word) {
        if (next_ == words_.size() || words_[next_] != word) return false;
        ++next_;
        return true;
    }

    std::string_view word() {
        if (next_ == words_.size()) refuse();
        return words_[next_++];
    }

    std::optional<milliseconds> time() {
        if (next_ == words_.size()) return std::nullopt;
        const auto text = word();
        std::int64_t value = 0;
        const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        const bool isNumber = error == std::errc() && stop == text.data() + text.size();
        if (!isNumber || value < 0 || value > longestMs) refuse();
        return milliseconds(value);
    }

    /// All that is left, as it stands in the line.
    std::string_view rest() {
        if (next_ == words_.size()) return {};
        const auto begin = static_cast<std::size_t>(words_[next_].data() - line_.data());
        next_ = words_.size();
        return line_.substr(begin);
    }

    void end() const {
        if (next_ != words_.size()) refuse();
    }

  private:
    std::string_view line_;
    std::vector<std::string_view> words_;
    std::size_t next_ = 0;
};

Restart restartFrom(Words& words) {
    Restart out;
    out.isSwapped = words.take("swapped");
    out.isFresh = words.take("fresh");
    if (words.take("away")) {
        const auto away = words.time();
        if (!away) words.refuse();
        out.away = *away;
    }
    words.end();
    return out;
}

void setQuirk(Quirks& quirks, const QuirkSwitch& quirk, Words& words) {
    const bool on = words.take("on");
    if (!on && !words.take("off")) words.refuse();
    const auto time = on && quirk.time != nullptr ? words.time() : std::nullopt;
    words.end();
    if (time) quirks.*quirk.time = *time;
    quirks.*quirk.on = on;
}

} // namespace

void Orders::obey(std::string_view line) {
    thread_.check();
    Words words(line);
    const auto name = words.word();
    if (const auto* quirk = quirkSwitchNamed(name)) return setQuirk(world_.quirks, *quirk, words);
    if (name == "load") {
        const auto situation = words.rest();
        if (situation.empty()) return world_.beginAnew();
        if (!world_.loadSituation(situation)) words.refuse();
        return;
    }
    if (name == "restart") return actions_.restart(restartFrom(words));
    if (name == "aircraft") {
        const auto time = words.time();
        words.end();
        return world_.changeAircraft(time.value_or(aircraftChange));
    }
    if (name != "drop") words.refuse();
    words.end();
    actions_.drop();
}

} // namespace tarnly::simulator
