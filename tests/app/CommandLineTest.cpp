#include "app/CommandLine.h"

#include <gtest/gtest.h>

#include <vector>

namespace clipwren {

namespace {

using Request = CommandLine::Request;

CommandLine parse(std::vector<const char*> arguments) { return parseCommandLine(arguments, "1.2.3"); }

TEST(CommandLine, RunsWithoutAnArgument) {
    const CommandLine line = parse({});
    EXPECT_EQ(line.request, Request::run);
    EXPECT_EQ(line.text, "");
}

TEST(CommandLine, KnowsItsOptions) {
    EXPECT_EQ(parse({"--trigger"}).request, Request::trigger);
    EXPECT_EQ(parse({"--quit"}).request, Request::quit);
    EXPECT_EQ(parse({"--trigger"}).text, "");
    EXPECT_EQ(parse({"--quit"}).text, "");
}

TEST(CommandLine, PrintsTheVersion) {
    const CommandLine line = parse({"--version"});
    EXPECT_EQ(line.request, Request::print);
    EXPECT_EQ(line.text, "clipwren 1.2.3\n");
}

TEST(CommandLine, HelpNamesEveryOption) {
    const CommandLine line = parse({"--help"});
    EXPECT_EQ(line.request, Request::print);
    for (const char* option : {"--trigger", "--quit", "--version", "--help"})
        EXPECT_NE(line.text.find(option), std::string::npos) << option;
}

TEST(CommandLine, RefusesWhatItDoesNotKnow) {
    for (const char* argument : {"--record", "-h", "-", "--", "--help=yes", "--Help", "-session"}) {
        const CommandLine line = parse({argument});
        EXPECT_EQ(line.request, Request::refuse) << argument;
        EXPECT_TRUE(line.text.starts_with("clipwren: unknown option '" + std::string(argument) + "'\n"))
            << line.text;
    }
    for (const char* argument : {"file.gif", ""}) {
        const CommandLine line = parse({argument});
        EXPECT_EQ(line.request, Request::refuse) << argument;
        EXPECT_TRUE(line.text.starts_with("clipwren: unexpected argument '" + std::string(argument) + "'\n"))
            << line.text;
    }
}

TEST(CommandLine, RefusesASecondArgument) {
    for (const char* option : {"--trigger", "--quit", "--version", "--help"}) {
        const CommandLine line = parse({option, "--help"});
        EXPECT_EQ(line.request, Request::refuse) << option;
        EXPECT_TRUE(line.text.starts_with("clipwren: unexpected argument '--help'\n")) << line.text;
    }
}

} // namespace

} // namespace clipwren
