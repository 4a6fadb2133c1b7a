#include "TarnlyApp/Settings.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <boost/json/serialize.hpp>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Support/FullDisk.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

AppSettings loaded(const std::string& content) {
    const test::TemporaryFolder folder;
    const SettingsFile file(folder.write("settings.json", content));
    EXPECT_FALSE(file.isUnreadable()) << content;
    return file.initial();
}

TEST(AppSettings, AreReadFromTheFile) {
    EXPECT_EQ(loaded(R"({"password":"abc","startAtLogin":true})"), (AppSettings{"abc", true}));
    EXPECT_EQ(loaded(R"({"startAtLogin":false,"unknown":[1]})"), (AppSettings{std::nullopt, false}));
    EXPECT_EQ(loaded(R"({"password":null,"startAtLogin":true})"), (AppSettings{std::nullopt, true}));
    EXPECT_EQ(loaded("\xEF\xBB\xBF{\"startAtLogin\":true}\r\n"), (AppSettings{std::nullopt, true}));
}

AppSettings allSet() {
    AppSettings all{"abc", true};
    all.name = "Left rig";
    all.port = 41234;
    all.advertise = false;
    all.simulatorHost = "192.0.2.7";
    all.simulatorPort = 8090;
    all.situationsFolder = "/srv/situations";
    all.navigationDatabase = "/srv/nav.db";
    all.allowedOrigins = {"https://example.com", "http://192.0.2.8:8080"};
    return all;
}

const std::string allText =
    R"({"password":"abc","startAtLogin":true,"name":"Left rig","port":41234,"advertise":false,)"
    R"("sim_host":"192.0.2.7","sim_port":8090,"situations_folder":"/srv/situations",)"
    R"("navigation_database":"/srv/nav.db","allowed_origins":["https://example.com","http://192.0.2.8:8080"]})";

TEST(AppSettings, StandInTheFileByTheirNames) {
    EXPECT_EQ(loaded(allText), allSet());
    const test::TemporaryFolder folder;
    SettingsFile file(folder.path() / "settings.json");
    file.save(allSet());
    EXPECT_EQ(parseJson(test::contentOf(file.path())), parseJson(allText));
}

TEST(AppSettings, WhatIsAsUsualIsNotInTheFile) {
    const test::TemporaryFolder folder;
    SettingsFile file(folder.write("settings.json", allText));
    file.save({"abc", true});
    EXPECT_EQ(test::contentOf(file.path()), R"({"password":"abc","startAtLogin":true})");
}

struct Faulty {
    std::string key;
    std::string value;
};

