#include "TarnlyApp/Settings.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <stdexcept>
#include <vector>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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

/// As a version after this one might have them.
struct LaterSettings {
    std::optional<std::string> password;
    bool startAtLogin = false;
    bool advertise = false;

    static constexpr auto fields() {
        return std::tuple(field("password", &LaterSettings::password),
                          field("startAtLogin", &LaterSettings::startAtLogin),
                          field("advertise", &LaterSettings::advertise, true));
    }
};

TEST(AppSettings, AFileOfTodayKeepsItsPasswordWhenASettingIsAdded) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "settings.json";
    AppSettings{"abc", true}.save(file);
    const auto later = decodeJson<LaterSettings>(parseJson(readPrivateFile(file).value()));
    EXPECT_EQ(later.password, "abc");
    EXPECT_TRUE(later.startAtLogin);
    EXPECT_TRUE(later.advertise);
}

TEST(AppSettings, StandInTheDataFolder) { EXPECT_EQ(AppSettings::fileIn("/data"), "/data/settings.json"); }

/// What the store asked of the desktop, and what the desktop says.
struct Desktop {
    LoginItem::Status status = LoginItem::Status::disabled;
    bool refuses = false;
    std::vector<std::string> calls;
};

class FakeLoginItem final : public LoginItem {
  public:
    explicit FakeLoginItem(Desktop& desktop) : desktop_(desktop) {}

    Status status() const override { return desktop_.status; }
    void enable() override { call("register", Status::enabled); }
    void disable() override { call("unregister", Status::disabled); }

  private:
    void call(const char* name, Status next) {
        desktop_.calls.emplace_back(name);
        if (desktop_.refuses) throw std::runtime_error("no desktop");
        desktop_.status = next;
    }

    Desktop& desktop_;
};

