#include "TarnlyPlatform/Files/Folders.hpp"

#include <stdexcept>
#include <string_view>
#include <system_error>

namespace tarnly {

std::filesystem::path programPath() {
    std::error_code error;
    auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) throw std::runtime_error("the program's path is unknown: " + error.message());
    constexpr std::string_view mark = " (deleted)";
    const auto& text = path.native();
    // The system marks the name of a file that was removed or replaced; a file may also be called that.
    if (!text.ends_with(mark) || std::filesystem::exists(path, error)) return path;
    return text.substr(0, text.size() - mark.size());
}

} // namespace tarnly
