#include "TarnlyCore/NavData/NavDatabase.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

TEST(NavDatabaseError, ShowsPathAndMessageInQuotes) {
    const NavDatabaseError error("nav/my \"old\".db", "unable to open\ndatabase file");
    EXPECT_STREQ(error.what(),
                 R"(openFailed(path: "nav/my \"old\".db", message: "unable to open\ndatabase file"))");
    EXPECT_EQ(error.told(), error.what());
}

} // namespace
} // namespace tarnly
