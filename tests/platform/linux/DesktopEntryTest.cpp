#include "platform/linux/DesktopEntry.h"

#include <gtest/gtest.h>

namespace clipwren {
namespace {

TEST(DesktopEntry, QuotesThePathByThreeLayersOfRules) {
    EXPECT_EQ(execValue("/usr/bin/clipwren"), R"("/usr/bin/clipwren")");
    EXPECT_EQ(execValue("/a b/c"), R"("/a b/c")");
    EXPECT_EQ(execValue("/100%/c"), R"(env "/100%%/c")");
    EXPECT_EQ(execValue("/$HOME/c"), R"("/\\$HOME/c")");
    EXPECT_EQ(execValue("/a\"b`c"), R"("/a\\"b\\`c")");
    EXPECT_EQ(execValue("/a\\b"), R"("/a\\\\b")");
    EXPECT_EQ(execValue("/a\nb\tc\rd"), R"("/a\nb\tc\rd")");
}

TEST(DesktopEntry, FindsTheQuotedProgramAgain) {
    for (const char* path : {"/usr/bin/clipwren", "/a b/c", "/100%/%f", "/$HOME/`id`/c", "/a\"b'c",
                             "/a\\b\\\\c\\", "/a\nb\tc\rd", "/ä/→"})
        EXPECT_EQ(programInExecValue(execValue(path)), path);
}

TEST(DesktopEntry, FindsTheProgramOfOthersToo) {
    EXPECT_EQ(programInExecValue("clipwren --flag %U"), "clipwren");
    EXPECT_EQ(programInExecValue("  \"/opt/a b\" \"c d\" "), "/opt/a b");
    EXPECT_EQ(programInExecValue("/opt/a\\sb"), "/opt/a");
    EXPECT_EQ(programInExecValue("env"), "");
    EXPECT_EQ(programInExecValue(""), "");
    EXPECT_EQ(programInExecValue("\""), "");
    EXPECT_EQ(programInExecValue("\"a\\"), "a\\");
}

TEST(DesktopEntry, ReadsValuesOfItsOwnGroupOnly) {
    const std::string_view text = "# Hidden=comment\n"
                                  "Hidden=before\n"
                                  "[Desktop Entry]\r\n"
                                  "Name[de]=Anders\n"
                                  "Name = A=B \n"
                                  "no value\n"
                                  "Exec=first\n"
                                  "Exec=second\n"
                                  "[Desktop Action New]\n"
                                  "Exec=third\n"
                                  "Hidden=after";
    EXPECT_EQ(desktopEntryValue(text, "Name"), "A=B");
    EXPECT_EQ(desktopEntryValue(text, "Exec"), "second");
    EXPECT_EQ(desktopEntryValue(text, "Hidden"), std::nullopt);
    EXPECT_EQ(desktopEntryValue("", "Exec"), std::nullopt);
}

} // namespace
} // namespace clipwren
