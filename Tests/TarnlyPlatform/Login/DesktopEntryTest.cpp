#include "TarnlyPlatform/Login/DesktopEntry.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace tarnly {
namespace {

TEST(DesktopEntry, HasTheValuesOfItsMainGroupOnly) {
    const auto entry = DesktopEntry::parse(
        "# Made by hand\n\n[Before]\nName=No\n[Desktop Entry]\nName=Yes\n[Desktop Action "
        "new]\nName=No\nExec=no\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->value("Name"), "Yes");
    EXPECT_EQ(entry->value("Exec"), std::nullopt);
}

TEST(DesktopEntry, IsAbsentWithoutAMainGroup) {
    EXPECT_FALSE(DesktopEntry::parse(""));
    EXPECT_FALSE(DesktopEntry::parse("Name=Tarnly\n"));
    EXPECT_FALSE(DesktopEntry::parse("[KDE Desktop Entry]\nName=Tarnly\n"));
}

TEST(DesktopEntry, ReadsWhatPeopleAndToolsMakeOfIt) {
    const auto entry = DesktopEntry::parse(
        "[Desktop Entry] \r\nnonsense\r\n=\r\n#Name=No\r\n  Name \t=  Yes = yes \r\nName[de]=Ja\r\nIcon=");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->value("Name"), "Yes = yes");
    EXPECT_EQ(entry->value("Name[de]"), "Ja");
    EXPECT_EQ(entry->value("Icon"), "");
}

TEST(DesktopEntry, TheLastValueOfAKeyCounts) {
    const auto entry =
        DesktopEntry::parse("[Desktop Entry]\nIcon=a\nIcon=b\n[X]\nIcon=c\n[Desktop Entry]\nName=d\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->value("Icon"), "b");
    EXPECT_EQ(entry->value("Name"), "d");
}

TEST(DesktopEntry, ResolvesEscapeSequences) {
    const auto entry = DesktopEntry::parse(R"([Desktop Entry]
Name=\sa\tb\nc\rd\\s\x\)");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->value("Name"), " a\tb\nc\rd\\s\\x\\");
}

TEST(DesktopEntry, FlagsAreTrueFalseOrNeither) {
    const auto entry = DesktopEntry::parse("[Desktop Entry]\na=true\nb=1\nc=True\nd=false\ne=0\nf=maybe\n");
    ASSERT_TRUE(entry);
    for (const auto* key : {"a", "b", "c"})
        EXPECT_TRUE(entry->flag(key, false)) << key;
    for (const auto* key : {"d", "e"})
        EXPECT_FALSE(entry->flag(key, true)) << key;
    for (const auto* key : {"f", "absent"}) {
        EXPECT_TRUE(entry->flag(key, true)) << key;
        EXPECT_FALSE(entry->flag(key, false)) << key;
    }
}

TEST(DesktopEntryLine, EscapesBackslashesTabsAndSpacesAtTheEnds) {
    EXPECT_EQ(desktopEntryLine("Name", "Tarnly für alle"), "Name=Tarnly für alle\n");
    EXPECT_EQ(desktopEntryLine("Name", " a \\ \tb "), "Name=\\sa \\\\ \\tb\\s\n");
    EXPECT_EQ(desktopEntryLine("Name", ""), "Name=\n");
}

TEST(DesktopEntryLine, RefusesWhatTheFormatCannotCarry) {
    for (const std::string text : {"a\nb", "a\rb", "a\x01", "\x7F", "\xFF", "caf\xC3"}) {
        EXPECT_THROW(desktopEntryLine("Name", text), std::invalid_argument) << text;
    }
    EXPECT_THROW(desktopEntryLine("Name", std::string(1, '\0')), std::invalid_argument);
}

TEST(DesktopEntryLine, ReadsBackTheSame) {
    const std::string text = "  \\s \\\\n\t= [x] # ü ";
    const auto entry = DesktopEntry::parse("[Desktop Entry]\n" + desktopEntryLine("Name", text));
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->value("Name"), text);
}

TEST(ExecValue, LeavesPlainArgumentsAlone) {
    EXPECT_EQ(execValue({"/usr/bin/tarnly", "--port=1", "a.b-c_d/e:f,g@h+i[j]{k}!^"}),
              "/usr/bin/tarnly --port=1 a.b-c_d/e:f,g@h+i[j]{k}!^");
}

TEST(ExecValue, QuotesArgumentsWithReservedCharacters) {
    EXPECT_EQ(execValue({"/opt/my programs/tarnly", "", "it's", "a\tb"}),
              "\"/opt/my programs/tarnly\" \"\" \"it's\" \"a\tb\"");
    for (const char reserved : std::string("><~|&;*?#()")) {
        EXPECT_EQ(execValue({"/t", std::string(1, reserved)}), std::string("/t \"") + reserved + "\"");
    }
}

TEST(ExecValue, EscapesWithinQuotes) {
    EXPECT_EQ(execValue({"/t", "\"", "`", "$HOME", "\\"}), R"(/t "\"" "\`" "\$HOME" "\\")");
}

TEST(ExecValue, DoublesPercentSigns) { EXPECT_EQ(execValue({"/t", "100%", "%f x"}), "/t 100%% \"%%f x\""); }

TEST(ExecValue, RefusesProgramsThatTheFormatCannotName) {
    EXPECT_THROW(execValue({}), std::invalid_argument);
    EXPECT_THROW(execValue({""}), std::invalid_argument);
    EXPECT_THROW(execValue({"/opt/a=b/tarnly"}), std::invalid_argument);
}

TEST(ProgramOfExec, IsTheFirstWord) {
    EXPECT_EQ(programOfExec("tarnly --x"), "tarnly");
    EXPECT_EQ(programOfExec("  tarnly\t%u"), "tarnly");
    EXPECT_EQ(programOfExec("'/opt/my programs/tarnly' x"), "/opt/my programs/tarnly");
    EXPECT_EQ(programOfExec("/opt/my\\ programs/tarnly x"), "/opt/my programs/tarnly");
    EXPECT_EQ(programOfExec("\"/opt/unclosed"), "/opt/unclosed");
    EXPECT_EQ(programOfExec(""), "");
    EXPECT_EQ(programOfExec("\"\" x"), "");
}

TEST(ProgramOfExec, IsTheProgramThatWasPutIn) {
    for (const std::string program : {"/usr/bin/tarnly", "/a b/c\"d`e$f\\g/100%/%%/it's", "/ü/%"}) {
        EXPECT_EQ(programOfExec(execValue({program, "x y"})), program);
    }
}

} // namespace
} // namespace tarnly
