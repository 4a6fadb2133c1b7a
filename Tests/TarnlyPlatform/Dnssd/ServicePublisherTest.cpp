#include "TarnlyPlatform/Dnssd/ServicePublisher.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "TarnlyPlatform/Dnssd/ServiceBrowser.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

/// More than anything here takes, on however busy a machine.
constexpr std::chrono::seconds patience{60};

PublishedService service(const std::string& name, const std::string& type, std::uint16_t port = 4711) {
    return {name, type, port, {}};
}

bool eventually(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

bool becomesPublishedAs(const ServicePublisher& publisher, const std::string& name) {
    return eventually([&] { return publisher.publishedName() == name; });
}

TEST(ServicePublisher, ServiceIsFoundWithItsPortAndEntries) {
    auto published = service("rig", "_tarnlyfound._tcp", 54321);
    published.txt = {{"sim", "xplane"}, {"ver", "0.1"}, {"pairing", "open"}, {"empty", ""}};
    const ServicePublisher publisher(published);
    ASSERT_TRUE(becomesPublishedAs(publisher, "rig"));

    const auto found = browseServices("_tarnlyfound._tcp", patience);

    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].name, "rig");
    EXPECT_EQ(found[0].port, 54321);
    EXPECT_EQ(found[0].address, "127.0.0.1");
    EXPECT_THAT(found[0].hostName, testing::EndsWith(".local"));
    EXPECT_THAT(found[0].txt, ElementsAre(Pair("empty", ""), Pair("pairing", "open"), Pair("sim", "xplane"),
                                          Pair("ver", "0.1")));
}

TEST(ServicePublisher, TakenNameIsReplacedByTheNextFreeOne) {
    const auto rig = [](std::uint16_t port) { return service("rig", "_tarnlytaken._tcp", port); };
    const ServicePublisher first(rig(1));
    ASSERT_TRUE(becomesPublishedAs(first, "rig"));
    auto second = std::make_unique<ServicePublisher>(rig(2));
    ASSERT_TRUE(becomesPublishedAs(*second, "rig (2)"));
    const ServicePublisher third(rig(3));
    ASSERT_TRUE(becomesPublishedAs(third, "rig (3)"));

    second.reset();
    const ServicePublisher fourth(rig(4));
    EXPECT_TRUE(becomesPublishedAs(fourth, "rig (2)"));
    EXPECT_EQ(first.publishedName(), "rig");
}

TEST(ServicePublisher, NameIsCutToWhatDnsAllows) {
    const std::string longName = std::string(62, 'a') + "\xC3\xA9";
    const ServicePublisher publisher(service(longName, "_tarnlylong._tcp"));
    const ServicePublisher other(service(longName, "_tarnlylong._tcp", 4712));

    const auto one = std::string(62, 'a');
    const auto two = std::string(59, 'a') + " (2)";
    EXPECT_TRUE(eventually([&] {
        const auto a = publisher.publishedName();
        const auto b = other.publishedName();
        return (a == one && b == two) || (a == two && b == one);
    }));
}

TEST(ServicePublisher, MalformedNameIsMendedAndPublished) {
    const ServicePublisher publisher(service("rig\xFF", "_tarnlymend._tcp"));
    EXPECT_TRUE(becomesPublishedAs(publisher, "rig\xEF\xBF\xBD"));
}

TEST(ServicePublisher, DestructionWithdrawsTheService) {
    auto publisher = std::make_unique<ServicePublisher>(service("rig", "_tarnlygone._tcp"));
    ASSERT_TRUE(becomesPublishedAs(*publisher, "rig"));
    ASSERT_THAT(browseServices("_tarnlygone._tcp", patience), SizeIs(1));

    publisher.reset();

    EXPECT_TRUE(eventually([] { return browseServices("_tarnlygone._tcp", patience).empty(); }));
}

TEST(ServicePublisher, IsDestroyedWhileItIsStillRegistering) {
    for (int i = 0; i < 20; ++i) {
        const ServicePublisher publisher(service("rig", "_tarnlyquick._tcp"));
        std::this_thread::sleep_for(std::chrono::milliseconds(i));
    }
    EXPECT_TRUE(eventually([] { return browseServices("_tarnlyquick._tcp", patience).empty(); }));
}

TEST(ServiceBrowser, FindsSeveralSortedByName) {
    const ServicePublisher b(service("b", "_tarnlymany._tcp", 2));
    const ServicePublisher a(service("a", "_tarnlymany._tcp", 1));
    ASSERT_TRUE(becomesPublishedAs(a, "a"));
    ASSERT_TRUE(becomesPublishedAs(b, "b"));

    EXPECT_THAT(browseServices("_tarnlymany._tcp", patience),
                ElementsAre(Field(&FoundService::name, "a"), Field(&FoundService::name, "b")));
}

TEST(ServiceBrowser, AnswersNothingWhereThereIsNothing) {
    EXPECT_THAT(browseServices("_tarnlynone._tcp", patience), IsEmpty());
}

TEST(ServiceBrowser, EndsAsSoonAsThereIsEnough) {
    const ServicePublisher publisher(service("rig", "_tarnlyenough._tcp"));
    ASSERT_TRUE(becomesPublishedAs(publisher, "rig"));
    int calls = 0;
    const auto enough = [&](const std::vector<FoundService>& found) {
        ++calls;
        return found.size() == 1;
    };

    EXPECT_THAT(browseServices("_tarnlyenough._tcp", patience, enough), SizeIs(1));
    EXPECT_EQ(calls, 1);
}

TEST(ServiceBrowser, EndsWhenPatienceDoes) {
    const ServicePublisher publisher(service("rig", "_tarnlypatience._tcp"));
    ASSERT_TRUE(becomesPublishedAs(publisher, "rig"));
    EXPECT_THAT(browseServices("_tarnlypatience._tcp", std::chrono::milliseconds(0)), IsEmpty());
}

TEST(ServiceBrowser, OfARepeatedKeyTheFirstValueCounts) {
    auto published = service("rig", "_tarnlytwice._tcp");
    published.txt = {{"key", "first"}, {"key", "second"}};
    const ServicePublisher publisher(published);
    ASSERT_TRUE(becomesPublishedAs(publisher, "rig"));

    const auto found = browseServices("_tarnlytwice._tcp", patience);

    ASSERT_THAT(found, SizeIs(1));
    EXPECT_THAT(found[0].txt, ElementsAre(Pair("key", "first")));
}

TEST(ServiceBrowser, RefusesATypeThatIsNone) {
    EXPECT_THROW(browseServices("no type", patience), std::runtime_error);
}

} // namespace
} // namespace tarnly
