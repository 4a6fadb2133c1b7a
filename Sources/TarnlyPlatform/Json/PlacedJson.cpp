#include "TarnlyPlatform/Json/PlacedJson.hpp"

#include <algorithm>
#include <boost/json/basic_parser_impl.hpp>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "TarnlyPlatform/Json/JsonLimits.hpp"
#include "TarnlyPlatform/Json/JsonNumber.hpp"

namespace tarnly {
namespace {

using boost::json::error;
using boost::json::error_code;
using boost::json::string_view;

/// Goes from one key or value to the next in a text that has been found to be JSON as far as that: the parser
/// tells what there is, and not where.
class Tokens {
  public:
    explicit Tokens(std::string_view text) : text_(text) {}

    /// Where the next one begins, which is not passed when it is a container.
    std::size_t next() {
        at_ = std::min(text_.find_first_not_of(" \t\r\n,:]}", at_), text_.size());
        const auto begin = at_;
        if (begin < text_.size()) at_ = end();
        return begin;
    }

    std::string_view since(std::size_t begin) const { return text_.substr(begin, at_ - begin); }

  private:
    std::size_t end() const {
        if (text_[at_] == '{' || text_[at_] == '[') return at_ + 1;
        if (text_[at_] != '"') return std::min(text_.find_first_of(" \t\r\n,:]}", at_), text_.size());
        auto last = at_ + 1;
        while (last < text_.size() && text_[last] != '"')
            last += text_[last] == '\\' ? 2 : 1;
        return std::min(last + 1, text_.size());
    }

    const std::string_view text_;
    std::size_t at_ = 0;
};

/// Builds the value from the parser's events.
class PlacedBuilder {
  public:
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

    explicit PlacedBuilder(std::string_view text) : tokens_(text) {}

    PlacedJson release() { return std::move(root_); }
    /// Of the number that was refused.
    std::size_t lastToken() const { return last_; }

    bool on_document_begin(error_code&) { return true; }
    bool on_document_end(error_code&) { return true; }
    bool on_object_begin(error_code&) { return open(boost::json::object()); }
    bool on_object_end(std::size_t, error_code&) { return close(); }
    bool on_array_begin(error_code&) { return open(boost::json::array()); }
    bool on_array_end(std::size_t, error_code&) { return close(); }
    bool on_key_part(string_view part, std::size_t, error_code&) { return addText(part); }
    bool on_key(string_view part, std::size_t, error_code&) {
        addText(part);
        open_.back()->keys.push_back({std::exchange(text_, {}), next()});
        return true;
    }
    bool on_string_part(string_view part, std::size_t, error_code&) { return addText(part); }
    bool on_string(string_view part, std::size_t, error_code&) {
        addText(part);
        return add(boost::json::string(std::exchange(text_, {})));
    }
    bool on_number_part(string_view, error_code&) { return true; }
    bool on_int64(std::int64_t value, string_view, error_code& ec) {
        return addNumber(static_cast<double>(value), ec);
    }
    bool on_uint64(std::uint64_t value, string_view, error_code& ec) {
        return addNumber(static_cast<double>(value), ec);
    }
    bool on_double(double approximate, string_view, error_code& ec) { return addNumber(approximate, ec); }
    bool on_bool(bool value, error_code&) { return add(value); }
    bool on_null(error_code&) { return add(nullptr); }
    bool on_comment_part(string_view, error_code&) { return true; }
    bool on_comment(string_view, error_code&) { return true; }

  private:
    std::size_t next() { return last_ = tokens_.next(); }

    bool addText(string_view part) {
        text_.append(part.data(), part.size());
        return true;
    }

    bool add(boost::json::value value) {
        place(std::move(value), next());
        return true;
    }

    bool addNumber(double approximate, error_code& ec) {
        const auto begin = next();
        const auto text = tokens_.since(begin);
        if (const auto whole = wholeNumber(text)) {
            place(*whole, begin);
            return true;
        }
        const auto value = nearestDouble(text, approximate);
        if (!std::isfinite(value)) ec = error::exponent_overflow;
        place(value, begin);
        return !ec;
    }

    bool open(boost::json::value value) {
        open_.push_back(&place(std::move(value), next()));
        return true;
    }

    bool close() {
        open_.pop_back();
        return true;
    }

    PlacedJson& place(boost::json::value value, std::size_t at) {
        auto& placed = open_.empty() ? root_ : open_.back()->elements.emplace_back();
        placed.at = at;
        placed.value = std::move(value);
        return placed;
    }

    Tokens tokens_;
    std::size_t last_ = 0;
    PlacedJson root_;
    /// From the outermost on. Elements are added to the innermost only, so none of these moves.
    std::vector<PlacedJson*> open_;
    std::string text_;
};

/// Where the text stops being JSON, of which the parser has taken `parsed` bytes. One that is cut off stops
/// at its last character, not at the blank lines behind it.
std::size_t placeOf(const error_code& ec, std::string_view text, std::size_t parsed,
                    const PlacedBuilder& builder) {
    if (ec == error::exponent_overflow) return builder.lastToken();
    if (ec != error::incomplete) return parsed;
    const auto last = text.find_last_not_of(" \t\r\n");
    return last == std::string_view::npos ? 0 : last + 1;
}

} // namespace

const PlacedJson* PlacedJson::find(std::string_view key) const {
    for (auto index = keys.size(); index > 0; --index) {
        if (keys[index - 1].text == key) return &elements[index - 1];
    }
    return nullptr;
}

PlacedJson parsePlacedJson(std::string_view text) {
    boost::json::parse_options options;
    options.max_depth = deepestJson;
    boost::json::basic_parser<PlacedBuilder> parser(options, text);
    error_code ec;
    const auto parsed = parser.write_some(false, text.data(), text.size(), ec);
    if (!ec && parsed < text.size()) ec = error::extra_data;
    if (ec) throw JsonTextError(ec.message(), placeOf(ec, text, parsed, parser.handler()));
    return parser.handler().release();
}

} // namespace tarnly
