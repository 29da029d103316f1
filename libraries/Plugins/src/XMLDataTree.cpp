#include "XMLDataTree.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>

namespace {

const QString rootElement = QStringLiteral("tesseraTree");
const QString nodeElement = QStringLiteral("node");
const QString attributeElement = QStringLiteral("attribute");
constexpr int formVersion = 1;
constexpr int deepestLevel = 64;

bool mustBeEscaped(const QString& text, int at)
{
    const QChar character = text[at];
    if (character.isHighSurrogate()) {
        return at + 1 >= text.size() || !text[at + 1].isLowSurrogate();
    }
    if (character.isLowSurrogate()) {
        return at == 0 || !text[at - 1].isHighSurrogate();
    }
    const ushort code = character.unicode();
    return code < 0x20 || code == '\\' || (code >= 0x7f && code < 0xa0) || code == 0x2028 ||
           code >= 0xfffe;
}

QString escaped(const QString& text)
{
    int first = 0;
    while (first < text.size() && !mustBeEscaped(text, first)) {
        ++first;
    }
    if (first == text.size()) {
        return text;
    }
    QString result;
    result.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        if (!mustBeEscaped(text, i)) {
            result += text[i];
        } else if (text[i] == '\\') {
            result += QStringLiteral("\\\\");
        } else {
            result += QString("\\u%1").arg(text[i].unicode(), 4, 16, QChar('0'));
        }
    }
    return result;
}

/// Nothing for a text that escaped() cannot have made.
bool unescape(const QString& text, QString& result)
{
    result.clear();
    result.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            result += text[i];
        } else if (i + 1 < text.size() && text[i + 1] == '\\') {
            result += '\\';
            ++i;
        } else {
            bool isCode = false;
            const uint code = text.mid(i + 2, 4).toUInt(&isCode, 16);
            if (!isCode || i + 5 >= text.size() || text[i + 1] != 'u') {
                return false;
            }
            result += QChar(code);
            i += 5;
        }
    }
    return true;
}

void writeNode(QXmlStreamWriter& writer, const DataTreeNode& node)
{
    writer.writeStartElement(nodeElement);
    writer.writeAttribute("name", escaped(node.getName()));
    writer.writeAttribute("type", escaped(node.getType()));
    for (const QPair<QString, QString>& attribute : node.getAttributes()) {
        writer.writeStartElement(attributeElement);
        writer.writeAttribute("name", escaped(attribute.first));
        writer.writeCharacters(escaped(attribute.second));
        writer.writeEndElement();
    }
    for (const DataTreeNode* const child : node.getChildren()) {
        writeNode(writer, *child);
    }
    writer.writeEndElement();
}

class TreeReader
{
public:
    explicit TreeReader(const QByteArray& text) : m_reader(text) {}

    CaError read(DataTreeNode& root)
    {
        readDocument(root);
        if (!m_reader.hasError()) {
            return CaError::nullError;
        }
        return CaError(
            "InvalidTree",
            QString("line %1: %2").arg(m_reader.lineNumber()).arg(m_reader.errorString()),
            QString());
    }

private:
    void readDocument(DataTreeNode& root)
    {
        while (!m_reader.atEnd() && !m_reader.isStartElement()) {
            // A tree of ours has none, and what it declares could grow without bounds.
            if (m_reader.readNext() == QXmlStreamReader::DTD) {
                m_reader.raiseError("A document type declaration is not allowed.");
            }
        }
        if (m_reader.hasError()) {
            return;
        }
        if (m_reader.name() != rootElement) {
            m_reader.raiseError(QString("<%1> is not a stored tree.").arg(m_reader.name()));
            return;
        }
        if (m_reader.attributes().value("version").toInt() != formVersion) {
            m_reader.raiseError(QString("This program reads version %1 of the form, not \"%2\".")
                                    .arg(formVersion)
                                    .arg(m_reader.attributes().value("version")));
            return;
        }
        if (!m_reader.readNextStartElement() || m_reader.name() != nodeElement) {
            m_reader.raiseError("The tree is empty.");
            return;
        }
        root.setType(attributeText("type"));
        readContent(root, 0);
        while (!m_reader.atEnd()) {
            m_reader.readNext();
        }
    }

    void readContent(DataTreeNode& node, int level)
    {
        if (level > deepestLevel) {
            m_reader.raiseError("The tree is too deep.");
            return;
        }
        while (m_reader.readNextStartElement()) {
            if (m_reader.name() == attributeElement) {
                const QString name = attributeText("name");
                node.setAttribute(name, plain(m_reader.readElementText()));
            } else if (m_reader.name() == nodeElement) {
                DataTreeNode* const child = node.createChild(attributeText("name"));
                child->setType(attributeText("type"));
                readContent(*child, level + 1);
            } else {
                m_reader.raiseError(QString("<%1> is unknown here.").arg(m_reader.name()));
            }
        }
    }

    QString attributeText(const char* name)
    {
        return plain(m_reader.attributes().value(QLatin1String(name)).toString());
    }

    QString plain(const QString& text)
    {
        if (!text.contains('\\')) {
            return text;
        }
        QString result;
        if (!unescape(text, result)) {
            m_reader.raiseError("A backslash starts no escape.");
        }
        return result;
    }

    QXmlStreamReader m_reader;
};

} // namespace

QByteArray XMLDataTree::write(const DataTreeNode& root)
{
    QByteArray text;
    QXmlStreamWriter writer(&text);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(2);
    writer.writeStartDocument();
    writer.writeStartElement(rootElement);
    writer.writeAttribute("version", QString::number(formVersion));
    writeNode(writer, root);
    writer.writeEndElement();
    writer.writeEndDocument();
    return text;
}

CaError XMLDataTree::read(const QByteArray& text, DataTreeNode& root)
{
    return TreeReader(text).read(root);
}
