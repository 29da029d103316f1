#include "ExportCollector.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kelp::oct {

namespace {

class ExportCollectorTest : public testing::Test
{
protected:
    void write(const QString& name) const
    {
        const QString path = m_folder.filePath(name);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    /// Relative to the folder.
    QStringList collect(const QString& folder) const
    {
        const auto paths = collectExports(folder, [] { return true; });
        EXPECT_TRUE(paths.has_value());
        QStringList names;
        for (const QString& path : paths.value_or(QStringList())) {
            names.append(QDir(m_folder.path()).relativeFilePath(path));
        }
        return names;
    }

    QTemporaryDir m_folder;
};

TEST_F(ExportCollectorTest, FindsEachFileOfTheFolderAndBelowItOnce)
{
    for (const char* const name : {"b.xml", "a.xml", "x/c.xml", "x/y/z/d.xml", "e/f.xml"}) {
        write(QLatin1String(name));
    }
    // Those of the folder itself come first, the others by their paths.
    EXPECT_EQ(collect(m_folder.path()),
              QStringList({"a.xml", "b.xml", "e/f.xml", "x/c.xml", "x/y/z/d.xml"}));
}

TEST_F(ExportCollectorTest, TakesFilesByTheirEndingAlone)
{
    write("upper.XML");
    write("no.xml.txt");
    write("xml");
    write("x/image.tif");
    EXPECT_EQ(collect(m_folder.path()), QStringList{"upper.XML"});
}

TEST_F(ExportCollectorTest, AFolderWithoutFilesCountsForWhatIsBelowIt)
{
    write("x/y/d.xml");
    EXPECT_EQ(collect(m_folder.path()), QStringList{"x/y/d.xml"});
    EXPECT_EQ(collect(m_folder.filePath("x")), QStringList{"x/y/d.xml"});
    EXPECT_EQ(collect(m_folder.filePath("gone")), QStringList());
}

TEST_F(ExportCollectorTest, AnEmptyPathIsTheCurrentFolder)
{
    write("a.xml");
    write("x/b.xml");
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_folder.path()));
    EXPECT_EQ(collect(QString()), QStringList({"a.xml", "x/b.xml"}));
    QDir::setCurrent(before);
}

TEST_F(ExportCollectorTest, AFileThatIsReachedTwiceCountsOnce)
{
    write("a.xml");
    write("x/b.xml");
    ASSERT_TRUE(QFile::link(m_folder.filePath("a.xml"), m_folder.filePath("x/again.xml")));
    ASSERT_TRUE(QFile::link(m_folder.filePath("x"), m_folder.filePath("link")));
    EXPECT_EQ(collect(m_folder.path()), QStringList({"a.xml", "x/b.xml"}));
}

TEST_F(ExportCollectorTest, FoldersThatAreLinkedInACircleDoNotKeepItGoing)
{
    write("x/b.xml");
    ASSERT_TRUE(QFile::link(m_folder.path(), m_folder.filePath("x/up")));
    EXPECT_EQ(collect(m_folder.path()), QStringList{"x/b.xml"});
}

TEST_F(ExportCollectorTest, StopsWhenItIsTold)
{
    for (int i = 0; i < 20; ++i) {
        write(QStringLiteral("%1/a.xml").arg(i));
    }
    int asked = 0;
    EXPECT_FALSE(collectExports(m_folder.path(), [&asked] { return ++asked < 3; }));
    EXPECT_EQ(asked, 3);
}

} // namespace

} // namespace kelp::oct
