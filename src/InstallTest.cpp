#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

constexpr int longestMs = 120000;

/// Installs once for all tests, since it copies much.
class Installed : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_folder = new QTemporaryDir;
        QProcess install;
        install.start(QStringLiteral(TESSERA_CMAKE),
                      {QStringLiteral("--install"), QStringLiteral(TESSERA_BUILD_FOLDER),
                       QStringLiteral("--prefix"), prefix()});
        ASSERT_TRUE(install.waitForFinished(longestMs));
        ASSERT_EQ(install.exitCode(), 0) << install.readAllStandardError().toStdString();
    }
    static void TearDownTestSuite()
    {
        delete s_folder;
        s_folder = nullptr;
    }

    static QString prefix() { return s_folder->path() + QStringLiteral("/usr"); }
    static QString installed(const char* path)
    {
        return prefix() + QLatin1Char('/') + QString::fromLatin1(path);
    }

    /// A process that starts in a folder of its own.
    void start(QProcess& process, const char* link, const QStringList& arguments) const
    {
        process.setWorkingDirectory(m_elsewhere.path());
        process.start(installed(link), arguments);
        ASSERT_TRUE(process.waitForStarted(longestMs)) << process.errorString().toStdString();
    }

    QTemporaryDir m_elsewhere;
    static QTemporaryDir* s_folder;
};

QTemporaryDir* Installed::s_folder = nullptr;

TEST_F(Installed, ProgramsPluginsIconAndMenuEntryAreInPlace)
{
    for (const char* const path :
         {"lib/tessera/tessera", "lib/tessera/tessera-compare", "lib/tessera/tessera-phantom",
          "lib/tessera/tessera-segment", "lib/tessera/plugins/imageformats/libqtiff.so",
          "lib/tessera/plugins/platforms/libqxcb.so", "share/icons/hicolor/48x48/apps/tessera.png",
          "share/icons/hicolor/256x256/apps/tessera.png", "share/applications/tessera.desktop",
          "share/doc/tessera/copyright"}) {
        EXPECT_TRUE(QFileInfo(installed(path)).isFile()) << path;
    }
}

TEST_F(Installed, TheLinksInBinMoveWithTheFolder)
{
    for (const QString& name :
         {QStringLiteral("tessera"), QStringLiteral("tessera-compare"),
          QStringLiteral("tessera-phantom"), QStringLiteral("tessera-segment")}) {
        const QFileInfo link(prefix() + QStringLiteral("/bin/") + name);
        ASSERT_TRUE(link.isSymLink()) << name.toStdString();
        EXPECT_EQ(link.canonicalFilePath(),
                  QFileInfo(prefix() + QStringLiteral("/lib/tessera/") + name).canonicalFilePath());
        char target[256] = {};
        ASSERT_GT(
            ::readlink(QFile::encodeName(link.filePath()).constData(), target, sizeof(target) - 1),
            0);
        EXPECT_EQ(std::string(target), "../lib/tessera/" + name.toStdString());
    }
}

TEST_F(Installed, TheMenuEntryNamesAProgramAndAnIconThatAreThere)
{
    QFile entry(installed("share/applications/tessera.desktop"));
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = entry.readAll().split('\n');
    EXPECT_EQ(lines.first(), QByteArray("[Desktop Entry]"));
    EXPECT_TRUE(lines.contains("Type=Application"));
    EXPECT_TRUE(lines.contains("Exec=tessera"));
    EXPECT_TRUE(lines.contains("Icon=tessera"));
}

TEST_F(Installed, TheCommandStartsThroughItsLinkFromAnyFolder)
{
    QProcess command;
    start(command, "bin/tessera-segment", {QStringLiteral("--version")});
    ASSERT_TRUE(command.waitForFinished(longestMs));
    EXPECT_EQ(command.exitCode(), 0) << command.readAllStandardError().toStdString();
    EXPECT_TRUE(command.readAllStandardOutput().contains(TESSERA_VERSION));
}

TEST_F(Installed, TheApplicationStartsThroughItsLinkWithArgumentsItDoesNotKnowAndEndsWhenAsked)
{
    const QString store = m_elsewhere.path() + QStringLiteral("/store");
    qputenv("TESSERA_STORE", QFile::encodeName(store));
    QProcess application;
    start(application, "bin/tessera",
          {QStringLiteral("--no-such-option"), QStringLiteral("no-such-file.xml")});
    QElapsedTimer timer;
    timer.start();
    while (!QFileInfo(store + QStringLiteral("/lock")).exists() && timer.elapsed() < longestMs) {
        ASSERT_FALSE(application.waitForFinished(20))
            << application.readAllStandardError().toStdString();
    }
    application.terminate();
    ASSERT_TRUE(application.waitForFinished(longestMs));
    EXPECT_EQ(application.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(application.exitCode(), 0) << application.readAllStandardError().toStdString();
    const QByteArray traced = application.readAllStandardOutput();
    const QString plugins =
        QFileInfo(prefix()).canonicalFilePath() + QStringLiteral("/lib/tessera/plugins\n");
    EXPECT_TRUE(traced.contains(plugins.toUtf8())) << traced.toStdString();
    EXPECT_TRUE(traced.contains("done setting icon\n"));
}

} // namespace
