#include "XMLDataTree.h"

#include <gtest/gtest.h>

#include <random>

namespace {

QString roundTrip(const QString& value)
{
    DataTreeNode root(QString(), "Study");
    root.setAttribute("Name", value);
    DataTreeNode copy;
    const CaError error = XMLDataTree::read(XMLDataTree::write(root), copy);
    EXPECT_EQ(error.toString(), QString());
    return copy.getAttribute("Name");
}

CaError readText(const QByteArray& text)
{
    DataTreeNode root;
    return XMLDataTree::read(text, root);
}

const QByteArray head = "<?xml version=\"1.0\"?><tesseraTree version=\"1\">";

TEST(XMLDataTree, KeepsNamesTypesAttributesAndTheOrderOfChildren)
{
    DataTreeNode root(QString(), "Study");
    root.setAttribute("a", "1");
    root.setAttribute("b", QString());
    root.createChild("Item")->setType("First");
    root.createChild("Item")->setType("Second");
    root.getChildren()[1]->createChild("Inner")->setAttribute("c", "3");

    DataTreeNode copy;
    ASSERT_EQ(XMLDataTree::read(XMLDataTree::write(root), copy), CaError::nullError);
    EXPECT_EQ(copy.getType(), QString("Study"));
    EXPECT_EQ(copy.getAttributes(), root.getAttributes());
    ASSERT_EQ(copy.getChildren().size(), 2);
    EXPECT_EQ(copy.getChildren()[0]->getType(), QString("First"));
    EXPECT_EQ(copy.getChildren()[1]->getType(), QString("Second"));
    EXPECT_EQ(copy.getChildren()[1]->getChild("Inner")->getAttribute("c"), QString("3"));
}

TEST(XMLDataTree, EverySingleCharacterSurvivesInAttributesAndInNames)
{
    for (uint code = 0; code <= 0xffff; ++code) {
        const QString text = QString("x") + QChar(code) + "y";
        DataTreeNode root(QString(), text);
        root.setAttribute(text, text);
        root.createChild(text);
        DataTreeNode copy;
        ASSERT_EQ(XMLDataTree::read(XMLDataTree::write(root), copy), CaError::nullError) << code;
        ASSERT_EQ(copy.getType(), text) << code;
        ASSERT_EQ(copy.getAttribute(text), text) << code;
        ASSERT_TRUE(copy.hasChild(text)) << code;
    }
}

TEST(XMLDataTree, TextsThatLookLikeMarkupEscapesOrLayoutSurvive)
{
    for (const QString& text :
         {QString("  leading and trailing  "), QString("\n\r\n\t"), QString("<a>&amp;</a>]]>"),
          QString("C:\\export\\u0041.tif"), QString("\\"), QString("\\\\u00"),
          QString::fromUtf8("\xf0\x9f\x91\x81 \xc3\xa9"), QString(QChar(0xd83d)) + QChar('a')}) {
        EXPECT_EQ(roundTrip(text), text);
    }
}

TEST(XMLDataTree, IsReadableByPeople)
{
    DataTreeNode root(QString(), "Patient");
    root.setAttribute("Name", "Ada Lovelace");
    EXPECT_EQ(XMLDataTree::write(root),
              QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<tesseraTree version=\"1\">\n"
                         "  <node name=\"\" type=\"Patient\">\n"
                         "    <attribute name=\"Name\">Ada Lovelace</attribute>\n"
                         "  </node>\n"
                         "</tesseraTree>\n"));
}

TEST(XMLDataTree, ATreeCutAtAnyByteIsRefusedWithALine)
{
    DataTreeNode root(QString(), "Study");
    root.setAttribute("Name", "a\\b");
    root.createChild("Item")->setType("OCTScan");
    const QByteArray whole = XMLDataTree::write(root).trimmed();
    for (int length = 0; length < whole.size(); ++length) {
        const CaError error = readText(whole.left(length));
        ASSERT_NE(error, CaError::nullError) << length;
        ASSERT_TRUE(error.getText().startsWith("line ")) << error.getText().toStdString();
    }
    EXPECT_EQ(readText(whole), CaError::nullError);
}