const std::vector<Faulty> faulty{{"name", R"("")"},
                                 {"name", "7"},
                                 {"port", "65536"},
                                 {"port", "-1"},
                                 {"port", "80.5"},
                                 {"port", R"("28086")"},
                                 {"advertise", R"("no")"},
                                 {"advertise", "0"},
                                 {"sim_host", R"("[::1]")"},
                                 {"sim_host", "true"},
                                 {"sim_port", "0"},
                                 {"sim_port", "1e300"},
                                 {"situations_folder", R"("Output/situations")"},
                                 {"situations_folder", "[]"},
                                 {"navigation_database", R"("")"},
                                 {"navigation_database", "{}"},
                                 {"allowed_origins", R"("https://example.com")"},
                                 {"allowed_origins", R"(["https://example.com",1])"},
                                 {"allowed_origins", R"(["https://example.com","example.com"])"}};

/// The file with one setting that cannot be.
std::string withFault(const Faulty& fault) {
    auto json = parseJson(allText);
    json.as_object()[fault.key] = parseJson(fault.value);
    return boost::json::serialize(json);
}

TEST(SettingsFile, ASettingThatCannotBeCostsNoOther) {
    for (const auto& fault : faulty) {
        const test::TemporaryFolder folder;
        const auto text = withFault(fault);
        const SettingsFile file(folder.write("settings.json", text));
        EXPECT_FALSE(file.isUnreadable()) << text;
        ASSERT_EQ(file.faults().size(), 1U) << text;
        EXPECT_EQ(file.faults()[0].key, fault.key);
        EXPECT_THAT(file.faults()[0].wanted,
                    testing::AnyOf(HasSubstr(" wanted"), HasSubstr(" cannot be empty")));
        EXPECT_FALSE(file.initial().has(fault.key)) << text;
        auto json = parseJson(text);
        json.as_object().erase(fault.key);
        EXPECT_EQ(file.initial(), loaded(boost::json::serialize(json))) << text;
    }
    EXPECT_TRUE(allSet().has("port"));
}

TEST(SettingsFile, ASettingThatCannotBeStaysUntilItHasAValue) {
    for (const auto& fault : faulty) {
        const test::TemporaryFolder folder;
        const auto text = withFault(fault);
        SettingsFile file(folder.write("settings.json", text));
        file.save(file.initial());
        EXPECT_EQ(parseJson(test::contentOf(file.path())), parseJson(text));
        file.save(allSet());
        EXPECT_EQ(parseJson(test::contentOf(file.path())), parseJson(allText));
    }
}

constexpr std::array unreadable{"",
                                "{",
                                R"({"password":"abc"})",
                                R"({"password":1,"startAtLogin":true})",
                                R"({"startAtLogin":"true"})",
                                "[]",
                                "\xFF\xFE",
                                "\xEF\xBB\xBF\xEF\xBB\xBF{\"startAtLogin\":true}"};

AppSettings withoutLoss(AppSettings settings) {
    settings.passwordLostIn.reset();
    return settings;
}

TEST(AppSettings, AFileThatIsNoneMeansTheDefaultsAndIsKnown) {
    const test::TemporaryFolder folder;
    for (const char* content : unreadable) {
        const SettingsFile file(folder.write("settings.json", content));
        EXPECT_EQ(withoutLoss(file.initial()), AppSettings{}) << content;
        EXPECT_TRUE(file.isUnreadable()) << content;
    }
    const SettingsFile taken(folder.path());
    EXPECT_EQ(withoutLoss(taken.initial()), AppSettings{}) << "a folder in its place";
    EXPECT_TRUE(taken.isUnreadable());
}

TEST(AppSettings, AMissingFileMeansTheDefaults) {
    const test::TemporaryFolder folder;
    const SettingsFile missing(folder.path() / "settings.json");
    EXPECT_EQ(missing.initial(), AppSettings{});
    EXPECT_FALSE(missing.isUnreadable());
}

TEST(SettingsFile, WhatCouldNotBeUnderstoodIsKeptOnce) {
    for (const std::string content : unreadable) {
        const test::TemporaryFolder folder;
        SettingsFile file(folder.write("settings.json", content));
        EXPECT_FALSE(std::filesystem::exists(file.keptPath()));
        for (const char* password : {"a", "ab"})
            file.save({password, false});
        EXPECT_FALSE(file.isUnreadable());
        EXPECT_EQ(SettingsFile(file.path()).initial().password, "ab");
        EXPECT_EQ(file.keptPath(), folder.path() / "settings.json.unreadable");
        EXPECT_EQ(test::contentOf(file.keptPath()), content);
    }
}

TEST(SettingsFile, WhatWasKeptBeforeStays) {
    const test::TemporaryFolder folder;
    for (const char* content : {"first", "second", "third"})
        SettingsFile(folder.write("settings.json", content)).save({});
    EXPECT_EQ(test::contentOf(folder.path() / "settings.json.unreadable"), "first");
    EXPECT_EQ(test::contentOf(folder.path() / "settings.json.unreadable-2"), "second");
    EXPECT_EQ(test::contentOf(folder.path() / "settings.json.unreadable-3"), "third");
}

TEST(SettingsFile, AFolderInItsPlaceIsKeptToo) {
    const test::TemporaryFolder folder;
    const auto path = folder.path() / "settings.json";
    std::filesystem::create_directory(path);
    SettingsFile(path).save({"a", true});
    EXPECT_EQ(SettingsFile(path).initial(), (AppSettings{"a", true}));
    EXPECT_TRUE(std::filesystem::is_directory(SettingsFile(path).keptPath()));
}

TEST(SettingsFile, KeysOfOthersStay) {
    const test::TemporaryFolder folder;
    const auto path = folder.write(
        "settings.json",
        R"({"later":{"a":[1,-2.5,1e300,null,true,"\u00fc/"],"b":{}},"startAtLogin":false,"note":"x"})");
    SettingsFile(path).save({"abc", true});
    const auto expected = parseJson(R"({"password":"abc","startAtLogin":true,)"
                                    R"("later":{"a":[1,-2.5,1e300,null,true,"\u00fc/"],"b":{}},"note":"x"})");
    EXPECT_EQ(parseJson(test::contentOf(path)), expected);
    SettingsFile(path).save({});
    EXPECT_EQ(parseJson(test::contentOf(path)).as_object().at("note"), "x");
}

TEST(SettingsFile, ALinkIsWrittenThrough) {
    const test::TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "elsewhere");
    const auto path = folder.path() / "settings.json";
    for (const std::string content : {R"({"startAtLogin":true})", "garbled"}) {
        const auto target = folder.write("elsewhere/real.json", content);
        std::filesystem::remove(path);
        std::filesystem::create_symlink(target, path);
        SettingsFile file(path);
        file.save({"abc", false});
        EXPECT_TRUE(std::filesystem::is_symlink(path));
        EXPECT_EQ(SettingsFile(target).initial().password, "abc");
        EXPECT_EQ(std::filesystem::exists(file.keptPath()), content == "garbled");
    }
    EXPECT_EQ(test::contentOf(SettingsFile(path).keptPath()), "garbled");
}

/// Whoever reads meanwhile sees the old ones or the new ones.
TEST(SettingsFile, IsNeverSeenHalfWritten) {
    const test::TemporaryFolder folder;
    const auto path = folder.path() / "settings.json";
    SettingsFile file(path);
    file.save({"0", false});
    std::atomic<bool> isDone = false;
    std::thread writer([&] {
        for (std::size_t round = 0; round < 100; ++round)
            file.save({std::string(round % 2 == 0 ? 100'000 : 1, 'x'), false});
        isDone = true;
    });
    while (!isDone)
        EXPECT_FALSE(SettingsFile(path).isUnreadable());
    writer.join();
}

TEST(SettingsFile, WhatCannotBeSavedLeavesTheFileAsItWas) {
    const test::TemporaryFolder folder;
    SettingsFile file(folder.write("settings.json", "garbled"));
    const auto longText = std::string(1'000'000, 'x');
    {
        const test::FullDisk full(1000);
        EXPECT_THROW(file.save({longText, false}), std::system_error);
    }
    EXPECT_TRUE(file.isUnreadable());
    EXPECT_EQ(test::contentOf(file.path()), "garbled");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
    file.save({"a", false});
    EXPECT_EQ(test::contentOf(file.keptPath()), "garbled");
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
    SettingsFile(file).save({"abc", true});
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
    std::string file() {
        store().finishSaving();
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

TEST_F(SettingsStoreTest, EachPasswordIsToldAtOnceAndTheStartAtLoginIsNot) {
    std::vector<std::string> seen;
    store().onPasswordChange = [&] { seen.push_back(store().password()); };
    store().setPassword("x");
    store().setPassword("");
    store().setStartAtLogin(true);
    EXPECT_THAT(seen, ElementsAre("x", ""));
}

TEST_F(SettingsStoreTest, WhatWasSetLastIsSavedWhenTheStoreHasGone) {
    for (const char* password : {"s", "se", "sec", "secr"})
        store().setPassword(password);
    store_.reset();
    EXPECT_EQ(SettingsFile(file_).initial().password, "secr");
}

TEST_F(SettingsStoreTest, WhatTheCompanionGoesByIsToldWhenItChanges) {
    int changes = 0;
    store().onSetupChange = [&] { ++changes; };
    store().set(&AppSettings::name, "Left rig");
    store().set(&AppSettings::port, 41234);
    store().set(&AppSettings::allowedOrigins, std::vector<std::string>{"https://example.com"});
    EXPECT_EQ(changes, 3);
    store().set(&AppSettings::port, 41234);
    EXPECT_EQ(changes, 3) << "the same again";
    store().set(&AppSettings::name, std::nullopt);
    EXPECT_EQ(changes, 4);
    store_.reset();
    AppSettings expected;
    expected.port = 41234;
    expected.allowedOrigins = {"https://example.com"};
    EXPECT_EQ(store().current(), expected);
}

TEST_F(SettingsStoreTest, ASettingThatCannotBeIsToldUntilItIsSet) {
    saved(R"({"password":"abc","startAtLogin":true,"port":70000,"sim_host":""})");
    EXPECT_EQ(store().password(), "abc");
    ASSERT_EQ(store().problems().size(), 2U);
    EXPECT_THAT(store().problems()[0], HasSubstr("The setting \"port\" in " + file_.string()));
    EXPECT_THAT(store().problems()[0], HasSubstr("a number from 0 to 65535 is wanted. Set it anew, or mend"));
    store().set(&AppSettings::port, 0);
    ASSERT_EQ(store().problems().size(), 1U);
    EXPECT_THAT(store().problems()[0], HasSubstr("\"sim_host\""));
}

TEST_F(SettingsStoreTest, TheFileIsItsOwnersOnly) {
    file_ = folder_.path() / "new" / "folder" / "settings.json";
    store().setPassword("secret");
    store().finishSaving();
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

TEST_F(SettingsStoreTest, SettingsThatCannotBeReadAreAProblem) {
    EXPECT_THAT(store().problems(), IsEmpty());
    store_.reset();
    saved("garbled");
    ASSERT_THAT(store().problems(), SizeIs(1));
    const auto problem = store().problems()[0];
    EXPECT_THAT(problem, HasSubstr("The settings could not be read, and no password is asked for: "));
    EXPECT_THAT(problem, HasSubstr(file_.string()));
    EXPECT_THAT(problem, HasSubstr("settings.json.unreadable"));
    EXPECT_EQ(file(), "garbled") << "the file is not rewritten at start";
}

/// A password, or none on purpose.
TEST_F(SettingsStoreTest, SettingsThatCouldNotBeReadAreAProblemUntilAPasswordIsSet) {
    for (const char* password : {"a", ""}) {
        saved("garbled");
        std::filesystem::remove(file_.string() + ".unreadable");
        store().setStartAtLogin(true);
        EXPECT_EQ(file(), R"({"startAtLogin":true,"password_lost_in":"settings.json.unreadable"})");
        EXPECT_THAT(store().problems(),
                    ElementsAre(HasSubstr("The settings could not be read, and no password is asked for: ")));
        EXPECT_THAT(store().problems(), ElementsAre(HasSubstr(" is kept as settings.json.unreadable")));
        store().setPassword(password);
        EXPECT_THAT(store().problems(), IsEmpty());
        store().setStartAtLogin(false);
        store().finishSaving();
        EXPECT_THAT(store().problems(), IsEmpty());
        store_.reset();
        EXPECT_THAT(store().problems(), IsEmpty()) << "they can be read again";
        store_.reset();
    }
}

/// Each start is one on which anybody may pair who could not before.
TEST_F(SettingsStoreTest, ThatAPasswordWasLostIsToldAtEachStartUntilOneIsSet) {
    for (const char* password : {"a", ""}) {
        saved("garbled");
        std::filesystem::remove(file_.string() + ".unreadable");
        folder_.write("settings.json.unreadable", "of another day");
        store().set(&AppSettings::name, "Left rig");
        for (const char* name : {"Right rig", "Centre rig"}) {
            store_.reset();
            EXPECT_THAT(store().problems(), ElementsAre(HasSubstr("The settings could not be read, and no "
                                                                  "password is asked for: ")));
            EXPECT_THAT(store().problems(), ElementsAre(HasSubstr("is kept as settings.json.unreadable-2.")));
            store().set(&AppSettings::name, name);
            store().finishSaving();
            EXPECT_THAT(store().problems(), SizeIs(1));
        }
        store().setPassword(password);
        EXPECT_THAT(store().problems(), IsEmpty());
        store_.reset();
        EXPECT_THAT(store().problems(), IsEmpty());
        EXPECT_EQ(store().current().name, "Centre rig");
        store_.reset();
        std::filesystem::remove(file_.string() + ".unreadable-2");
    }
}

TEST_F(SettingsStoreTest, APasswordInTheFileIsNotLost) {
    saved(R"({"password":"abc","startAtLogin":false,"password_lost_in":"settings.json.unreadable"})");
    EXPECT_THAT(store().problems(), IsEmpty());
    EXPECT_EQ(store().current(), (AppSettings{"abc", false}));
}

TEST_F(SettingsStoreTest, TheProblemNamesTheFileThatIsKept) {
    saved("garbled");
    folder_.write("settings.json.unreadable", "of another day");
    store().setStartAtLogin(true);
    store().finishSaving();
    EXPECT_THAT(store().problems(), ElementsAre(HasSubstr(" is kept as settings.json.unreadable-2. ")));
}

TEST_F(SettingsStoreTest, SettingsThatCannotBeSavedAreToldOnceAndUntilTheyAre) {
    folder_.write("taken", "");
    file_ = folder_.path() / "taken" / "settings.json";
    testing::internal::CaptureStderr();
    for (const char* password : {"a", "ab"}) {
        store().setPassword(password);
        store().finishSaving();
    }
    const auto told = testing::internal::GetCapturedStderr();
    ASSERT_THAT(store().problems(), SizeIs(1));
    EXPECT_EQ("Tarnly: " + store().problems()[0].text() + "\n", told);
    EXPECT_THAT(told, HasSubstr("The settings could not be saved: " + file_.string()));
    std::filesystem::remove(folder_.path() / "taken");
    store().setPassword("abc");
    EXPECT_EQ(file(), R"({"password":"abc","startAtLogin":false})");
    EXPECT_THAT(store().problems(), IsEmpty());
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

TEST_F(SettingsStoreTest, AtStartAnOutdatedLoginItemIsMadeAnewOrGoes) {
    desktop_.status = LoginItem::Status::outdated;
    saved(R"({"startAtLogin":true})");
    store();
    EXPECT_THAT(desktop_.calls, ElementsAre("register"));

    store_.reset();
    desktop_.calls.clear();
    desktop_.status = LoginItem::Status::outdated;
    saved(R"({"startAtLogin":false})");
    store();
    EXPECT_THAT(desktop_.calls, ElementsAre("unregister"));
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
