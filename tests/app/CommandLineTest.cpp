#include <gtest/gtest.h>

#include <vector>

#include "app/CommandLine.h"

namespace {

CommandLine parse(std::vector<const char*> args)
{
    args.insert(args.begin(), "zenvora");
    return parseCommandLine(static_cast<int>(args.size()), args.data());
}

}  // namespace

TEST(CommandLineTest, ReadsItsOwnOptionsAndLeavesQtsAlone)
{
    using A = CommandLine::Action;
    EXPECT_EQ(parse({}).action, A::Run);
    EXPECT_EQ(parse({}).book, "");
    EXPECT_EQ(parse({"--help"}).action, A::Help);
    EXPECT_EQ(parse({"--book", "/tmp/b.sql", "-h"}).action, A::Help);
    EXPECT_EQ(parse({"--version"}).action, A::Version);

    const CommandLine spaced = parse({"-platform", "offscreen", "--book", "/tmp/家計簿 2026.sql"});
    EXPECT_EQ(spaced.action, A::Run);
    EXPECT_EQ(spaced.book, "/tmp/家計簿 2026.sql");
    EXPECT_EQ(parse({"--book=rel/b.sql"}).book, "rel/b.sql");

    for (const auto& bad : std::vector<std::vector<const char*>>{{"--book"}, {"--book="}, {"--bok", "x"}}) {
        const CommandLine line = parse(bad);
        EXPECT_EQ(line.action, A::Error) << bad.front();
        EXPECT_FALSE(line.error.empty());
    }
}

TEST(CommandLineTest, ImportTakesItsFilesAndAssetAndRefusesHalfAnImport)
{
    using A = CommandLine::Action;
    const CommandLine line = parse({"--book", "b.sql", "--import", "a.csv", "b b.csv", "--asset", "楽天カード", "--dry-run"});
    EXPECT_EQ(line.action, A::Import);
    EXPECT_EQ(line.importFiles, (std::vector<std::string>{"a.csv", "b b.csv"}));
    EXPECT_EQ(line.asset, "楽天カード");
    EXPECT_TRUE(line.dryRun);
    EXPECT_FALSE(line.acceptCandidates);
    EXPECT_TRUE(parse({"--asset", "x", "--accept-candidates", "--import", "a.csv"}).acceptCandidates);

    for (const auto& bad : std::vector<std::vector<const char*>>{
             {"--import"}, {"--import", "a.csv"}, {"--import", "--asset", "x"}, {"--asset", "x"}, {"--dry-run"}, {"--import", "a.csv", "--asset"}}) {
        const CommandLine refused = parse(bad);
        EXPECT_EQ(refused.action, A::Error) << bad.size();
        EXPECT_FALSE(refused.error.empty());
    }
}
