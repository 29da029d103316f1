#include "ExportList.h"
#include "CommandFixture.h"

#include <QDir>
#include <QFileInfo>

using kelp::command::collectExports;

namespace {

class ExportListing : public kelp::command::test::CommandFixture
{
protected:
    void touch(const QString& file) const
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path(file)).path()));
        write(file, "");
    }

    QStringList below(const kelp::command::ExportList& list) const
    {
        const QDir folder(QFileInfo(path(".")).canonicalFilePath());
        QStringList names;
        for (const QString& file : list.files) {
            names.append(folder.relativeFilePath(file));
        }
        return names;
    }
};

TEST_F(ExportListing, FindsEveryXmlFileBelowAFolderInOrder)
{
    for (const char* file : {"b.xml", "a/z.XML", "a/b/c.xml", "a/image.tif", "c.xml.bak"}) {
        touch(file);
    }
    const auto list = collectExports({path(".")}, {});
    EXPECT_EQ(below(list), QStringList({"a/b/c.xml", "a/z.XML", "b.xml"}));
    EXPECT_TRUE(list.problems.isEmpty());
}

TEST_F(ExportListing, FollowsLinksOnce)
{
    touch("real/a.xml");
    ASSERT_TRUE(QFile::link(path("real"), path("linked")));
    ASSERT_TRUE(QFile::link(path("."), path("real/loop")));
    ASSERT_TRUE(QFile::link(path("real/a.xml"), path("b.xml")));
    EXPECT_EQ(below(collectExports({path(".")}, {})), QStringList({"real/a.xml"}));
    EXPECT_EQ(below(collectExports({path("linked"), path("real/a.xml"), path("b.xml")}, {})),
              QStringList({"real/a.xml"}));
}

TEST_F(ExportListing, KeepsOutOfTheResultsAndTheStore)
{
    touch("a.xml");
    touch("store/b.xml");
    EXPECT_EQ(below(collectExports({path(".")}, {path("store"), QString()})),
              QStringList({"a.xml"}));
    EXPECT_EQ(below(collectExports({path("store/b.xml")}, {path("store")})),
              QStringList({"store/b.xml"}));
}

TEST_F(ExportListing, TellsWhatGivesNothing)
{
    ASSERT_TRUE(QDir().mkpath(path("empty")));
    const auto list = collectExports({path("empty"), path("missing.xml")}, {});
    ASSERT_EQ(list.problems.size(), 2);
    EXPECT_EQ(list.problems[0].input, path("empty"));
    EXPECT_EQ(list.problems[0].reason, "The folder holds no XML file.");
    EXPECT_EQ(list.problems[1].input, path("missing.xml"));
    EXPECT_EQ(list.problems[1].reason, "There is no such file or folder.");
}

} // namespace
