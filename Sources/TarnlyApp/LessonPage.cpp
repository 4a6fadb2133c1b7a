#include "TarnlyApp/LessonPage.hpp"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

namespace tarnly {
namespace {

constexpr std::uintmax_t longestList = 256 * 1024;

/// A list without failures, which says why.
std::string listWith(const std::string& problem) {
    return boost::json::serialize(
        boost::json::object{{"failures", boost::json::array()}, {"problem", problem}});
}

/// What browsers are given in place of the companion's own list: the file, or what is wrong with it.
std::optional<std::string> listIn(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error) && !error) return std::nullopt;
    const auto size = std::filesystem::file_size(file, error);
    if (error) return listWith("failures.json in the data folder cannot be read: " + error.message());
    if (size > longestList) {
        return listWith(
            "failures.json in the data folder is larger than 256 KiB. Make it shorter, "
            "and start the companion again.");
    }
    std::string text(static_cast<std::size_t>(size), '\0');
    std::ifstream stream(file, std::ios::binary);
    if (!stream.read(text.data(), static_cast<std::streamsize>(text.size())))
        return listWith("failures.json in the data folder cannot be read. Let the companion's user read it.");
    return text;
}

} // namespace

WebPages lessonPages(const std::filesystem::path& dataFolder) {
    auto pages = builtLessonPages();
    if (auto list = listIn(dataFolder / "failures.json")) {
        pages.add("/failures.json", {"application/json", std::move(*list)});
    }
    return pages;
}

} // namespace tarnly
