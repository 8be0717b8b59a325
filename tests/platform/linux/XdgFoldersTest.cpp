#include "platform/linux/XdgFolders.h"

#include <gtest/gtest.h>

namespace clipwren {

namespace {

std::optional<std::filesystem::path> pictures(std::string_view text) {
    return picturesInUserDirs(text, "/home/ada");
}

using Path = std::filesystem::path;

} // namespace

TEST(UserDirs, NamesAFolderBelowHome) {
    EXPECT_EQ(pictures("# comment\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\nXDG_PICTURES_DIR=\"$HOME/Bilder\"\n"),
              Path("/home/ada/Bilder"));
    EXPECT_EQ(pictures("XDG_PICTURES_DIR=\"$HOME/Bilder/\""), Path("/home/ada/Bilder"));
    EXPECT_EQ(pictures("  XDG_PICTURES_DIR =\t\"$HOME/a b/ü\"  \r\n"), Path("/home/ada/a b/ü"));
}

TEST(UserDirs, NamesAnAbsoluteFolder) {
    EXPECT_EQ(pictures("XDG_PICTURES_DIR=\"/data/pictures\"\n"), Path("/data/pictures"));
    EXPECT_EQ(pictures("XDG_PICTURES_DIR=\"/\"\n"), Path("/"));
}

TEST(UserDirs, TakesEscapedCharactersAsTheyStand) {
    EXPECT_EQ(pictures(R"(XDG_PICTURES_DIR="$HOME/a\"b\\c\$d\`e")"), Path(R"(/home/ada/a"b\c$d`e)"));
    EXPECT_EQ(pictures(R"(XDG_PICTURES_DIR="/x/$HOME/y")"), Path("/x/$HOME/y"));
}

TEST(UserDirs, TheHomeFolderItselfMeansNone) {
    EXPECT_EQ(pictures("XDG_PICTURES_DIR=\"$HOME\"\n"), std::nullopt);
    EXPECT_EQ(pictures("XDG_PICTURES_DIR=\"$HOME/\"\n"), std::nullopt);
    EXPECT_EQ(pictures("XDG_PICTURES_DIR=\"/home/ada/\"\n"), std::nullopt);
    EXPECT_EQ(picturesInUserDirs("XDG_PICTURES_DIR=\"$HOME\"\n", "/home/ada/"), std::nullopt);
}

TEST(UserDirs, TheLastGoodLineCounts) {
    EXPECT_EQ(pictures("XDG_PICTURES_DIR=\"/a\"\nXDG_PICTURES_DIR=\"/b\"\nXDG_PICTURES_DIR=\"c\"\n"),
              Path("/b"));
}

TEST(UserDirs, NonsenseNamesNone) {
    for (const char* text :
         {"", "\n\n", "XDG_PICTURES_DIR", "XDG_PICTURES_DIR=", "XDG_PICTURES_DIR=/a", "XDG_PICTURES_DIR=\"\"",
          "XDG_PICTURES_DIR=\"Pictures\"", "XDG_PICTURES_DIR=\"$HOMELY/a\"", "#XDG_PICTURES_DIR=\"/a\"",
          "XDG_PICTURES_DIR_2=\"/a\"", "XDG_PICTURES_DIR=\"\\"})
        EXPECT_EQ(pictures(text), std::nullopt) << text;
}

} // namespace clipwren
