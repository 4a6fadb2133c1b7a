#include "TarnlyApp/LessonPage.hpp"

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

namespace tarnly {
namespace {

constexpr std::uintmax_t longestList = 256 * 1024;

std::optional<std::string> listIn(const std::filesystem::path& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    if (error || size > longestList) return std::nullopt;
    std::string text(static_cast<std::size_t>(size), '\0');
    std::ifstream stream(file, std::ios::binary);
    if (!stream.read(text.data(), static_cast<std::streamsize>(text.size()))) return std::nullopt;
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
