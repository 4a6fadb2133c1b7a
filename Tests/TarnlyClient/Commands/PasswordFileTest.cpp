#include "TarnlyClient/Commands/PasswordFile.hpp"

#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"

namespace tarnly::client {
namespace {

std::string read(const std::string& content) {
    const test::TemporaryFolder folder;
    return readPassword(folder.write("password", content));
}

std::string passwordComplaint(const std::filesystem::path& file) {
    try {
        readPassword(file);
        return "";
    } catch (const UsageError& error) {
        return error.what();
    }
}

TEST(PasswordFile, PasswordIsTheFirstLine) {
    EXPECT_EQ(read("secret"), "secret");
    EXPECT_EQ(read("secret\n"), "secret");
    EXPECT_EQ(read("secret\r\n"), "secret");
    EXPECT_EQ(read(" two words \nmore\n"), " two words ");
    EXPECT_EQ(read("Gr\xC3\xBCn\n"), "Gr\xC3\xBCn");
}

TEST(PasswordFile, AFileWithoutPasswordIsRefused) {
    EXPECT_THROW(read(""), UsageError);
    EXPECT_THROW(read("\nsecret\n"), UsageError);
    EXPECT_THROW(read("\r\n"), UsageError);
    EXPECT_THROW(read("Gr\xFCn\n"), UsageError);
}

TEST(PasswordFile, AMissingFileIsNamed) {
    EXPECT_EQ(passwordComplaint("/nowhere/password"),
              "the password file /nowhere/password cannot be read: No such file or directory; name one that "
              "you may read");
}

TEST(PasswordFile, AFolderIsNoPasswordFile) { EXPECT_NE(passwordComplaint("/"), ""); }

} // namespace
} // namespace tarnly::client
