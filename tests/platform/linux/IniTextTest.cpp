#include "platform/linux/IniText.h"

#include <gtest/gtest.h>

#include <limits>

namespace clipwren {

namespace {

std::string after(std::string text, std::string_view group, std::string_view key, std::string_view value) {
    IniText ini(std::move(text));
    ini.set(group, key, value);
    return ini.text();
}

} // namespace

TEST(IniText, FindsAValueInItsGroupOnly) {
    const IniText ini("fps=1\n[other]\nfps=2\n[recording]\nfps=3\n[last]\nfps=4\n");
    EXPECT_EQ(ini.value("recording", "fps"), "3");
    EXPECT_EQ(ini.value("", "fps"), "1");
    EXPECT_EQ(ini.value("recording", "resolution"), std::nullopt);
    EXPECT_EQ(ini.value("Recording", "fps"), std::nullopt);
}

TEST(IniText, BlanksAndLineEndsDoNotCount) {
    const IniText ini("  [ recording ]\t\r\n\t fps \t=  24 \r\nempty=\r\nlast = a = b");
    EXPECT_EQ(ini.value("recording", "fps"), "24");
    EXPECT_EQ(ini.value("recording", "empty"), "");
    EXPECT_EQ(ini.value("recording", "last"), "a = b");
}

TEST(IniText, CommentsAndNonsenseAreNoValues) {
    const IniText ini("[recording]\n;fps=1\n  # fps=2\nfps\n[broken\n=3\n");
    EXPECT_EQ(ini.value("recording", "fps"), std::nullopt);
    EXPECT_EQ(ini.value("recording", ""), "3");
}

TEST(IniText, TheLastOfEqualKeysCounts) {
    const std::string text = "[recording]\nfps=1\n[x]\na=b\n[recording]\nfps=2\n";
    EXPECT_EQ(IniText(text).value("recording", "fps"), "2");
    EXPECT_EQ(after(text, "recording", "fps", "30"), "[recording]\nfps=1\n[x]\na=b\n[recording]\nfps=30\n");
}

TEST(IniText, ReadsBehindAByteOrderMark) {
    EXPECT_EQ(IniText("\xEF\xBB\xBF[recording]\nfps=20\n").value("recording", "fps"), "20");
    EXPECT_EQ(after("\xEF\xBB\xBF", "a", "b", "1"), "\xEF\xBB\xBF[a]\nb=1\n");
    EXPECT_EQ(after("\xEF\xBB\xBFx=1\n", "", "b", "1"), "\xEF\xBB\xBFx=1\nb=1\n");
}

TEST(IniText, MakesGroupAndKeyInAnEmptyText) {
    EXPECT_EQ(after("", "recording", "fps", "10"), "[recording]\nfps=10\n");
    EXPECT_EQ(after("", "", "top", "1"), "top=1\n");
}

TEST(IniText, ChangesNothingButTheValue) {
    EXPECT_EQ(after("; mine\n[recording]\n fps =\t15 \n\nother=\\x41%20\n", "recording", "fps", "24"),
              "; mine\n[recording]\n fps =\t24 \n\nother=\\x41%20\n");
    EXPECT_EQ(after("[recording]\nfps=\n", "recording", "fps", "24"), "[recording]\nfps=24\n");
    EXPECT_EQ(after("[recording]\nfps=", "recording", "fps", "24"), "[recording]\nfps=24");
    EXPECT_EQ(after("[recording]\nfps=nonsense\r\n", "recording", "fps", "24"), "[recording]\nfps=24\r\n");
}

TEST(IniText, AddsAKeyAtTheEndOfItsGroup) {
    EXPECT_EQ(after("[recording]\nfps=15\n\n[next]\na=b\n", "recording", "maxDuration", "0"),
              "[recording]\nfps=15\nmaxDuration=0\n\n[next]\na=b\n");
    EXPECT_EQ(after("[recording]\n# none yet", "recording", "fps", "15"),
              "[recording]\n# none yet\nfps=15\n");
    EXPECT_EQ(after("# head\n[a]\n", "", "top", "1"), "# head\ntop=1\n[a]\n");
    EXPECT_EQ(after("[a]\n", "", "top", "1"), "top=1\n[a]\n");
}

TEST(IniText, AddsAGroupAtTheEndWithTheTextsLineEnds) {
    EXPECT_EQ(after("[a]\r\nb=c", "recording", "fps", "15"), "[a]\r\nb=c\r\n\r\n[recording]\r\nfps=15\r\n");
    EXPECT_EQ(after("[a]\n", "recording", "fps", "15"), "[a]\n\n[recording]\nfps=15\n");
}

TEST(IniText, IntegersAreWholeNumbersOnly) {
    EXPECT_EQ(integerFromIni("24"), 24);
    EXPECT_EQ(integerFromIni("-7"), -7);
    EXPECT_EQ(integerFromIni("007"), 7);
    for (const char* text : {"", "fast", "15fps", "1 5", "0x10", "1e3", "+", "-", "\"15\""})
        EXPECT_EQ(integerFromIni(text), 0) << text;
    EXPECT_EQ(integerFromIni("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(integerFromIni("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(integerFromIni("99999999999999999999"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(integerFromIni("-99999999999999999999"), std::numeric_limits<std::int64_t>::min());
}

} // namespace clipwren
