#include "ExchangeFiles.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace kelp::exchange;
using kelp::URI;

LocatedFile locateAmong(const QString& uri, const QSet<QString>& paths)
{
    return locate(URI(uri), [&paths](const QString& path) { return paths.contains(path); });
}

TEST(ExchangeFiles, FindsTheFileThatAUriNamesHoweverItIsWritten)
{
    EXPECT_EQ(locateAmong("file++hra:/a%20b/e.xml?seriesId=5", {"/a b/e.xml"}).path,
              QString("/a b/e.xml"));
    EXPECT_EQ(locateAmong("file++dummy:/a%20b.png", {"/a%20b.png"}).path, QString("/a%20b.png"))
        << "written without encoding";
    const LocatedFile backslashes = locateAmong("file++dummy:\\a\\b.png", {"/a/b.png"});
    EXPECT_EQ(backslashes.path, QString("/a/b.png"));
    EXPECT_TRUE(backslashes.hasBackslashes);
    const LocatedFile named = locateAmong("file++dummy:/a\\b.png", {"/a\\b.png", "/a/b.png"});
    EXPECT_EQ(named.path, QString("/a\\b.png")) << "a name may hold a backslash";
    EXPECT_FALSE(named.hasBackslashes);
}

TEST(ExchangeFiles, NamesTheLikeliestPathOfAFileThatIsGone)
{
    EXPECT_EQ(locateAmong("file++hra:/a%20b.xml", {}).path, QString("/a b.xml"));
    EXPECT_EQ(locateAmong("file++dummy:\\a\\b.png", {}).path, QString("/a/b.png"));
    EXPECT_EQ(locateAmong("file++hra:?seriesId=5", {}).path, QString());
    EXPECT_EQ(locateAmong("", {}).path, QString());
}

TEST(ExchangeFiles, ARelocatedUriKeepsSchemeQueryAndItsKindOfSlashes)
{
    const URI scan("file++hra:/a/e.xml?seriesId=5%267");
    const URI moved = relocated(scan, {"/a/e.xml", false}, "/100%41 ?/e.xml");
    EXPECT_EQ(moved.codecScheme(), QString("hra"));
    EXPECT_EQ(moved.path(), QString("/100%41 ?/e.xml"));
    EXPECT_EQ(moved.queryItem("seriesId"), QString("5&7"));
    EXPECT_EQ(relocated(URI("file++dummy:\\a\\b"), {"/a/b", true}, "/c/d").toString(),
              QString("file++dummy:\\c\\d"));
    EXPECT_EQ(relocated(URI("/a/b"), {"/a/b", false}, "/c/d").toString(), QString("/c/d"));
}

TEST(ExchangeFiles, RewritesTheUrisOfAWholeTreeAndNothingElse)
{
    DataTreeNode root;
    root.setAttribute("Id", "file:/not/a/uri/here");
    root.setAttribute("URI/OCTScanURI", "file++hra:/a");
    root.createChild("Item")->createChild("Scan")->setAttribute("URI/SliceImage0", "file:/b");
    rewriteUris(root, [](const URI& uri) { return URI(uri.toString() + "!"); });
    EXPECT_EQ(root.getAttribute("Id"), QString("file:/not/a/uri/here"));
    EXPECT_EQ(root.getAttribute("URI/OCTScanURI"), QString("file++hra:/a!"));
    EXPECT_EQ(root.getChild("Item")->getChild("Scan")->getAttribute("URI/SliceImage0"),
              QString("file:/b!"));
}

TEST(ExchangeFiles, ACopyIsDigestedAndNeverWrittenOverAFile)
{
    const QTemporaryDir folder;
    const QString source = folder.filePath("source");
    const QString target = folder.filePath("target");
    // Known from the standard's own examples.
    EXPECT_EQ(writeNewFile(source, "abc").sha256,
              QByteArray("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
    EXPECT_EQ(copyFile(source, target).size, 3);
    EXPECT_THROW(copyFile(source, target), kelp::IOFailure);
    EXPECT_THROW(copyFile(folder.filePath("gone"), folder.filePath("new")), SourceFailure);
    EXPECT_THROW(copyFile("/dev/zero", folder.filePath("new")), SourceFailure)
        << "it would never end";
    EXPECT_FALSE(QFile::exists(folder.filePath("new")));
}

TEST(ExchangeFiles, FoldersGetAUsableNameThatIsFree)
{
    const QTemporaryDir folder;
    const QString root = QDir(folder.path()).canonicalPath();
    EXPECT_EQ(makeFolder(root, "scans"), root + "/scans");
    EXPECT_EQ(makeFolder(root, "scans"), root + "/scans_2");
    EXPECT_EQ(makeFolder(root, "a/b"), root + "/a_b");
    EXPECT_EQ(makeFolder(root, ".."), root + "/files");
    EXPECT_EQ(makeFolder(root, ""), root + "/files_2");
}

} // namespace
