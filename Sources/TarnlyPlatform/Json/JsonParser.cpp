#include "TarnlyPlatform/Json/JsonParser.hpp"

#include <algorithm>
#include <array>
#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "TarnlyPlatform/Json/JsonLimits.hpp"
#include "TarnlyPlatform/Json/JsonNumber.hpp"

namespace tarnly {
namespace {

using boost::json::error;
using boost::json::error_code;
using boost::json::string_view;

constexpr JsonShape everything;

/// Builds the value that is wanted from the parser's events.
class WantedBuilder {
  public:
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

    WantedBuilder(NonFinite nonFinite, const JsonShape& wanted, JsonElements* elements,
                  boost::json::storage_ptr storage)
        : nonFinite_(nonFinite), next_(&wanted), elements_(elements), outer_({}, room_.data(), room_.size()) {
        outer_.reset(std::move(storage));
    }

    boost::json::value release() { return outer_.release(); }

    bool on_document_begin(error_code&) { return true; }
    bool on_document_end(error_code&) { return true; }
    bool on_object_begin(error_code&) {
        begin(JsonShape::Kind::object);
        return true;
    }
    bool on_object_end(std::size_t, error_code&) {
        end();
        return true;
    }
    bool on_array_begin(error_code&) {
        begin(JsonShape::Kind::list);
        return true;
    }
    bool on_array_end(std::size_t, error_code&) {
        end();
        return true;
    }
    bool on_key_part(string_view part, std::size_t, error_code&) {
        if (skipped_ > 0) return true;
        if (top().isWhole()) {
            stack_->push_chars(part);
        } else {
            addToKey(part);
        }
        return true;
    }
    bool on_key(string_view part, std::size_t, error_code&) {
        if (skipped_ > 0) return true;
        if (top().isWhole()) {
            stack_->push_key(part);
            return true;
        }
        if (key_.empty()) {
            choose(part);
        } else {
            addToKey(part);
            choose(key_);
            key_.clear();
        }
        return true;
    }
    bool on_string_part(string_view part, std::size_t, error_code&) {
        if (next_ != nullptr) stack_->push_chars(part);
        return true;
    }
    bool on_string(string_view part, std::size_t, error_code&) {
        if (next_ == nullptr) return true;
        stack_->push_string(part);
        return pushed();
    }
    bool on_number_part(string_view part, error_code&) {
        number_.append(part.data(), part.size());
        return true;
    }
    bool on_int64(std::int64_t value, string_view part, error_code& ec) {
        if (value == 0) return pushNumber(part, 0, ec); // it may be -0
        number_.clear();
        if (next_ == nullptr) return true;
        stack_->push_int64(value);
        return pushed();
    }
    bool on_uint64(std::uint64_t value, string_view part, error_code& ec) {
        return pushNumber(part, static_cast<double>(value), ec);
    }
    bool on_double(double approximate, string_view part, error_code& ec) {
        return pushNumber(part, approximate, ec);
    }
    bool on_bool(bool value, error_code&) {
        if (next_ == nullptr) return true;
        stack_->push_bool(value);
        return pushed();
    }
    bool on_null(error_code&) {
        if (next_ == nullptr) return true;
        stack_->push_null();
        return pushed();
    }
    bool on_comment_part(string_view, error_code&) { return true; }
    bool on_comment(string_view, error_code&) { return true; }

  private:
    /// A container that is open, and wanted.
    struct Open {
        const JsonShape* shape;
        JsonShape::Kind kind; // its own: object or list
        std::size_t size;     // of what is wanted in it
        bool isHandedOut;     // element by element

        bool isWhole() const { return shape->kind == JsonShape::Kind::whole; }
    };

    Open& top() { return open_[depth_ - 1]; }

    void begin(JsonShape::Kind kind) {
        if (next_ == nullptr) {
            ++skipped_;
            return;
        }
        if (next_->kind != JsonShape::Kind::whole && next_->kind != kind) {
            pushContainer(kind, 0);
            pushed();
            next_ = nullptr;
            ++skipped_;
            return;
        }
        const bool isOuterList = next_->kind == JsonShape::Kind::list && stack_ == &outer_;
        const bool isHandedOut = isOuterList && elements_ != nullptr;
        open_[depth_++] = {next_, kind, 0, isHandedOut};
        if (isHandedOut) {
            elements_->restart();
            stack_ = &inner_;
            stack_->reset();
        }
        awaitNext();
    }

