#include "TarnlyPlatform/Files/PrivateFiles.hpp"

#include <cerrno>
#include <system_error>

namespace tarnly {
namespace {

/// More than any settings take.
constexpr std::size_t largestFile = 1024 * 1024;

/// A file beside the one that it is to replace; removed unless it took its place.
class Replacement {
  public:
    explicit Replacement(const std::filesystem::path& target) : made_(NewFile::beside(target)) {}
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (!isInPlace_) removeFile(made_.path);
    }

    void write(std::string_view content, Lasting lasting) {
        const bool isWritten = made_.file.write(content) == content.size();
        if (!isWritten || (lasting == Lasting::yes && !made_.file.flush()))
            throw std::system_error(errno, std::generic_category());
    }

    void moveTo(const std::filesystem::path& target) {
        made_.file = {}; // some systems move no open file
        std::filesystem::rename(made_.path, target);
        isInPlace_ = true;
    }

  private:
    NewFile made_;
    bool isInPlace_ = false;
};

} // namespace

void createPrivateFolders(const std::filesystem::path& folder) {
    std::filesystem::path reached;
    for (const auto& name : folder) {
        reached /= name;
        createPrivateFolder(reached);
    }
}

std::optional<std::string> readPrivateFile(const std::filesystem::path& file) {
    const auto opened = File::open(file, File::Mode::read);
    if (!opened.isOpen()) return std::nullopt;
    opened.closeToOthers();
    return opened.readUpTo(largestFile);
}

void replaceFile(const std::filesystem::path& file, std::string_view content, Lasting lasting) {
    createPrivateFolders(file.parent_path());
    Replacement replacement(file);
    replacement.write(content, lasting);
    replacement.moveTo(file);
    if (lasting == Lasting::yes) flushFolder(file.parent_path());
}

} // namespace tarnly
