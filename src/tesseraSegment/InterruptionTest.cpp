#include "CommandFixture.h"
#include "ResultsFolder.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <csignal>

#include <sys/stat.h>

using kelp::command::FolderLock;
using kelp::command::test::CommandFixture;
using kelp::command::test::waitUntil;

namespace {

constexpr int longestMs = 300000;

/// A scan that is met in the middle, however long the test itself has to wait for its turn.
class Interruption : public CommandFixture
{
protected:
    /// Whoever reads the export waits for its last image, which never comes: a pipe stands in for
    /// the file.
    void makeEndless(const QString& folder) const
    {
        const QString image = lastImage(folder);
        ASSERT_TRUE(QFile::rename(image, image + ".away"));
        ASSERT_EQ(mkfifo(QFile::encodeName(image).constData(), S_IRUSR | S_IWUSR), 0);
    }
    void makeOrdinary(const QString& folder) const
    {
        const QString image = lastImage(folder);
        ASSERT_TRUE(QFile::remove(image));
        ASSERT_TRUE(QFile::rename(image + ".away", image));
    }
    QString writeEndlessExport(const QString& folder)
    {
        const QString xml = writeExport(folder);
        makeEndless(folder);
        return xml;
    }

    QString workingFolder() const
    {
        const QStringList names = QDir(results()).entryList(
            {".tessera-run-*"}, QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
        return names.isEmpty() ? QString() : results(names.first());
    }

    /// Whether a scan is being built.
    bool isBuilding() const
    {
        const QString folder = workingFolder();
        return !folder.isEmpty() &&
               !QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot).isEmpty();
    }

    /// The processes that a command has started.
    static QList<qint64> childrenOf(qint64 parent)
    {
        QList<qint64> children;
        for (const QString& name : QDir("/proc").entryList(QDir::Dirs)) {
            QFile status("/proc/" + name + "/stat");
            if (name.toLongLong() == 0 || !status.open(QIODevice::ReadOnly)) {
                continue;
            }
            const QByteArray text = status.readAll();
            const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
            if (fields.size() > 1 && fields[1].toLongLong() == parent && fields[0] != "Z") {
                children.append(name.toLongLong());
            }
        }
        return children;
    }

    static bool hasChild(const QProcess& process)
    {
        return !childrenOf(process.processId()).isEmpty();
    }

    QStringList visibleResults() const
    {
        return QDir(results()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

private:
    QString lastImage(const QString& folder) const
    {
        const QDir directory(path(folder));
        return directory.filePath(
            directory.entryList({"*.tif"}, QDir::AllEntries | QDir::System, QDir::Name).last());
    }
};

TEST_F(Interruption, KilledCommandLeavesNoFolderAndTheNextRunCleansUp)
{
    const QString xml = writeEndlessExport("in");
    const auto process = startSegmenting({xml});
    ASSERT_TRUE(waitUntil([&] { return isBuilding() && hasChild(*process); }));
    const auto children = childrenOf(process->processId());
    process->kill();
    ASSERT_TRUE(process->waitForFinished(longestMs));
    EXPECT_EQ(visibleResults(), QStringList());
    const QString leftover = workingFolder();
    EXPECT_FALSE(leftover.isEmpty());
    // The processes go with their command.
    EXPECT_TRUE(waitUntil([&children] {
        return std::none_of(children.begin(), children.end(),
                            [](qint64 id) { return kill(static_cast<pid_t>(id), 0) == 0; });
    }));

    makeOrdinary("in");
    EXPECT_EQ(segment({xml}).status, 0);
    EXPECT_EQ(resultNames(), QStringList({"export_100001", "summary.csv"}));
}

TEST_F(Interruption, LeftoversOfALivingRunStay)
{
    const QString xml = writeExport("in");
    const QString folder = results(".tessera-run-alive");
    ASSERT_TRUE(QDir().mkpath(folder + "/building"));
    ASSERT_TRUE(QDir().mkpath(results(".tessera-run-dead/building")));
    const FolderLock lock(folder, FolderLock::Wait::No);
    ASSERT_TRUE(lock.isHeld());
    EXPECT_EQ(segment({xml}).status, 0);
    EXPECT_EQ(resultNames(), QStringList({".tessera-run-alive", "export_100001", "summary.csv"}));
}

TEST_F(Interruption, KilledScanProcessFailsItsScanAlone)
{
    const QString first = writeEndlessExport("a");
    const QString second = writeExport("b");
    const auto process = startSegmenting({first, second});
    ASSERT_TRUE(waitUntil([&] { return hasChild(*process); }));
    const auto children = childrenOf(process->processId());
    ASSERT_EQ(children.size(), 1);
    kill(static_cast<pid_t>(children.first()), SIGKILL);
    ASSERT_TRUE(process->waitForFinished(longestMs));
    EXPECT_EQ(process->exitCode(), 1);
    const QString errors = QString::fromUtf8(process->readAllStandardError());
    EXPECT_TRUE(errors.contains(first)) << errors.toStdString();
    EXPECT_TRUE(errors.contains("ended by signal 9")) << errors.toStdString();
    const QByteArray summary = read(results("summary.csv"));
    EXPECT_EQ(summary.count(",segmented,"), 1);
    EXPECT_EQ(summary.count(",failed,"), 1);
    EXPECT_EQ(resultNames().filter(".tessera").size(), 0);
}

TEST_F(Interruption, SignalsEndTheRunAndCleanUp)
{
    const QString xml = writeEndlessExport("in");
    for (const int signal : {SIGINT, SIGTERM}) {
        const auto process = startSegmenting({xml});
        ASSERT_TRUE(waitUntil([this] { return isBuilding(); }));
        kill(static_cast<pid_t>(process->processId()), signal);
        ASSERT_TRUE(process->waitForFinished(longestMs));
        EXPECT_EQ(process->exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process->exitCode(), 128 + signal);
        EXPECT_EQ(resultNames(), QStringList());
    }
}

TEST_F(Interruption, FormerResultsStayUntilTheNewOnesAreWhole)
{
    const QString xml = writeExport("in");
    ASSERT_EQ(segment({xml}).status, 0);
    const auto before = filesBelow(results("export_100001"));
    makeEndless("in");
    const auto process = startSegmenting({"--force", xml});
    ASSERT_TRUE(waitUntil([this] { return isBuilding(); }));
    process->kill();
    ASSERT_TRUE(process->waitForFinished(longestMs));
    EXPECT_TRUE(filesBelow(results("export_100001")) == before);
}

} // namespace
