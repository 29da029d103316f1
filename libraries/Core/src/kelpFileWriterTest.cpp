#include "kelpFileWriter.h"
#include "kelpException.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

class FileWriter : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return m_directory.filePath(name); }

    QByteArray content(const QString& name) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    QStringList names() const
    {
        return QDir(m_directory.path()).entryList(QDir::Files | QDir::Hidden | QDir::System);
    }

    QTemporaryDir m_directory;
};

QString failureOf(const QString& path)
{
    try {
        kelp::writeFileAtomically(path, "x");
    } catch (const kelp::IOFailure& failure) {
        return failure.getMessage();
    }
    return QString();
}

TEST_F(FileWriter, WritesAndReplacesAndLeavesNothingElse)
{
    kelp::writeFileAtomically(path("a.txt"), "first");
    kelp::writeFileAtomically(path("a.txt"), "second");
    EXPECT_EQ(content("a.txt"), QByteArray("second"));
    EXPECT_EQ(names(), QStringList{"a.txt"});
}

TEST_F(FileWriter, TheFormerContentStaysUntilTheCommit)
{
    kelp::writeFileAtomically(path("a.txt"), "first");
    {
        kelp::AtomicFile file(path("a.txt"));
        file.write("sec");
        EXPECT_EQ(content("a.txt"), QByteArray("first"));
        file.write("ond");
        EXPECT_EQ(content("a.txt"), QByteArray("first"));
    }
    EXPECT_EQ(content("a.txt"), QByteArray("first"));
    EXPECT_EQ(names(), QStringList{"a.txt"});
}

TEST_F(FileWriter, TwoWritersOfOnePathDoNotMix)
{
    kelp::AtomicFile first(path("a.txt"));
    kelp::AtomicFile second(path("a.txt"));
    first.write("first");
    second.write("second");
    first.commit();
    EXPECT_EQ(content("a.txt"), QByteArray("first"));
    second.commit();
    EXPECT_EQ(content("a.txt"), QByteArray("second"));
}

TEST_F(FileWriter, FollowsLinksAndKeepsTheRightsOfTheFile)
{
    kelp::writeFileAtomically(path("target.txt"), "first");
    ASSERT_TRUE(QFile::setPermissions(path("target.txt"), QFile::ReadOwner | QFile::WriteOwner));
    ASSERT_TRUE(QFile::link(path("target.txt"), path("link.txt")));
    kelp::writeFileAtomically(path("link.txt"), "second");
    EXPECT_TRUE(QFileInfo(path("link.txt")).isSymLink());
    EXPECT_EQ(content("target.txt"), QByteArray("second"));
    struct stat status = {};
    ASSERT_EQ(stat(QFile::encodeName(path("target.txt")).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST_F(FileWriter, NamesThePathAndTheReasonOfAFailure)
{
    kelp::writeFileAtomically(path("file"), "x");
    EXPECT_TRUE(failureOf(path("missing/a.txt")).contains("No such file"));
    EXPECT_TRUE(failureOf(path("missing/a.txt")).contains(path("missing/a.txt")));
    EXPECT_TRUE(failureOf(path("file/a.txt")).contains("Not a directory"));
    EXPECT_TRUE(failureOf(m_directory.path()).contains("Is a directory"));
}

TEST_F(FileWriter, DoesNotReplaceADevice)
{
    const QByteArray pipe = QFile::encodeName(path("pipe"));
    ASSERT_EQ(mkfifo(pipe.constData(), 0600), 0);
    EXPECT_TRUE(failureOf(path("pipe")).contains("Invalid argument"));
    EXPECT_FALSE(failureOf("/dev/full").isEmpty());
    struct stat status = {};
    ASSERT_EQ(stat(pipe.constData(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
}

TEST_F(FileWriter, LongNamesAreWritten)
{
    const QString name = QString(250, 'n');
    kelp::writeFileAtomically(path(name), "x");
    EXPECT_EQ(content(name), QByteArray("x"));
}

TEST_F(FileWriter, LeftoversOfKilledRunsAreFoundByTheirName)
{
    QString leftover;
    {
        kelp::AtomicFile file(path("a.txt"));
        leftover = names().front();
    }
    QFile file(path(leftover));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    kelp::writeFileAtomically(path("b.txt"), "x");
    kelp::AtomicFile::removeLeftovers(m_directory.path());
    EXPECT_EQ(names(), QStringList{"b.txt"});
}

} // namespace
