#include "TarnlyPlatform/Json/JsonParser.hpp"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "TarnlyPlatform/Json/JsonNumber.hpp"

namespace tarnly {
namespace {

using boost::json::error;
using boost::json::error_code;
using boost::json::string_view;

/// Builds the value from the parser's events.
class Builder {
  public:
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

    explicit Builder(NonFinite nonFinite) : nonFinite_(nonFinite) { stack_.reset(); }

    boost::json::value release() { return stack_.release(); }

    bool on_document_begin(error_code&) { return true; }
    bool on_document_end(error_code&) { return true; }
    bool on_object_begin(error_code&) { return true; }
    bool on_object_end(std::size_t size, error_code&) {
        stack_.push_object(size);
        return true;
    }
    bool on_array_begin(error_code&) { return true; }
    bool on_array_end(std::size_t size, error_code&) {
        stack_.push_array(size);
        return true;
    }
    bool on_key_part(string_view part, std::size_t, error_code&) {
        stack_.push_chars(part);
        return true;
    }
    bool on_key(string_view part, std::size_t, error_code&) {
        stack_.push_key(part);
        return true;
    }
    bool on_string_part(string_view part, std::size_t, error_code&) {
        stack_.push_chars(part);
        return true;
    }
    bool on_string(string_view part, std::size_t, error_code&) {
        stack_.push_string(part);
        return true;
    }
    bool on_number_part(string_view part, error_code&) {
        number_.append(part.data(), part.size());
        return true;
    }
    bool on_int64(std::int64_t value, string_view part, error_code& ec) {
        if (value == 0) return pushNumber(part, 0, ec); // it may be -0
        number_.clear();
        stack_.push_int64(value);
        return true;
    }
    bool on_uint64(std::uint64_t value, string_view part, error_code& ec) {
        return pushNumber(part, static_cast<double>(value), ec);
    }
    bool on_double(double approximate, string_view part, error_code& ec) {
        return pushNumber(part, approximate, ec);
    }
    bool on_bool(bool value, error_code&) {
        stack_.push_bool(value);
        return true;
    }
    bool on_null(error_code&) {
        stack_.push_null();
        return true;
    }
    bool on_comment_part(string_view, error_code&) { return true; }
    bool on_comment(string_view, error_code&) { return true; }

  private:
    /// From the text: the library's own conversion is off by a unit in the last place now and then.
    bool pushNumber(string_view lastPart, double approximate, error_code& ec) {
        number_.append(lastPart.data(), lastPart.size());
        const auto text = std::exchange(number_, {});
        if (const auto whole = wholeNumber(text)) {
            stack_.push_int64(*whole);
            return true;
        }
        const double value = nearestDouble(text, approximate);
        if (!std::isfinite(value) && nonFinite_ == NonFinite::rejected) {
            ec = error::exponent_overflow;
            return false;
        }
        stack_.push_double(value);
        return true;
    }

    NonFinite nonFinite_;
    boost::json::value_stack stack_;
    std::string number_;
};

} // namespace

boost::json::value parseJson(std::string_view text, NonFinite nonFinite) {
    boost::json::parse_options options;
    options.max_depth = 64;
    boost::json::basic_parser<Builder> parser(options, nonFinite);
    error_code ec;
    const auto parsed = parser.write_some(false, text.data(), text.size(), ec);
    if (!ec && parsed < text.size()) ec = error::extra_data;
    if (ec) throw JsonError(ec.message());
    return parser.handler().release();
}

} // namespace tarnly
