#include "TarnlyClient/Output/Printer.hpp"

#include <gtest/gtest.h>

#include <sstream>

namespace tarnly::client {
namespace {

const Values values{{"sim/a", 1.5}, {"sim/b", -3}, {"unasked", 7}};

class PrinterTest : public testing::Test {
  public:
    std::ostringstream stream;
    Printer people{stream, false};
    Printer programs{stream, true};
};

TEST_F(PrinterTest, ValuesStandInTheOrderAskedFor) {
    people.values({"sim/b", "sim/a", "missing"}, values);
    EXPECT_EQ(stream.str(), "sim/b=-3\nsim/a=1.5\n");
}

TEST_F(PrinterTest, ValuesForProgramsAreOneObject) {
    programs.values({"sim/b", "sim/a", "sim/b"}, values);
    EXPECT_EQ(stream.str(), "{\"sim\\/b\":-3,\"sim\\/a\":1.5}\n");
}

TEST_F(PrinterTest, APushIsOneLine) {
    people.push({"sim/b", "sim/a"}, values);
    programs.push({"sim/b", "sim/a"}, values);
    EXPECT_EQ(stream.str(), "sim/b=-3 sim/a=1.5\n{\"sim\\/b\":-3,\"sim\\/a\":1.5}\n");
}

TEST_F(PrinterTest, Ok) {
    people.ok();
    programs.ok();
    EXPECT_EQ(stream.str(), "ok\n{\"ok\":true}\n");
}

TEST_F(PrinterTest, Simulator) {
    people.simulator("xplane", "12.1");
    programs.simulator("xplane", "12.1");
    EXPECT_EQ(stream.str(), "xplane 12.1\n{\"sim\":\"xplane\",\"version\":\"12.1\"}\n");
}

TEST_F(PrinterTest, Companion) {
    const FoundService service{
        "rig", "rig.local", "fe80::1%eth0", 4711, {{"sim", "xplane"}, {"ver", "0.1\n"}}};
    people.companion(service);
    programs.companion(service);
    EXPECT_EQ(stream.str(),
              "rig  [fe80::1%eth0]:4711  sim=xplane  ver=0.1?\n"
              "{\"name\":\"rig\",\"host\":\"rig.local\",\"address\":\"fe80::1%eth0\",\"port\":4711,"
              "\"txt\":{\"sim\":\"xplane\",\"ver\":\"0.1\\n\"}}\n");
}

} // namespace
} // namespace tarnly::client
