#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

#include <gmock/gmock.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(NetworkAddresses, PhysicalInterfacesComeFirst) {
    EXPECT_THAT(reachableAddresses({{.interface = "tun0", .address = "10.8.0.2", .isPhysical = false},
                                    {.interface = "wlan0", .address = "192.168.1.21"},
                                    {.interface = "docker0", .address = "172.17.0.1", .isPhysical = false},
                                    {.interface = "eth0", .address = "192.168.1.20"}}),
                ElementsAre("192.168.1.21", "192.168.1.20", "10.8.0.2", "172.17.0.1"));
}

TEST(NetworkAddresses, IPv4ComesFirstWithinAnInterface) {
    EXPECT_THAT(reachableAddresses({{.interface = "wlan0", .address = "fd00::21"},
                                    {.interface = "eth0", .address = "2001:db8::20"},
                                    {.interface = "eth0", .address = "192.168.1.20"},
                                    {.interface = "eth0", .address = "192.168.2.20"},
                                    {.interface = "wlan0", .address = "192.168.1.21"}}),
                ElementsAre("192.168.1.21", "fd00::21", "192.168.1.20", "192.168.2.20", "2001:db8::20"));
}

TEST(NetworkAddresses, EachStandsOnce) {
    EXPECT_THAT(reachableAddresses({{.interface = "eth0", .address = "192.168.1.20"},
                                    {.interface = "eth1", .address = "192.168.1.20"}}),
                ElementsAre("192.168.1.20"));
}

TEST(NetworkAddresses, AddressesOfThisComputerOrLinkAreLeftOut) {
    for (const std::string address :
         {"127.0.0.1", "0.0.0.0", "0.1.2.3", "224.0.0.251", "255.255.255.255", "240.0.0.1", "::", "::1",
          "fe80::1", "febf::1", "fec0::1", "ff02::fb", "::ffff:192.168.1.20", "", "eth0", "192.168.1"}) {
        EXPECT_THAT(reachableAddresses({{.interface = "eth0", .address = address}}), IsEmpty()) << address;
    }
}

TEST(NetworkAddresses, GlobalAndUniqueLocalAddressesStand) {
    for (const std::string address : {"1.2.3.4", "10.0.0.1", "169.253.1.1", "169.255.1.1", "223.255.255.1",
                                      "2001:db8::1", "3fff::1", "fc00::1", "fdff::1"}) {
        EXPECT_THAT(reachableAddresses({{.interface = "eth0", .address = address}}), ElementsAre(address));
    }
}

TEST(NetworkAddresses, LinkLocalIPv4StandsWhereThereIsNothingElse) {
    const InterfaceAddress selfAssigned{.interface = "eth0", .address = "169.254.7.1"};
    const InterfaceAddress elsewhere{.interface = "tun0", .address = "fd00::1", .isPhysical = false};
    EXPECT_THAT(reachableAddresses({selfAssigned}), ElementsAre("169.254.7.1"));
    EXPECT_THAT(reachableAddresses({selfAssigned, elsewhere}), ElementsAre("fd00::1"));
}

TEST(NetworkAddresses, InterfacesThatReachNobodyAreLeftOut) {
    EXPECT_THAT(reachableAddresses({{.interface = "eth0", .address = "192.168.1.20", .isRunning = false},
                                    {.interface = "lo", .address = "192.168.1.21", .isLoopback = true}}),
                IsEmpty());
    EXPECT_THAT(reachableAddresses({}), IsEmpty());
}

/// Makes two interfaces with a carrier and one without, and waits until the system has noticed which is
/// which.
constexpr auto makeInterfaces = R"(
    ip link set lo up &&
    ip link add here index 10 type veth peer name there index 11 &&
    ip link set there up && ip link set here up &&
    ip link add idle type veth peer name off && ip link set idle up &&
    ip address add 198.51.100.7/24 dev here label here:1 && ip address add 2001:db8::7/64 dev here nodad &&
    ip address add 198.51.100.8/24 dev there && ip address add 198.51.100.9/24 dev idle &&
    timeout 60 sh -c 'until ip link show here | grep -q "state UP"; do sleep 0.01; done' &&
    timeout 60 sh -c 'until ip link show idle | grep -q NO-CARRIER; do sleep 0.01; done')";

/// Moves this process, a child of the test's, into a network of its own. `ip` needs to be root there.
bool enterOwnNetwork() {
    const auto person = std::to_string(geteuid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return false;
    std::ofstream("/proc/self/uid_map") << "0 " << person << " 1";
    return std::system(makeInterfaces) == 0;
}

/// Runs in the child, which ends with it: nothing of the test's own may run there twice.
[[noreturn]] void writeAddresses(const std::filesystem::path& file) {
    if (enterOwnNetwork()) {
        std::ofstream stream(file);
        for (const auto& address : networkAddresses())
            stream << address << ' ';
    }
    _exit(EXIT_SUCCESS);
}

TEST(NetworkAddresses, AreThoseOfTheInterfacesWithACarrier) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "addresses";
    const auto child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) writeAddresses(file);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "this computer lends no network namespaces";
    std::string addresses;
    std::getline(std::ifstream(file), addresses);
    EXPECT_EQ(addresses, "198.51.100.7 2001:db8::7 198.51.100.8 ");
}

TEST(HostName, IsNeverEmpty) { EXPECT_NE(hostName(), ""); }

TEST(WebSocketUrl, HasIPv6InBrackets) {
    EXPECT_EQ(webSocketUrl("192.168.1.20", 41234), "ws://192.168.1.20:41234");
    EXPECT_EQ(webSocketUrl("2001:db8::1", 80), "ws://[2001:db8::1]:80");
}

TEST(WebPageUrl, NamesTheFirstPage) {
    EXPECT_EQ(webPageUrl("192.168.1.20", 41234), "http://192.168.1.20:41234/");
    EXPECT_EQ(webPageUrl("2001:db8::1", 80), "http://[2001:db8::1]:80/");
}

} // namespace
} // namespace tarnly