    void end() {
        if (skipped_ > 0) {
            if (--skipped_ == 0) awaitNext();
            return;
        }
        const auto closed = top();
        --depth_;
        if (closed.isHandedOut) {
            stack_ = &outer_;
        }
        pushContainer(closed.kind, closed.isHandedOut ? 0 : closed.size);
        pushed();
    }

    /// A value that is wanted is complete.
    bool pushed() {
        if (depth_ > 0 && top().isHandedOut) {
            elements_->add(stack_->release());
            stack_->reset();
        } else if (depth_ > 0) {
            ++top().size;
        }
        awaitNext();
        return true;
    }

    /// What is wanted of the next value where that depends on no key.
    void awaitNext() {
        if (depth_ == 0) {
            next_ = nullptr;
        } else if (top().isWhole()) {
            next_ = top().shape;
        } else {
            next_ = top().kind == JsonShape::Kind::list ? top().shape->element : nullptr;
        }
    }

    /// What is wanted of the value of `key`.
    void choose(std::string_view key) {
        const auto& members = top().shape->members;
        const auto found = std::ranges::find(members, key, &JsonShape::Member::key);
        next_ = found == members.end() ? nullptr : found->shape;
        if (next_ != nullptr) stack_->push_key({key.data(), key.size()});
    }

    /// A key that comes in parts: no more than tells it from those that are wanted.
    void addToKey(string_view part) {
        constexpr std::size_t longest = 256;
        key_.append(part.data(), std::min(part.size(), longest - std::min(key_.size(), longest)));
    }

    void pushContainer(JsonShape::Kind kind, std::size_t size) {
        if (kind == JsonShape::Kind::object) {
            stack_->push_object(size);
        } else {
            stack_->push_array(size);
        }
    }

    /// From the text: the library's own conversion is off by a unit in the last place now and then.
    bool pushNumber(string_view lastPart, double approximate, error_code& ec) {
        const bool isOrdinary = std::abs(approximate) < 1e300; // so nothing can be wrong with it
        number_.append(lastPart.data(), lastPart.size());
        const auto text = std::exchange(number_, {});
        if (next_ == nullptr && isOrdinary) return true;
        if (const auto whole = next_ == nullptr ? std::nullopt : wholeNumber(text)) {
            stack_->push_int64(*whole);
            return pushed();
        }
        const double value = nearestDouble(text, approximate);
        if (!std::isfinite(value) && nonFinite_ == NonFinite::rejected) {
            ec = error::exponent_overflow;
            return false;
        }
        if (next_ == nullptr) return true;
        stack_->push_double(value);
        return pushed();
    }

    const NonFinite nonFinite_;
    /// What is wanted of the next value; null for nothing.
    const JsonShape* next_;
    JsonElements* elements_;
    std::array<Open, deepestJson> open_;
    std::size_t depth_ = 0;
    /// How many containers are open that are not wanted.
    std::size_t skipped_ = 0;
    alignas(boost::json::value) std::array<unsigned char, 512> room_; // for what is on its way in
    boost::json::value_stack outer_;
    /// Builds the elements that are handed out.
    boost::json::value_stack inner_;
    boost::json::value_stack* stack_ = &outer_;
    std::string key_;
    std::string number_;
};

boost::json::value parse(std::string_view text, NonFinite nonFinite, const JsonShape& wanted,
                         JsonElements* elements, boost::json::storage_ptr storage) {
    boost::json::parse_options options;
    options.max_depth = deepestJson;
    boost::json::basic_parser<WantedBuilder> parser(options, nonFinite, wanted, elements, std::move(storage));
    error_code ec;
    const auto parsed = parser.write_some(false, text.data(), text.size(), ec);
    if (!ec && parsed < text.size()) ec = error::extra_data;
    if (ec) throw JsonError(ec.message());
    return parser.handler().release();
}

} // namespace

boost::json::value parseJson(std::string_view text, const JsonShape& wanted, JsonElements* elements,
                             boost::json::storage_ptr storage, NonFinite nonFinite) {
    return parse(text, nonFinite, wanted, elements, std::move(storage));
}

boost::json::value parseJson(std::string_view text, NonFinite nonFinite) {
    return parse(text, nonFinite, everything, nullptr, {});
}

} // namespace tarnly
