#include "ExportDocument.h"

#include "ExpectFailure.h"
#include "TestProcessorTime.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kelp::oct::exportDocument {

using test::failureText;

namespace {

QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes)
{
    QFile file(dir.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return file.fileName();
}

QString parseFailure(const QString& text)
{
    return failureText<ParsingError>([&] { parse(text); });
}

TEST(ExportDocument, IsReadAsLatin1WhateverItDeclares)
{
    const QTemporaryDir dir;
    const QString path =
        writeFile(dir, "e.xml", "<?xml version='1.0' encoding='UTF-8'?><a>M\xc3\xbcller</a>");
    EXPECT_EQ(read(path).documentElement().text(), QString::fromLatin1("M\xc3\xbcller"));
}

TEST(ExportDocument, ThatCannotBeReadNamesTheFileAndTheReason)
{
    const QTemporaryDir dir;
    const QString missing = dir.filePath("missing.xml");
    EXPECT_EQ(failureText<IOFailure>([&] { read(missing); }),
              QString("The file %1 cannot be opened: No such file or directory.").arg(missing));
    EXPECT_EQ(failureText<IOFailure>([&] { read(dir.path()); }),
              QString("%1 is not a file.").arg(dir.path()));
    EXPECT_EQ(failureText<IOFailure>([] { read("/dev/zero"); }), "/dev/zero is not a file.");
}

TEST(ExportDocument, FarTooLargeForAnExportIsRefusedUnread)
{
    const QTemporaryDir dir;
    const QString path = writeFile(dir, "large.xml", "<a/>");
    // A hole: the file takes no room on the disk.
    ASSERT_TRUE(QFile::resize(path, Q_INT64_C(1) << 40));
    EXPECT_EQ(failureText<IOFailure>([&] { read(path); }),
              QString("The file %1 is too large for an export.").arg(path));
}

TEST(ExportDocument, ThatIsNoXmlNamesTheFileAndTheReason)
{
    const QTemporaryDir dir;
    const QString path = writeFile(dir, "empty.xml", "");
    EXPECT_EQ(failureText<ParsingError>([&] { read(path); }),
              QString("The file %1 is no usable XML: it is empty.").arg(path));
    for (const char* bytes : {"plain words", "<HEDX><BODY></HEDX>", "<HEDX><BODY>", "\x01\x02",
                              "<html><body><p>404<br></body></html>", "<a", "<", "\xff\xfe<\0a"}) {
        const QString bad = writeFile(dir, "bad.xml", bytes);
        EXPECT_TRUE(failureText<ParsingError>([&] {
                        read(bad);
                    }).startsWith(QString("The file %1 is no usable XML: ").arg(bad)))
            << bytes;
    }
}

TEST(ExportDocument, WithAByteOrderMarkIsRefusedInPlainWords)
{
    EXPECT_EQ(parseFailure(QString::fromLatin1("\xef\xbb\xbf<a/>")),
              "it begins with a byte order mark, which no export does");
}

TEST(ExportDocument, WithEntitiesIsRefusedBeforeTheyAreExpanded)
{
    // One long entity, named often, stays below the parser's own limit and takes gigabytes.
    const QString body = QString("&a;").repeated(1000000);
    const QString bomb =
        QString("<!DOCTYPE x [<!ENTITY a \"%1\">]><x>%2</x>").arg(QString(4000, 'a'), body);
    const double start = kelp::test::processorSeconds();
    EXPECT_EQ(parseFailure(bomb), "it declares entities, which no export does");
    EXPECT_LT(kelp::test::processorSeconds() - start, 5.0);
    EXPECT_EQ(parseFailure("<!DOCTYPE x [<!-- > --><!ENTITY % p \"a\">]><x/>"),
              "it declares entities, which no export does");
}

TEST(ExportDocument, MayNameADocumentTypeAndQuoteMarkup)
{
    EXPECT_EQ(parse("<!DOCTYPE HEDX SYSTEM \"hedx.dtd\"><HEDX>1</HEDX>").documentElement().text(),
              "1");
    EXPECT_EQ(parse("<a><!-- <!ENTITY --><![CDATA[<!ENTITY <b>]]></a>").documentElement().text(),
              "<!ENTITY <b>");
    EXPECT_EQ(parse("<a x=\"1 > 0\" y='/>'><b c='>'/>2</a>").documentElement().text(), "2");
}

TEST(ExportDocument, NestedTooDeeplyIsRefused)
{
    const auto nested = [](int depth) {
        return QString("<a>").repeated(depth) + QString("</a>").repeated(depth);
    };
    EXPECT_EQ(parse(nested(1000)).documentElement().tagName(), "a");
    EXPECT_EQ(parseFailure(nested(1001)), "its elements are nested too deeply");
    EXPECT_EQ(parseFailure(QString("<a>").repeated(1000000)), "its elements are nested too deeply");
    // Many elements side by side are no depth, however they are written.
    EXPECT_EQ(parse("<a>" + QString("<b/><c x=\"/\"></c>").repeated(5000) + "</a>")
                  .documentElement()
                  .childNodes()
                  .size(),
              10000);
}

TEST(ExportDocument, DescendantsAreFoundInDocumentOrder)
{
    const QDomDocument document =
        parse("<r><a><x/><b><t>deep</t></b></a><t>shallow</t><a><t>last</t></a></r>");
    const QDomElement root = document.documentElement();
    EXPECT_EQ(firstDescendant(root, QString("t")).text(), "deep");
    EXPECT_EQ(descendantText(root, {"a", "b", "t"}), QString("deep"));
    // The chain follows the first a only.
    EXPECT_EQ(descendantText(root, {"a", "t"}), QString("deep"));
    EXPECT_EQ(descendantText(root, {"b", "a"}), std::nullopt);
    // Neither the element itself nor what lies beside it.
    EXPECT_TRUE(firstDescendant(root, QString("r")).isNull());
    EXPECT_TRUE(firstDescendant(firstDescendant(root, QString("x")), QString("t")).isNull());
    EXPECT_TRUE(firstDescendant(QDomElement(), QString("t")).isNull());
    EXPECT_EQ(childElements(root, "a").size(), 2);
    EXPECT_EQ(childElements(root, "b").size(), 0);
}

TEST(ExportDocument, PatientIsThatOfTheFirstBodyThatHasOne)
{
    const QDomDocument document =
        parse("<any><x><BODY><Patient>no</Patient></BODY></x><BODY><y><Patient/></y></BODY>"
              "<BODY><z/><Patient>yes</Patient><Patient>second</Patient></BODY></any>");
    EXPECT_EQ(findPatient(document).text(), "yes");
    EXPECT_TRUE(findPatient(parse("<a><b><Patient/></b></a>")).isNull());
}

TEST(ExportDocument, SeriesTypesStandForPatterns)
{
    EXPECT_EQ(patternText("Volume"), "Volume");
    EXPECT_EQ(patternText("Fast Volume"), "Volume");
    EXPECT_EQ(patternText("Section"), "Single BScan");
    EXPECT_EQ(patternText("Circle"), "Circular BScan");
    EXPECT_EQ(patternText("Star"), "Star");
    for (const char* other : {"", "volume", "VOLUME", " Volume", "Volume Scan"}) {
        EXPECT_EQ(patternText(other), "Unknown");
    }
}

TEST(ExportDocument, FileNamesStandBehindTheLastBackslash)
{
    EXPECT_EQ(bareFileName("file:///C:\\exports\\1\\abc.tif"), "abc.tif");
    EXPECT_EQ(bareFileName("abc.tif"), "abc.tif");
    EXPECT_EQ(bareFileName("a/b.tif"), "a/b.tif");
    EXPECT_EQ(bareFileName("folder\\"), "");
}

} // namespace

} // namespace kelp::oct::exportDocument
