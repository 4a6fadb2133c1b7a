#include "TarnlyPlatform/Folders.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

namespace tarnly {
namespace {

/// Sets an environment variable for the life of a test.
class Variable {
  public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) before_ = before;
        setenv(name, value, 1);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }

  private:
    const char* name_;
    std::optional<std::string> before_;
};

TEST(Folders, DataFolderFollowsXdgDataHome) {
    const Variable data("XDG_DATA_HOME", "/somewhere/data");
    EXPECT_EQ(applicationSupportFolder(), "/somewhere/data/Tarnly");
}

TEST(Folders, RelativeXdgDataHomeIsIgnored) {
    const Variable data("XDG_DATA_HOME", "data");
    const Variable home("HOME", "/home/pilot");
    EXPECT_EQ(applicationSupportFolder(), "/home/pilot/.local/share/Tarnly");
}

TEST(Folders, EmptyXdgDataHomeIsIgnored) {
    const Variable data("XDG_DATA_HOME", "");
    const Variable home("HOME", "/home/pilot");
    EXPECT_EQ(applicationSupportFolder(), "/home/pilot/.local/share/Tarnly");
}

TEST(Folders, HostNameIsNeverEmpty) { EXPECT_NE(hostName(), ""); }

} // namespace
} // namespace tarnly