/// A tree with all that the form knows, as it is written.
QByteArray richText()
{
    DataTreeNode root(QString(), "Study");
    root.setAttribute("Id", "");
    root.setAttribute("Name", QString::fromUtf8("J\xc3\xbcrgen \xf0\x9f\x91\x81"));
    root.setAttribute("URI/SliceImage0", "file++dummy:C:\\images\\a.tif?a=1");
    root.createChild("Data")->setType("");
    DataTreeNode* const item = root.createChild("Item");
    item->setType("OCTScan");
    item->createChild("Inner")->setAttribute("Remark", "two\nlines");
    return XMLDataTree::write(root);
}

TEST(XMLDataTree, HowATextIsReadDoesNotDependOnItsLookingLikeOurOwn)
{
    const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    const QByteArray whole = richText();
    ASSERT_TRUE(whole.startsWith(declaration));
    const QByteArrayList pieces{"<",
                                ">",
                                "\"",
                                "&",
                                "&amp;",
                                "\\",
                                "\\u0041",
                                "\r",
                                "\t",
                                "\n",
                                "]]>",
                                "\xef\xbb\xbf",
                                "\xef\xbf\xbf",
                                "\xc3",
                                "\x80",
                                "\xed\xa0\x80",
                                "<node name=\"\" type=\"\"/>",
                                "</node>",
                                "<!-- -->",
                                " ",
                                "x",
                                "/>",
                                "<attribute name=\"Id\">",
                                "</attribute>",
                                "'",
                                "\x7f",
                                "\xc2\x85",
                                "\x01"};
    std::mt19937 random(1);
    const auto below = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    int readable = 0;
    constexpr int rounds = 20000;
    for (int round = 0; round < rounds; ++round) {
        QByteArray body = whole.mid(declaration.size());
        for (int change = below(3); change >= 0; --change) {
            body.replace(below(body.size()), below(2) * below(12), pieces[below(pieces.size())]);
        }
        DataTreeNode own;
        DataTreeNode any;
        // A comment means nothing, but is none of what the program writes.
        const CaError ownError = XMLDataTree::read(declaration + body, own);
        const CaError anyError = XMLDataTree::read(declaration + "<!-- -->" + body, any);
        ASSERT_EQ(ownError.toString(), anyError.toString()) << body.toStdString();
        if (ownError == CaError::nullError) {
            ++readable;
            ASSERT_EQ(XMLDataTree::write(own), XMLDataTree::write(any)) << body.toStdString();
        }
    }
    EXPECT_GT(readable, rounds / 20);
    EXPECT_LT(readable, rounds - rounds / 20);
}

TEST(XMLDataTree, ForeignTextsAreRefused)
{
    const char* const badEscape = "<tesseraTree version=\"1\"><node><attribute name=\"a\">\\x"
                                  "</attribute></node></tesseraTree>";
    for (const char* const text :
         {badEscape, "", "no xml", "<html><body/></html>", "<tesseraTree version=\"1\"/>",
          "<tesseraTree version=\"1\"><other/></tesseraTree>",
          "<tesseraTree version=\"1\"><node><other/></node></tesseraTree>",
          "<tesseraTree version=\"1\"><node/></tesseraTree><more/>"}) {
        EXPECT_NE(readText(text), CaError::nullError) << text;
    }
}

TEST(XMLDataTree, ANewerFormIsRefusedByName)
{
    const CaError error = readText("<tesseraTree version=\"2\"><node/></tesseraTree>");
    EXPECT_TRUE(error.getText().contains("version 1 of the form, not \"2\""))
        << error.getText().toStdString();
}

TEST(XMLDataTree, AnEntityBombEndsAtItsDeclaration)
{
    QByteArray bomb = "<?xml version=\"1.0\"?><!DOCTYPE t [<!ENTITY a0 \"0123456789\">";
    for (int i = 1; i < 30; ++i) {
        bomb += "<!ENTITY a" + QByteArray::number(i) + " \"";
        for (int k = 0; k < 10; ++k) {
            bomb += "&a" + QByteArray::number(i - 1) + ";";
        }
        bomb += "\">";
    }
    bomb += "]><tesseraTree version=\"1\"><node><attribute name=\"a\">&a29;</attribute></node>"
            "</tesseraTree>";
    EXPECT_TRUE(readText(bomb).getText().contains("document type declaration"));
}

TEST(XMLDataTree, ATreeOfEndlessDepthIsRefused)
{
    QByteArray deep = head;
    for (int i = 0; i < 200000; ++i) {
        deep += "<node>";
    }
    EXPECT_TRUE(readText(deep).getText().contains("too deep"));
}

} // namespace