class SettingsStoreTest : public testing::Test {
  protected:
    SettingsStore& store() {
        if (!store_) store_.emplace(file_, std::make_unique<FakeLoginItem>(desktop_));
        return *store_;
    }
    void saved(const std::string& text) { folder_.write("settings.json", text); }
    std::string file() const {
        std::ifstream stream(file_);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    const test::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "settings.json";
    Desktop desktop_;
    std::optional<SettingsStore> store_;
};

TEST_F(SettingsStoreTest, StartsWithWhatWasSaved) {
    saved(R"({"password":"abc","startAtLogin":true})");
    EXPECT_EQ(store().password(), "abc");
    EXPECT_TRUE(store().startAtLogin());
    EXPECT_EQ(store().current(), (AppSettings{"abc", true}));
}

TEST_F(SettingsStoreTest, StartsWithTheDefaultsAndWritesNothing) {
    EXPECT_EQ(store().password(), "");
    EXPECT_FALSE(store().startAtLogin());
    EXPECT_FALSE(store().onPasswordChange);
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(SettingsStoreTest, AFileThatLacksTheStartAtLoginIsNone) {
    saved(R"({"password":"abc"})");
    EXPECT_EQ(store().password(), "");
    EXPECT_FALSE(store().startAtLogin());
    EXPECT_EQ(file(), R"({"password":"abc"})") << "the file is not rewritten at start";
}

TEST_F(SettingsStoreTest, EveryChangeIsSavedAtOnce) {
    store().setPassword("s");
    EXPECT_EQ(file(), R"({"password":"s","startAtLogin":false})");
    store().setPassword("se");
    EXPECT_EQ(file(), R"({"password":"se","startAtLogin":false})");
    store().setStartAtLogin(true);
    EXPECT_EQ(file(), R"({"password":"se","startAtLogin":true})");
}

TEST_F(SettingsStoreTest, AnEmptyPasswordIsSavedAsNone) {
    saved(R"({"password":"abc","startAtLogin":false})");
    store().setPassword("");
    EXPECT_EQ(file(), R"({"startAtLogin":false})");
    EXPECT_EQ(store().current().password, std::nullopt);
}

TEST_F(SettingsStoreTest, AnEmptyPasswordInTheFileIsNone) {
    saved(R"({"password":"","startAtLogin":true})");
    EXPECT_EQ(store().password(), "");
    EXPECT_EQ(store().current(), (AppSettings{std::nullopt, true}));
}

TEST_F(SettingsStoreTest, APasswordIsToldAfterItIsSaved) {
    std::vector<std::string> seen;
    store().onPasswordChange = [&] { seen.push_back(store().password() + " " + file()); };
    store().setPassword("x");
    store().setPassword("");
    EXPECT_THAT(seen,
                ElementsAre(R"(x {"password":"x","startAtLogin":false})", R"( {"startAtLogin":false})"));
    store().setStartAtLogin(true);
    EXPECT_EQ(seen.size(), 2U);
}

TEST_F(SettingsStoreTest, TheFileIsItsOwnersOnly) {
    file_ = folder_.path() / "new" / "folder" / "settings.json";
    store().setPassword("secret");
    EXPECT_EQ(std::filesystem::status(file_).permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(std::filesystem::status(file_.parent_path()).permissions(), std::filesystem::perms(0700));
    EXPECT_EQ(std::filesystem::status(folder_.path() / "new").permissions(), std::filesystem::perms(0700));
}

TEST_F(SettingsStoreTest, AFileThatOthersCouldReadIsClosedToThem) {
    saved(R"({"password":"abc","startAtLogin":false})");
    ::chmod(file_.c_str(), 0664);
    EXPECT_EQ(store().password(), "abc");
    EXPECT_EQ(std::filesystem::status(file_).permissions(), std::filesystem::perms(0600));
}

TEST_F(SettingsStoreTest, WhatCannotBeSavedStaysInMemory) {
    folder_.write("taken", "");
    file_ = folder_.path() / "taken" / "settings.json"; // a file where a folder would have to be
    bool isTold = false;
    store().onPasswordChange = [&] { isTold = true; };
    store().setPassword("kept");
    EXPECT_EQ(store().current().password, "kept");
    EXPECT_TRUE(isTold);
}

TEST_F(SettingsStoreTest, TheStartAtLoginIsRegisteredAndUnregistered) {
    EXPECT_THAT((store(), desktop_.calls), IsEmpty());
    store().setStartAtLogin(true);
    store().setStartAtLogin(false);
    EXPECT_THAT(desktop_.calls, ElementsAre("register", "unregister"));
}

TEST_F(SettingsStoreTest, WhatIsEnabledAlreadyIsNotRegisteredAgain) {
    desktop_.status = LoginItem::Status::enabled;
    saved(R"({"startAtLogin":true})");
    store().setStartAtLogin(true);
    EXPECT_THAT(desktop_.calls, IsEmpty());
}

TEST_F(SettingsStoreTest, WhatIsNotEnabledIsNotUnregistered) {
    for (const auto status : {LoginItem::Status::disabled, LoginItem::Status::broken}) {
        desktop_.status = status;
        store().setStartAtLogin(false);
    }
    EXPECT_THAT(desktop_.calls, IsEmpty());
}

TEST_F(SettingsStoreTest, AtStartTheLoginItemFollowsTheSetting) {
    desktop_.status = LoginItem::Status::enabled;
    saved(R"({"startAtLogin":false})");
    store();
    EXPECT_THAT(desktop_.calls, ElementsAre("unregister"));

    store_.reset();
    desktop_.calls.clear();
    saved(R"({"startAtLogin":true})");
    store();
    EXPECT_THAT(desktop_.calls, ElementsAre("register"));
}

TEST_F(SettingsStoreTest, ALoginItemThatFailsIsOneLineAndTheSettingStays) {
    desktop_.refuses = true;
    testing::internal::CaptureStdout();
    store().setStartAtLogin(true);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "[Tarnly] SMAppService register failed: no desktop\n");
    EXPECT_TRUE(store().startAtLogin());
    EXPECT_EQ(file(), R"({"startAtLogin":true})");

    desktop_.status = LoginItem::Status::enabled;
    testing::internal::CaptureStdout();
    store().setStartAtLogin(false);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[Tarnly] SMAppService unregister failed: no desktop\n");
    EXPECT_FALSE(store().startAtLogin());
}

TEST_F(SettingsStoreTest, AProgramMayHaveNoLoginItem) {
    store_.emplace(file_, nullptr);
    store().setStartAtLogin(true);
    EXPECT_EQ(file(), R"({"startAtLogin":true})");
}

} // namespace
} // namespace tarnly
