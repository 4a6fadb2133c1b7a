#include "TarnlyCore/NavData/NavDatabaseError.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

TEST(NavDatabaseError, ShowsPathAndMessageInQuotes) {
    EXPECT_STREQ(NavDatabaseError::openFailed("nav/my \"old\".db", "unable to open\ndatabase file").what(),
                 R"(openFailed(path: "nav/my \"old\".db", message: "unable to open\ndatabase file"))");
}

} // namespace
} // namespace tarnly
