#include "TarnlyApp/CompanionSetup.hpp"

#include <gtest/gtest.h>

#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

namespace tarnly {
namespace {

using Ports = std::vector<std::uint16_t>;

AppSettings settingsOfARig() {
    AppSettings settings;
    settings.name = "Left rig";
    settings.port = 41234;
    settings.simulatorHost = "192.0.2.7";
    settings.simulatorPort = 8090;
    settings.situationsFolder = "/srv/situations";
    settings.navigationDatabase = "/srv/nav.db";
    settings.allowedOrigins = {"https://example.com/", "http://192.0.2.8:8080"};
    return settings;
}

CompanionOptions optionsOfARun() {
    CompanionOptions options;
    options.name = "Right rig";
    options.port = 0;
    options.simulatorHost = "rig";
    options.simulatorPort = 8087;
    options.situationsFolder = "/s";
    options.navigationDatabase = "/n.db";
    options.allowedOrigins = {*WebOrigin::parse("https://example.org")};
    return options;
}

TEST(CompanionSetup, IsAsUsualWhereNobodySaysAnything) {
    const auto setup = setupFrom({}, {});
    EXPECT_EQ(setup.simulator, (Endpoint{"127.0.0.1", 8086}));
    EXPECT_EQ(setup.ports, portsToTry(std::nullopt));
    EXPECT_EQ(setup.name, hostName());
    EXPECT_FALSE(setup.situationsFolder);
    EXPECT_FALSE(setup.navigationDatabase);
    EXPECT_TRUE(setup.allowedOrigins.empty());
}

TEST(CompanionSetup, GoesByTheSettings) {
    const auto setup = setupFrom({}, settingsOfARig());
    EXPECT_EQ(setup.simulator, (Endpoint{"192.0.2.7", 8090}));
    EXPECT_EQ(setup.ports, Ports{41234});
    EXPECT_EQ(setup.name, "Left rig");
    EXPECT_EQ(setup.situationsFolder, "/srv/situations");
    EXPECT_EQ(setup.navigationDatabase, "/srv/nav.db");
    EXPECT_EQ(setup.allowedOrigins, (std::vector{*WebOrigin::parse("https://example.com"),
                                                 *WebOrigin::parse("http://192.0.2.8:8080")}));
}

TEST(CompanionSetup, TheOptionsOfARunWin) {
    for (const auto& settings : {AppSettings{}, settingsOfARig()}) {
        const auto setup = setupFrom(optionsOfARun(), settings);
        EXPECT_EQ(setup.simulator, (Endpoint{"rig", 8087}));
        EXPECT_EQ(setup.ports, Ports{0});
        EXPECT_EQ(setup.name, "Right rig");
        EXPECT_EQ(setup.situationsFolder, "/s");
        EXPECT_EQ(setup.navigationDatabase, "/n.db");
        EXPECT_EQ(setup.allowedOrigins, std::vector{*WebOrigin::parse("https://example.org")});
    }
}

TEST(CompanionSetup, OneOptionLeavesTheOtherSettingsInForce) {
    CompanionOptions options;
    options.simulatorPort = 8087;
    const auto setup = setupFrom(options, settingsOfARig());
    EXPECT_EQ(setup.simulator, (Endpoint{"192.0.2.7", 8087}));
    EXPECT_EQ(setup.ports, Ports{41234});
}

TEST(CompanionSetup, EitherMayKeepItFromBeingPublished) {
    AppSettings hidden;
    hidden.name = "Left rig";
    hidden.advertise = false;
    EXPECT_FALSE(setupFrom({}, hidden).name);
    hidden.advertise = true;
    EXPECT_EQ(setupFrom({}, hidden).name, "Left rig");
    CompanionOptions options;
    options.name = "Right rig";
    options.advertises = false;
    EXPECT_FALSE(setupFrom(options, hidden).name);
    options.advertises = true;
    hidden.advertise = false;
    EXPECT_EQ(setupFrom(options, hidden).name, "Right rig");
}

TEST(CompanionSetup, AnOptionsPathIsMadeAbsolute) {
    CompanionOptions options;
    options.situationsFolder = "s";
    options.navigationDatabase = "n.db";
    EXPECT_EQ(setupFrom(options, {}).situationsFolder, std::filesystem::absolute("s"));
    EXPECT_EQ(setupFrom(options, {}).navigationDatabase, std::filesystem::absolute("n.db"));
}

} // namespace
} // namespace tarnly
