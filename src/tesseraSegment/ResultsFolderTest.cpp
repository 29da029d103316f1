#include "ResultsFolder.h"
#include "CommandFixture.h"
#include "kelpException.h"

#include <QDir>
#include <QFileInfo>

using namespace kelp::command;

namespace {

bool always(const QString& /*place*/)
{
    return true;
}

class ResultsFolders : public kelp::command::test::CommandFixture
{
};

TEST_F(ResultsFolders, MoveWholeFoldersToTheirPlace)
{
    {
        ResultsFolder folder(path("results"));
        const QString build = folder.makeBuildFolder("a");
        write(build + "/file", "new");
        EXPECT_FALSE(QFileInfo::exists(results("a")));
        folder.publish(build, "a", always);
        EXPECT_EQ(read(results("a/file")), "new");
    }
    EXPECT_EQ(resultNames(), QStringList({"a"}));
}

TEST_F(ResultsFolders, ReplaceWhatStandsThere)
{
    ASSERT_TRUE(QDir().mkpath(results("a")));
    write(results("a/old"), "old");
    {
        ResultsFolder folder(path("results"));
        const QString build = folder.makeBuildFolder("a");
        write(build + "/file", "new");
        folder.publish(build, "a", always);
    }
    EXPECT_EQ(filesBelow(results()).size(), 1U);
    EXPECT_EQ(read(results("a/file")), "new");
}

TEST_F(ResultsFolders, DoNotReplaceWhatIsNotTheirs)
{
    ASSERT_TRUE(QDir().mkpath(results("a")));
    write(results("a/old"), "old");
    {
        ResultsFolder folder(path("results"));
        const QString build = folder.makeBuildFolder("a");
        EXPECT_THROW(folder.publish(build, "a", [](const QString&) { return false; }),
                     kelp::IOFailure);
    }
    EXPECT_EQ(read(results("a/old")), "old");
}

TEST_F(ResultsFolders, LeaveTheWorkOfOtherRunsAlone)
{
    ResultsFolder first(path("results"));
    const QString build = first.makeBuildFolder("a");
    {
        const ResultsFolder second(path("results"));
        EXPECT_TRUE(QFileInfo::exists(build));
    }
    EXPECT_TRUE(QFileInfo::exists(build));
    EXPECT_EQ(resultNames().size(), 1);
}

TEST_F(ResultsFolders, RemoveWhatAKilledRunLeft)
{
    ASSERT_TRUE(QDir().mkpath(results(".tessera-run-x/a/pictures")));
    write(results(".tessera-run-x/a/file"), "half");
    const ResultsFolder folder(path("results"));
    EXPECT_FALSE(QFileInfo::exists(results(".tessera-run-x")));
}

TEST_F(ResultsFolders, SayWhyTheyCannotBeMade)
{
    write("file", "");
    try {
        const ResultsFolder folder(path("file/below"));
        FAIL();
    } catch (const kelp::IOFailure& failure) {
        EXPECT_TRUE(QString(failure.what()).contains(path("file/below"))) << failure.what();
    }
}

} // namespace
