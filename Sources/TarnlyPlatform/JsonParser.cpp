#include "TarnlyPlatform/JsonParser.hpp"

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <system_error>

namespace tarnly {
namespace {

using boost::json::error;
using boost::json::error_code;
using boost::json::string_view;

/// Boost.JSON's own number conversion is off by a unit in the last place now and then; the standard library's
/// is exact. `approximate` tells a number too small for a double from one too large.
double exactDouble(string_view text, double approximate) {
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    const bool isTiny = std::abs(approximate) < 1;
    return isTiny ? approximate : std::copysign(std::numeric_limits<double>::infinity(), approximate);
}

/// Builds the value from the parser's events. Takes each number's whole text: the text is parsed in one
/// piece, so a number never comes in parts.
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
    bool on_int64(std::int64_t value, string_view part, error_code&) {
        const auto text = numberText(part);
        if (value == 0 && text.front() == '-') {
            stack_.push_double(-0.0);
        } else {
            stack_.push_int64(value);
        }
        number_.clear();
        return true;
    }
    bool on_uint64(std::uint64_t value, string_view, error_code&) {
        stack_.push_uint64(value);
        number_.clear();
        return true;
    }
    bool on_double(double approximate, string_view part, error_code& ec) {
        const double exact = exactDouble(numberText(part), approximate);
        number_.clear();
        if (!std::isfinite(exact) && nonFinite_ == NonFinite::rejected) {
            ec = error::exponent_overflow;
            return false;
        }
        stack_.push_double(exact);
        return true;
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
    string_view numberText(string_view lastPart) {
        if (number_.empty()) return lastPart;
        number_.append(lastPart.data(), lastPart.size());
        return number_;
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
