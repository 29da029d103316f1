#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

struct Outcome
{
    int status = -1;
    std::string output;
    std::string errors;
};

Outcome run(const QStringList& arguments)
{
    QProcess process;
    process.start(TESSERA_PHANTOM_PROGRAM, arguments);
    EXPECT_TRUE(process.waitForFinished(300000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

QStringList filesBelow(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

} // namespace

TEST(PhantomCommand, WritesTheExportThatIsAskedFor)
{
    const QTemporaryDir folder;
    const QString out = folder.filePath("made/here");
    const Outcome outcome = run({"--out",          out,      "--pattern", "star",
                                 "--ascans",       "20",     "--rows",    "110",
                                 "--bscans",       "2",      "--eye",     "L",
                                 "--kind",         "drusen", "--seed",    "18446744073709551615",
                                 "--image-format", "png",    "--noise",   "0.5"});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, QDir(out).absoluteFilePath("export.xml").toStdString() + "\n");
    EXPECT_EQ(filesBelow(out).filter(".png").size(), 3);
    EXPECT_EQ(filesBelow(out).filter("truth_"),
              (QStringList{"truth_BM.csv", "truth_GCL.csv", "truth_ILM.csv", "truth_INL.csv",
                           "truth_IRPE.csv", "truth_ISe.csv", "truth_ONL.csv"}));
    QFile xml(QDir(out).filePath("export.xml"));
    ASSERT_TRUE(xml.open(QIODevice::ReadOnly));
    const std::string content = xml.readAll().toStdString();
    EXPECT_THAT(content, HasSubstr("<Type>Star</Type>"));
    EXPECT_THAT(content, HasSubstr("<Laterality>L</Laterality>"));
    EXPECT_THAT(content, HasSubstr("<Width>20</Width>"));
    EXPECT_THAT(content, HasSubstr("<Height>110</Height>"));
}

TEST(PhantomCommand, PaintsTheDevicesFillWhenAsked)
{
    const QTemporaryDir folder;
    QStringList arguments{"--ascans", "64", "--rows", "200", "--bscans", "2"};
    ASSERT_EQ(run(arguments + QStringList{"--out", folder.filePath("plain")}).status, 0);
    ASSERT_EQ(run(arguments + QStringList{"--out", folder.filePath("filled"), "--fill"}).status, 0);
    for (const QString& name : filesBelow(folder.filePath("plain"))) {
        QFile plain(folder.filePath("plain/" + name));
        QFile filled(folder.filePath("filled/" + name));
        ASSERT_TRUE(plain.open(QIODevice::ReadOnly));
        ASSERT_TRUE(filled.open(QIODevice::ReadOnly));
        const bool isBScan = name.endsWith("0001.tif") || name.endsWith("0002.tif");
        EXPECT_EQ(plain.readAll() != filled.readAll(), isBScan) << name.toStdString();
    }
}

TEST(PhantomCommand, EndsWithTwoAndAReasonForWrongUsage)
{
    const QTemporaryDir folder;
    const QString out = folder.filePath("out");
    const std::vector<std::pair<QStringList, std::string>> cases{
        {{}, "--out must name a folder"},
        {{"--out", out, "--pattern", "spiral"}, "--pattern must be one of"},
        {{"--out", out, "--kind", "cat"}, "--kind must be one of drusen, mouse, normal"},
        {{"--out", out, "--eye", "both"}, "--eye must be one of L, R"},
        {{"--out", out, "--ascans", "many"}, "--ascans must be a whole number"},
        {{"--out", out, "--ascans", "0"}, "number of A-scans must be from 1"},
        {{"--out", out, "--rows", "-1"}, "number of rows must be from 1"},
        {{"--out", out, "--rows", "1e9"}, "--rows must be a whole number"},
        {{"--out", out, "--bscans", "99999"}, "number of B-scans must be from 1 to 1024"},
        {{"--out", out, "--seed", "-1"}, "--seed must be a whole number"},
        {{"--out", out, "--noise", "loud"}, "--noise must be a number"},
        {{"--out", out, "--noise", "nan"}, "noise must be from 0 to 10"},
        {{"--out", out, "--fill", "--rows", "96"}, "fill needs at least 160 rows, not 96"},
        {{"--out", out, "--image-format", "gif"}, "image format must be one of tif"},
        {{"--out", out, "--colour"}, "colour"},
        {{"--out", out, "leftover"}, "no use for \"leftover\""},
    };
    for (const auto& [arguments, reason] : cases) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments.join(' ').toStdString();
        EXPECT_THAT(outcome.errors, HasSubstr(reason));
        EXPECT_EQ(outcome.output, "");
    }
    EXPECT_FALSE(QDir(out).exists());
}

TEST(PhantomCommand, EndsWithOneAndNamesTheFileWhenWritingFails)
{
    const QTemporaryDir folder;
    QFile blocker(folder.filePath("blocker"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    const Outcome outcome = run({"--out", folder.filePath("blocker/below"), "--ascans", "2",
                                 "--rows", "2", "--bscans", "1"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("blocker/below: Not a directory"));
    EXPECT_EQ(outcome.output, "");
}

TEST(PhantomCommand, TellsHowItIsUsedAndItsVersion)
{
    const Outcome help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* option : {"--out", "--pattern", "--ascans", "--rows", "--bscans", "--eye",
                               "--kind", "--seed", "--image-format", "--noise", "--fill"}) {
        EXPECT_THAT(help.output, HasSubstr(option));
    }
    const Outcome version = run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "tessera-phantom " TESSERA_VERSION "\n");
}
