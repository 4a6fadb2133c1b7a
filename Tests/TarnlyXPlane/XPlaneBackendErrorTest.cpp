#include "TarnlyXPlane/XPlaneBackend.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

using Case = XPlaneBackendError::Case;

TEST(XPlaneBackendError, TextIsTheCaseNameWithThePayload) {
    const auto text = [](Case which, const char* payload) {
        return std::string(XPlaneBackendError(which, payload).what());
    };
    EXPECT_EQ(text(Case::unknownDataref, "sim/x"), R"(unknownDataref("sim/x"))");
    EXPECT_EQ(text(Case::unknownCommand, "sim/c"), R"(unknownCommand("sim/c"))");
    EXPECT_EQ(text(Case::commandFailed, "sim/c"), R"(commandFailed("sim/c"))");
    EXPECT_EQ(text(Case::timeout, "sim/x"), R"(timeout("sim/x"))");
    EXPECT_EQ(text(Case::flightNotFound, "/a b"), R"(flightNotFound("/a b"))");
    EXPECT_EQ(text(Case::notImplemented, "op"), R"(notImplemented("op"))");
}

TEST(XPlaneBackendError, PayloadIsEscapedAndMayBeEmpty) {
    EXPECT_STREQ(XPlaneBackendError(Case::timeout, "a\"b\\").what(), R"(timeout("a\"b\\"))");
    EXPECT_STREQ(XPlaneBackendError(Case::unknownDataref, "").what(), R"(unknownDataref(""))");
}

TEST(XPlaneBackendError, CaseWithoutPayloadHasNoParentheses) {
    EXPECT_STREQ(XPlaneBackendError(Case::situationsDirectoryNotConfigured).what(),
                 "situationsDirectoryNotConfigured");
}

TEST(XPlaneBackendError, IsEqualByCaseAndPayload) {
    const XPlaneBackendError error(Case::timeout, "a");
    EXPECT_EQ(error, XPlaneBackendError(Case::timeout, "a"));
    EXPECT_NE(error, XPlaneBackendError(Case::timeout, "b"));
    EXPECT_NE(error, XPlaneBackendError(Case::unknownDataref, "a"));
    EXPECT_EQ(error.which(), Case::timeout);
    EXPECT_EQ(error.payload(), "a");
}

} // namespace
} // namespace tarnly
