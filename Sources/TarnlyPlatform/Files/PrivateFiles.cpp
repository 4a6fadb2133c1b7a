#include "TarnlyPlatform/Files/PrivateFiles.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly {
namespace {

/// More than any settings take.
constexpr std::size_t largestFile = 1024 * 1024;

/// Whether nobody else has access to the file any more.
bool closeToOthers(const FileDescriptor& file) {
    struct stat status {};
    if (::fstat(file.number(), &status) != 0) return false;
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) == 0) return true;
    return ::fchmod(file.number(), status.st_mode & S_IRWXU) == 0;
}

} // namespace

void createPrivateFolders(const std::filesystem::path& folder) {
    std::filesystem::path reached;
    for (const auto& name : folder) {
        reached /= name;
        ::mkdir(reached.c_str(), S_IRWXU);
    }
}

std::optional<std::string> readPrivateFile(const std::filesystem::path& file) {
    const auto opened = openPlainFile(file, O_RDONLY);
    if (!opened.isOpen()) return std::nullopt;
    closeToOthers(opened);
    return opened.readUpTo(largestFile);
}

bool overwritePrivateFile(const std::filesystem::path& file, std::string_view text) {
    const auto opened = openPlainFile(file, O_WRONLY | O_CREAT);
    if (!opened.isOpen() || !closeToOthers(opened)) return false;
    // Cut off behind the text, not emptied before it: a disk that has become full takes nothing away.
    return opened.write(text) == text.size() &&
           ::ftruncate(opened.number(), static_cast<off_t>(text.size())) == 0;
}

} // namespace tarnly
