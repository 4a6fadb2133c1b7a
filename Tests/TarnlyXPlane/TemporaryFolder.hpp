#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace tarnly::test {

/// A folder of its own that goes with its owner.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        auto pattern = (std::filesystem::temp_directory_path() / "tarnly-xplane-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path_ = pattern;
    }

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }

    /// Creates an empty file and returns its path.
    std::string add(const std::string& name) const {
        const auto file = path_ / name;
        if (!std::ofstream(file)) throw std::runtime_error("cannot create " + file.string());
        return file.string();
    }

  private:
    std::filesystem::path path_;
};

} // namespace tarnly::test
