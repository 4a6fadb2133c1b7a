#include "TarnlyApp/LessonPage.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Net/Gzip.hpp"

namespace tarnly {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string textOf(const WebPage& page) {
    return page.coding == WebPage::Coding::gzip ? gunzipped(page.body) : page.body;
}

struct LessonPageTest : testing::Test {
    WebPages pages() const { return lessonPages(folder.path()); }

    const test::TemporaryFolder folder;
};

TEST_F(LessonPageTest, NamesFilesThatAreThereAndMayBeKept) {
    const auto all = pages();
    const auto page = textOf(*all.find("/"));
    EXPECT_THAT(page, Not(HasSubstr("@")));
    const std::regex reference("(?:src|href)=\"(/[^\"]+)\"");
    std::size_t count = 0;
    for (std::sregex_iterator found(page.begin(), page.end(), reference), end; found != end;
         ++found, ++count) {
        const auto path = (*found)[1].str();
        ASSERT_NE(all.find(path), nullptr) << path;
        EXPECT_EQ(all.find(path)->keep, WebPage::Keep::always) << path;
    }
    EXPECT_GE(count, 4U);
    EXPECT_EQ(all.find("/")->keep, WebPage::Keep::no);
}

TEST_F(LessonPageTest, ItsFailuresAreThoseOfTheDataFolder) {
    EXPECT_THAT(textOf(*pages().find("/failures.json")), HasSubstr("rel_engfai0"));
    std::ofstream(folder.path() / "failures.json") << R"({"failures":[]})";
    EXPECT_EQ(textOf(*pages().find("/failures.json")), R"({"failures":[]})");
}

TEST_F(LessonPageTest, AListThatIsTooLongSaysSo) {
    std::ofstream(folder.path() / "failures.json") << std::string(256 * 1024 + 1, ' ');
    EXPECT_EQ(textOf(*pages().find("/failures.json")),
              R"({"failures":[],"problem":"failures.json in the data folder is larger than 256 KiB. )"
              R"(Make it shorter, and start the companion again."})");
}

TEST_F(LessonPageTest, AListThatCannotBeReadSaysSo) {
    std::filesystem::create_directory(folder.path() / "failures.json");
    EXPECT_THAT(textOf(*pages().find("/failures.json")),
                HasSubstr("failures.json in the data folder cannot be read"));
}

} // namespace
} // namespace tarnly
