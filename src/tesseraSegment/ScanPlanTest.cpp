#include "ScanPlan.h"
#include "CommandFixture.h"
#include "RunRecord.h"

#include <QDir>
#include <QSet>

#include <algorithm>

using namespace kelp::command;

namespace {

ScanJob job(const QString& input, const QString& series)
{
    ScanJob result;
    result.input = input;
    result.series = series;
    return result;
}

class FolderChoice : public kelp::command::test::CommandFixture
{
protected:
    QStringList foldersOf(QList<ScanJob> jobs) const
    {
        assignFolders(jobs, path("results"));
        QStringList folders;
        for (const ScanJob& each : jobs) {
            folders.append(each.folder);
        }
        return folders;
    }

    /// As if the job had been segmented into this folder.
    void putResults(const ScanJob& each, const QString& folder) const
    {
        ASSERT_TRUE(QDir().mkpath(path("results/" + folder)));
        RunRecord record;
        record.input = each.input;
        record.series = each.series;
        write("results/" + folder + "/run.json", record.toJson());
    }
};

TEST_F(FolderChoice, NamesFoldersAfterExportAndSeries)
{
    EXPECT_EQ(foldersOf({job("/d/scan one.v2.xml", "12/3")}), QStringList({"scan_one.v2_12_3"}));
}

TEST_F(FolderChoice, DoesNotHideFolders)
{
    EXPECT_EQ(foldersOf({job("/d/..xml", "1")}), QStringList({"__1"}));
}

TEST_F(FolderChoice, TellsNamesApartThatOnlyFoldingMakesEqual)
{
    const auto folders = foldersOf({job("/d/a b.xml", "1"), job("/d/a_b.xml", "1"),
                                    job("/d/a.xml", "b_1"), job("/d/A_B.xml", "1")});
    EXPECT_EQ(QSet<QString>(folders.begin(), folders.end()).size(), 4);
    for (const QString& folder : folders) {
        EXPECT_TRUE(folder.toLower().startsWith("a_b_1-")) << folder.toStdString();
    }
}

TEST_F(FolderChoice, DoesNotDependOnTheOrder)
{
    const QList<ScanJob> jobs{job("/a/e.xml", "1"), job("/b/e.xml", "1"), job("/c/f.xml", "1")};
    QStringList forwards = foldersOf(jobs);
    QStringList backwards = foldersOf({jobs[2], jobs[1], jobs[0]});
    std::reverse(backwards.begin(), backwards.end());
    EXPECT_EQ(forwards, backwards);
    EXPECT_EQ(forwards[2], "f_1");
}

TEST_F(FolderChoice, FindsFormerResultsUnderEitherName)
{
    const QList<ScanJob> jobs{job("/a/e.xml", "1"), job("/b/e.xml", "1")};
    const QStringList hashed = foldersOf(jobs);
    putResults(jobs[0], "e_1");
    putResults(jobs[1], hashed[1]);
    EXPECT_EQ(foldersOf(jobs), QStringList({"e_1", hashed[1]}));
    EXPECT_EQ(foldersOf({jobs[1]}), QStringList({hashed[1]}));
    QList<ScanJob> found{jobs[1]};
    assignFolders(found, path("results"));
    EXPECT_TRUE(found[0].isThere);
    EXPECT_EQ(found[0].record.input, "/b/e.xml");
}

TEST_F(FolderChoice, LeavesFoldersOfOthersAlone)
{
    ASSERT_TRUE(QDir().mkpath(path("results/e_1")));
    QList<ScanJob> jobs{job("/a/e.xml", "1")};
    assignFolders(jobs, path("results"));
    EXPECT_TRUE(jobs[0].folder.startsWith("e_1-"));
    EXPECT_TRUE(jobs[0].problem.isEmpty());
    ASSERT_TRUE(QDir().mkpath(path("results/" + jobs[0].folder)));
    assignFolders(jobs, path("results"));
    EXPECT_TRUE(jobs[0].problem.contains("holds no whole results"));
}

TEST_F(FolderChoice, KeepsLongNamesWithinWhatFileSystemsTake)
{
    const QString stem = QString("/d/") + QString(QChar(0xe4)).repeated(120);
    const auto folders = foldersOf({job(stem + "1.xml", "1"), job(stem + "2.xml", "1")});
    EXPECT_NE(folders[0], folders[1]);
    EXPECT_LT(folders[0].toUtf8().size(), 255);
}

} // namespace
