#include "TarnlyClient/Lesson/RedrawnTable.hpp"

#include <gtest/gtest.h>

#include <sstream>

namespace tarnly::client {
namespace {

TEST(RedrawnTableTest, LinesAreWrittenOverInPlace) {
    std::ostringstream terminal;
    RedrawnTable table(terminal);
    table.draw({"a", "b"});
    EXPECT_EQ(terminal.str(), "a\x1b[K\r\nb\x1b[K\r\n\x1b[J");
    terminal.str("");
    table.draw({"c"});
    EXPECT_EQ(terminal.str(), "\r\x1b[2Ac\x1b[K\r\n\x1b[J");
    terminal.str("");
    table.clear();
    EXPECT_EQ(terminal.str(), "\r\x1b[1A\x1b[J");
}

TEST(RedrawnTableTest, NothingIsClearedTwice) {
    std::ostringstream terminal;
    RedrawnTable table(terminal);
    table.clear();
    EXPECT_EQ(terminal.str(), "");
    table.draw({"a"});
    table.clear();
    terminal.str("");
    table.clear();
    EXPECT_EQ(terminal.str(), "");
    table.draw({"b"});
    EXPECT_EQ(terminal.str(), "b\x1b[K\r\n\x1b[J");
}

} // namespace
} // namespace tarnly::client
