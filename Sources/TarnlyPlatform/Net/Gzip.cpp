#include "TarnlyPlatform/Net/Gzip.hpp"

#include <boost/beast/zlib/error.hpp>
#include <boost/beast/zlib/inflate_stream.hpp>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace tarnly {
namespace {

namespace zlib = boost::beast::zlib;

constexpr std::string_view magic("\x1f\x8b\x08\0", 4); // gzip, deflate, and no flags
constexpr std::size_t headSize = 10;
constexpr std::size_t tailSize = 8;
constexpr std::size_t longest = 16 * 1024 * 1024;

/// The length of the text, which are the last four bytes, the least of them first.
std::size_t lengthIn(std::string_view file) {
    std::size_t length = 0;
    for (std::size_t i = 0; i < 4; ++i)
        length = length << 8U | static_cast<std::uint8_t>(file[file.size() - 1 - i]);
    return length;
}

} // namespace

std::string gunzipped(std::string_view file) {
    if (file.size() < headSize + tailSize || !file.starts_with(magic)) throw std::runtime_error("no gzip");
    const auto length = lengthIn(file);
    if (length > longest) throw std::runtime_error("a gzip that is too long");
    const auto packed = file.substr(headSize);
    std::string text(length + 1, '\0'); // the stream finds its end where both sides have something left
    zlib::inflate_stream stream;
    zlib::z_params params;
    params.next_in = packed.data();
    params.avail_in = packed.size();
    params.next_out = text.data();
    params.avail_out = text.size();
    boost::system::error_code error;
    stream.write(params, zlib::Flush::finish, error);
    const bool isWhole = error == zlib::error::end_of_stream && params.avail_out == 1;
    if (!isWhole) throw std::runtime_error("a broken gzip");
    text.pop_back();
    return text;
}

} // namespace tarnly
