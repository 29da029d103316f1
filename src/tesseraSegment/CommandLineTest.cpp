#include "CommandLine.h"
#include "CommandFixture.h"

using namespace kelp::command;

namespace {

Options parse(const QStringList& arguments)
{
    return parseCommandLine(QStringList{"tessera-segment"} + arguments);
}

TEST(CommandLine, HasTheDefaultsThatItsHelpTells)
{
    const Options options = parse({"a.xml"});
    EXPECT_EQ(options.exports, QStringList({"a.xml"}));
    EXPECT_EQ(options.chain, kelp::oct::SegmentationChain::Normal);
    EXPECT_EQ(options.out, "tessera-results");
    EXPECT_EQ(options.formats.names(),
              QStringList({"positions", "thickness", "metaimage", "etdrs", "pictures"}));
    EXPECT_EQ(options.jobs, 1);
    EXPECT_EQ(options.talk, Talk::Normal);
    EXPECT_FALSE(options.etdrsMask || options.centerMask || options.force);
    EXPECT_TRUE(options.store.isEmpty() && options.maskFile.isEmpty() && options.series.isEmpty());
}

TEST(CommandLine, ReadsEveryOption)
{
    const Options options = parse(
        {"--chain", "drusen", "--series", "1",       "--series=2", "--etdrs-mask", "--center-mask",
         "--mask",  "m.txt",  "--out",    "o",       "--formats",  "raw, etdrs",   "--store",
         "s",       "--jobs", "4",        "--force", "--verbose",  "a.xml",        "b"});
    EXPECT_EQ(options.chain, kelp::oct::SegmentationChain::Drusen);
    EXPECT_EQ(options.series, QStringList({"1", "2"}));
    EXPECT_TRUE(options.etdrsMask && options.centerMask && options.force);
    EXPECT_EQ(options.maskFile, "m.txt");
    EXPECT_EQ(options.out, "o");
    EXPECT_EQ(options.formats.names(), QStringList({"raw", "etdrs"}));
    EXPECT_EQ(options.store, "s");
    EXPECT_EQ(options.jobs, 4);
    EXPECT_EQ(options.talk, Talk::Verbose);
    EXPECT_EQ(options.exports, QStringList({"a.xml", "b"}));
}

TEST(CommandLine, TakesNamesThatLookLikeOptionsBehindTwoDashes)
{
    EXPECT_EQ(parse({"--", "--force"}).exports, QStringList({"--force"}));
}

TEST(CommandLine, NeedsNoExportToPrintSomething)
{
    EXPECT_EQ(parse({"--help"}).action, Options::Action::PrintHelp);
    EXPECT_EQ(parse({"--version"}).action, Options::Action::PrintVersion);
    EXPECT_EQ(parse({"--print-model"}).action, Options::Action::PrintModel);
}

TEST(CommandLine, RefusesWhatItCannotFollow)
{
    for (const QStringList& arguments : QList<QStringList>{{},
                                                           {""},
                                                           {"--unknown", "a"},
                                                           {"--chain", "Normal", "a"},
                                                           {"--formats", "", "a"},
                                                           {"--formats", "etdrs,", "a"},
                                                           {"--formats", "png", "a"},
                                                           {"--jobs", "0", "a"},
                                                           {"--jobs", "-1", "a"},
                                                           {"--jobs", "two", "a"},
                                                           {"--jobs", "1000", "a"},
                                                           {"--out", "", "a"},
                                                           {"--store", "", "a"},
                                                           {"--mask", "", "a"},
                                                           {"a", "--series"},
                                                           {"--force=yes", "a"},
                                                           {"--quiet", "--verbose", "a"}}) {
        EXPECT_THROW(parse(arguments), UsageError) << arguments.join(' ').toStdString();
    }
}

TEST(CommandLine, SaysInOneSentenceWhatIsWrong)
{
    try {
        parse({"--formats", "etdrs,bmp", "a"});
        FAIL();
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "--formats takes names of positions, thickness, raw, metaimage, "
                                   "etdrs, pictures, separated by commas, not \"bmp\".");
    }
}

} // namespace
