#include "TarnlyApp/AppSettings.hpp"

#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

AppSettings loaded(const std::string& content) {
    const test::TemporaryFolder folder;
    return AppSettings::load(folder.write("settings.json", content));
}

TEST(AppSettings, AreReadFromTheFile) {
    EXPECT_EQ(loaded(R"({"password":"abc","startAtLogin":true})"), (AppSettings{"abc", true}));
    EXPECT_EQ(loaded(R"({"startAtLogin":false,"unknown":[1]})"), (AppSettings{std::nullopt, false}));
    EXPECT_EQ(loaded(R"({"password":null,"startAtLogin":true})"), (AppSettings{std::nullopt, true}));
}

TEST(AppSettings, AFileThatIsNoneMeansTheDefaults) {
    for (const char* content : {"", "{", R"({"password":"abc"})", R"({"password":1,"startAtLogin":true})",
                                R"({"startAtLogin":"true"})", "[]", "\xFF\xFE"}) {
        EXPECT_EQ(loaded(content), AppSettings{}) << content;
    }
}

TEST(AppSettings, AMissingFileMeansTheDefaults) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(AppSettings::load(folder.path() / "settings.json"), AppSettings{});
    EXPECT_EQ(AppSettings::load(folder.path()), AppSettings{}) << "a folder in its place";
}

TEST(AppSettings, StandInTheDataFolder) { EXPECT_EQ(AppSettings::fileIn("/data"), "/data/settings.json"); }

} // namespace
} // namespace tarnly
