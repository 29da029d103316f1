#include "OutFolder.h"
#include "CompareTestTools.h"
#include "FileExchange.h"
#include "kelpException.h"

#include <QDirIterator>

#include <cstdlib>
#include <map>

using namespace kelp::compare;
using namespace kelp::compare::test;

namespace {

class OutFolderTest : public FolderFixture
{
protected:
    /// All files below the folder with their contents; hidden ones too.
    std::map<QString, QByteArray> contents(const QString& folder) const
    {
        std::map<QString, QByteArray> files;
        QDirIterator all(path(folder), QDir::Files | QDir::Hidden | QDir::System,
                         QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString file = QDir(path(folder)).relativeFilePath(all.next());
            files[file] = all.fileInfo().exists() ? read(folder + '/' + file) : "leads nowhere";
        }
        return files;
    }

    QStringList names(const QString& folder) const
    {
        return QDir(path(folder))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    /// A comparison that writes these files, each with the content.
    void compare(const QString& folder, const QStringList& files, const QByteArray& content) const
    {
        OutFolder out(path(folder), files);
        fill(out, files, content);
        out.publish(recordOf(files));
    }

    static void fill(OutFolder& out, const QStringList& files, const QByteArray& content)
    {
        for (const QString& file : files) {
            out.appendText(file, content);
        }
    }

    static QByteArray recordOf(const QStringList& files)
    {
        return R"({"program": "tessera-compare", "files": [")" + files.join("\", \"").toUtf8() +
               "\"]}";
    }

    static std::map<QString, QByteArray> comparison(const QStringList& files,
                                                    const QByteArray& content)
    {
        std::map<QString, QByteArray> all{{"compare.json", recordOf(files)}};
        for (const QString& file : files) {
            all[file] = content;
        }
        return all;
    }
};

TEST_F(OutFolderTest, HoldsTheFilesOfTheLastOfSeveralComparisonsAndWhatOthersPutThere)
{
    const QStringList first{"surfaces.csv", "one/difference_ILM.png", "two/difference_ILM.png"};
    const QStringList second{"surfaces.csv", "agreement.csv", "two/difference_BM.png"};
    const QStringList third{"surfaces.csv", "difference_ILM.png"};
    compare("new/out", first, "1");
    EXPECT_EQ(contents("new/out"), comparison(first, "1"));
    write("new/out/notes.txt", "mine");
    write("new/out/two/mine.csv", "mine");
    for (const auto& [files, content] : {std::pair(second, "2"), std::pair(third, "3")}) {
        compare("new/out", files, content);
        auto expected = comparison(files, content);
        expected["notes.txt"] = "mine";
        expected["two/mine.csv"] = "mine";
        EXPECT_EQ(contents("new/out"), expected);
    }
    // The folder that only comparisons used is gone with their files.
    EXPECT_EQ(names("new/out"), (QStringList{"compare.json", "difference_ILM.png", "notes.txt",
                                             "surfaces.csv", "two"}));
}

TEST_F(OutFolderTest, TakesNothingOutsideForItsOwnWhateverTheRecordSays)
{
    write("new/mine.csv", "mine");
    write("elsewhere/mine.csv", "mine");
    write("new/out/notes.txt", "mine");
    ASSERT_TRUE(QDir().mkpath(path("new/out/folder.csv")));
    ASSERT_TRUE(QFile::link(path("elsewhere"), path("new/out/link")));
    write("new/out/compare.json", recordOf({"../mine.csv", path("new/mine.csv"), "notes.txt",
                                            "folder.csv", "link/mine.csv", "gone.csv"}));
    compare("new/out", {"surfaces.csv"}, "1");
    EXPECT_EQ(read("new/mine.csv"), "mine");
    EXPECT_EQ(read("elsewhere/mine.csv"), "mine");
    EXPECT_EQ(read("new/out/notes.txt"), "mine");
    EXPECT_TRUE(QFileInfo(path("new/out/folder.csv")).isDir());
}

TEST_F(OutFolderTest, WithOtherFilesIsRefused)
{
    write("full/run.json", "{}");
    write("hidden/.x", "");
    write("other/compare.json", "{\"program\": \"else\"}");
    for (const char* name : {"full", "hidden", "other"}) {
        const auto before = contents(name);
        expectFailure([&] { OutFolder(path(name), {}); }, "The folder holds other files");
        EXPECT_EQ(contents(name), before);
    }
    expectFailure([this] { OutFolder(path("full/run.json"), {}); }, "This is a file");
    ASSERT_TRUE(QDir().mkpath(path("empty")));
    compare("empty", {"surfaces.csv"}, "1");
    EXPECT_EQ(read("empty/surfaces.csv"), "1");
}

TEST_F(OutFolderTest, ThatCannotBeWrittenIsRefusedBeforeTheWork)
{
    write("file", "");
    expectFailure([this] { OutFolder(path("file/below"), {}); }, "file/below: ");
    expectFailure([] { OutFolder("/proc/nowhere", {}); }, "/proc/nowhere: ");
    expectFailure([this] { OutFolder(path(QString(300, 'x')), {}); }, "cannot be made");
}

