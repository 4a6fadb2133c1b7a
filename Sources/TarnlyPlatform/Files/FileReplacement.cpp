#include "TarnlyPlatform/Files/FileReplacement.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include "TarnlyPlatform/Files/File.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"

namespace tarnly {
namespace {

[[noreturn]] void fail() { throw std::system_error(errno, std::generic_category()); }

/// A file beside the one that it is to replace, on the same file system; removed unless it took its place.
class Replacement {
  public:
    explicit Replacement(const std::filesystem::path& target)
        : path_((target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string()),
          file_(mkostemp(path_.data(), O_CLOEXEC)) {
        if (!file_.isOpen()) fail();
    }
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (!isInPlace_) unlink(path_.c_str());
    }

    void write(std::string_view content) {
        if (file_.write(content) != content.size() || fsync(file_.number()) != 0) fail();
    }

    void moveTo(const std::filesystem::path& target) {
        if (rename(path_.c_str(), target.c_str()) != 0) fail();
        isInPlace_ = true;
    }

  private:
    std::string path_;
    FileDescriptor file_;
    bool isInPlace_ = false;
};

} // namespace

void replaceFile(const std::filesystem::path& file, std::string_view content) {
    createPrivateFolders(file.parent_path());
    Replacement replacement(file);
    replacement.write(content);
    replacement.moveTo(file);
}

} // namespace tarnly
