#include "TarnlyPlatform/Files/FolderLock.hpp"

#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <string>

#include "TarnlyPlatform/Files/PrivateFiles.hpp"

namespace tarnly {
namespace {

/// With its line feed; more than any process id takes.
constexpr std::size_t lineLength = 21;

std::string processLine() {
    auto line = std::to_string(::getpid());
    line.resize(lineLength - 1, ' '); // over a longer one
    return line + "\n";
}

std::optional<std::int64_t> holderIn(const std::filesystem::path& file) {
    const auto text = readPrivateFile(file).value_or("");
    std::int64_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc() || number <= 0) return std::nullopt;
    return number;
}

} // namespace

FolderLock::FolderLock(const std::filesystem::path& folder) {
    createPrivateFolders(folder);
    const auto file = folder / "companion.lock";
    file_ = File::open(file, File::Mode::create);
    if (!file_.isOpen() && errno == EEXIST) file_ = File::open(file, File::Mode::rewrite);
    const auto lock = file_.isOpen() ? file_.tryLock() : File::Lock::impossible;
    switch (lock) {
        case File::Lock::taken:
            outcome_ = Outcome::taken;
            file_.writeAt(0, processLine());
            break;
        case File::Lock::heldByAnother:
            outcome_ = Outcome::heldByAnother;
            holder_ = holderIn(file);
            break;
        case File::Lock::impossible:
            error_ = {errno, std::generic_category()};
            // A folder that could not be made is missing now, which tells nobody why.
            if (const auto why = whyUnwritable(folder)) error_ = why;
    }
}

} // namespace tarnly