TEST_F(OutFolderTest, IsRefusedBeforeTheWorkWhereAForeignFileStandsInTheWay)
{
    const QStringList former{"surfaces.csv"};
    compare("out", former, "1");
    write("out/bland_altman_ONL.png", "mine");
    write("out/scan", "mine");
    ASSERT_TRUE(QFile::link(path("nowhere"), path("out/bscans.csv")));
    ASSERT_TRUE(QDir().mkpath(path("elsewhere")));
    ASSERT_TRUE(QFile::link(path("elsewhere"), path("out/linked")));
    const auto before = contents("out");
    for (const char* name : {"bland_altman_ONL.png", "bscans.csv"}) {
        expectFailure(
            [&] {
                OutFolder(path("out"), {"surfaces.csv", name});
            },
            std::string(name) + ": There is such a file already");
    }
    for (const char* name : {"scan", "linked"}) {
        expectFailure([&] { OutFolder(path("out"), {QString("%1/difference_ILM.png").arg(name)}); },
                      "The comparison makes a folder of this name");
    }
    EXPECT_EQ(contents("out"), before);
}

TEST_F(OutFolderTest, KeepsTheFormerComparisonWhereAForeignFileComesInTheWayMeanwhile)
{
    const QStringList files{"surfaces.csv", "bscans.csv"};
    compare("out", {"surfaces.csv"}, "1");
    auto expected = comparison({"surfaces.csv"}, "1");
    {
        OutFolder out(path("out"), files);
        fill(out, files, "2");
        write("out/bscans.csv", "mine");
        expectFailure([&] { out.publish(recordOf(files)); }, "There is such a file already");
    }
    expected["bscans.csv"] = "mine";
    EXPECT_EQ(contents("out"), expected);
    EXPECT_EQ(names("out"), (QStringList{"bscans.csv", "compare.json", "surfaces.csv"}));
}

TEST_F(OutFolderTest, KeepsTheFormerComparisonWhereTheNewOneIsNotFinished)
{
    const QStringList files{"surfaces.csv", "one/difference_ILM.png"};
    compare("out", files, "1");
    {
        OutFolder out(path("out"), files);
        fill(out, files, "2");
        EXPECT_EQ(read("out/surfaces.csv"), "1");
    }
    EXPECT_EQ(contents("out"), comparison(files, "1"));
}

TEST_F(OutFolderTest, IsNotLeftBehindByAComparisonThatIsNotFinished)
{
    ASSERT_TRUE(QDir().mkpath(path("mine")));
    {
        OutFolder out(path("mine/new/out"), {});
        out.appendText("surfaces.csv", "1");
    }
    EXPECT_TRUE(names("mine").isEmpty());
}

TEST_F(OutFolderTest, GivesWayToTheComparisonThatEndsLast)
{
    OutFolder first(path("out"), {"surfaces.csv", "bscans.csv"});
    OutFolder second(path("out"), {"surfaces.csv", "sectors.csv"});
    fill(first, {"surfaces.csv", "bscans.csv"}, "1");
    fill(second, {"surfaces.csv", "sectors.csv"}, "2");
    first.publish(recordOf({"surfaces.csv", "bscans.csv"}));
    second.publish(recordOf({"surfaces.csv", "sectors.csv"}));
    EXPECT_EQ(read("out/surfaces.csv"), "2");
    EXPECT_FALSE(QFileInfo::exists(path("out/bscans.csv")));
}

TEST_F(OutFolderTest, IsClearedOfWhatAKilledRunLeft)
{
    // Killed while it made its files, in a new folder.
    write("out/.tessera-run-dead/new/surfaces.csv", "half");
    compare("out", {"surfaces.csv"}, "1");
    EXPECT_EQ(contents("out"), comparison({"surfaces.csv"}, "1"));
}

class FileExchangeTest : public OutFolderTest
{
protected:
    /// The former files say "1", the new ones "2".
    void SetUp() override
    {
        compare("out", former, "1");
        for (const QString& file : written) {
            write("fresh/" + file, "2");
        }
        write("fresh/compare.json", recordOf(written));
        ASSERT_TRUE(QDir().mkpath(path("aside")));
    }

    const QStringList former{"surfaces.csv", "old/difference_ILM.png"};
    const QStringList written{"surfaces.csv", "new/difference_ILM.png", "sectors.csv"};
};

TEST_F(FileExchangeTest, MovesAllBackWhereOneFileCannotBeMoved)
{
    ASSERT_TRUE(QFile::remove(path("fresh/sectors.csv")));
    expectFailure(
        [this] { FileExchange(path("out"), path("aside")).run(former, path("fresh"), written); },
        "sectors.csv: ");
    EXPECT_EQ(contents("out"), comparison(former, "1"));
    EXPECT_EQ(names("out"), (QStringList{"compare.json", "old", "surfaces.csv"}));
}

TEST_F(FileExchangeTest, KilledAtAnyMoveLeavesAFolderWhoseFilesTheNextComparisonKnows)
{
    for (const char* stop : {"out/old/difference_ILM.png", "fresh/surfaces.csv",
                             "fresh/new/difference_ILM.png", "fresh/compare.json"}) {
        SetUp();
        ASSERT_TRUE(QFile::remove(path(stop)));
        // The process is gone before anything could be moved back.
        EXPECT_EXIT(
            {
                FileExchange exchange(path("out"), path("aside"));
                try {
                    exchange.run(former, path("fresh"), written);
                } catch (const kelp::IOFailure&) {
                    std::_Exit(0);
                }
                std::_Exit(1);
            },
            testing::ExitedWithCode(0), "");
        EXPECT_NE(contents("out"), comparison(former, "1"));
        compare("out", {"surfaces.csv", "agreement.csv"}, "3");
        EXPECT_EQ(contents("out"), comparison({"surfaces.csv", "agreement.csv"}, "3")) << stop;
        ASSERT_TRUE(QDir(path("aside")).removeRecursively());
        ASSERT_TRUE(QDir(path("fresh")).removeRecursively());
    }
}

} // namespace
