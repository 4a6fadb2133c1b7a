#include "TarnlyPlatform/PrivateFiles.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "TarnlyPlatform/FileDescriptor.hpp"

namespace tarnly {
namespace {

constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;
constexpr mode_t everybodyElse = S_IRWXG | S_IRWXO;

/// Opens a plain file; a pipe in its place neither blocks nor is opened.
FileDescriptor openPlainFile(const std::filesystem::path& file, int flags) {
    FileDescriptor opened(::open(file.c_str(), flags | O_CLOEXEC | O_NONBLOCK, ownerOnly));
    struct stat status{};
    if (!opened.isOpen() || ::fstat(opened.number(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    if ((status.st_mode & everybodyElse) != 0) ::fchmod(opened.number(), status.st_mode & S_IRWXU);
    return opened;
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
    std::string content;
    std::array<char, 4096> piece{};
    for (;;) {
        const auto count = ::read(opened.number(), piece.data(), piece.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) return content;
        content.append(piece.data(), static_cast<std::size_t>(count));
    }
}

bool overwritePrivateFile(const std::filesystem::path& file, std::string_view text) {
    const auto opened = openPlainFile(file, O_WRONLY | O_CREAT);
    // Cut off behind the text, not emptied before it: a disk that has become full takes nothing away.
    return opened.isOpen() && opened.write(text) == text.size() &&
           ::ftruncate(opened.number(), static_cast<off_t>(text.size())) == 0;
}

} // namespace tarnly
