#include "XMLDataTree.h"

#include <QTextCodec>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cstring>

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

/// Reads what writeNode makes of ordinary texts, several times faster than a reader of any XML: a
/// store opens by reading thousands of files. Gives up at everything else, right or wrong, which is
/// then TreeReader's.
class WrittenFormReader
{
public:
    explicit WrittenFormReader(const QByteArray& text) : m_at(text.begin()), m_end(text.end()) {}

    bool read(DataTreeNode& root)
    {
        const bool isRead = take(R"(<?xml version="1.0" encoding="UTF-8"?>)") && skipLayout() &&
                            take(R"(<tesseraTree version="1">)") && skipLayout() &&
                            take(R"(<node name=")") && readText('"').isRead &&
                            readTypeAndContent(root, 0) && skipLayout() && take("</tesseraTree>") &&
                            skipLayout();
        return isRead && m_at == m_end;
    }

private:
    static_assert(formVersion == 1, "read() looks for the version as text.");

    struct Text
    {
        QString text;
        bool isRead = false;
    };

    template <std::size_t size>
    bool take(const char (&literal)[size])
    {
        constexpr std::size_t length = size - 1;
        if (static_cast<std::size_t>(m_end - m_at) < length ||
            std::memcmp(m_at, literal, length) != 0) {
            return false;
        }
        m_at += length;
        return true;
    }

    bool skipLayout()
    {
        while (m_at != m_end && (*m_at == ' ' || *m_at == '\n')) {
            ++m_at;
        }
        return true;
    }

    /// From behind the node's name.
    bool readTypeAndContent(DataTreeNode& node, int level)
    {
        const Text type = take(R"(" type=")") ? readText('"') : Text();
        if (!type.isRead || level > deepestLevel) {
            return false;
        }
        node.setType(type.text);
        if (take(R"("/>)")) {
            return true;
        }
        bool isGood = take(R"(">)");
        while (isGood && skipLayout() && !take("</node>")) {
            isGood = take(R"(<attribute name=")")
                         ? readAttribute(node)
                         : take(R"(<node name=")") && readChild(node, level);
        }
        return isGood;
    }

    bool readAttribute(DataTreeNode& node)
    {
        const Text name = readText('"');
        const Text value = name.isRead && take(R"(">)") ? readText('<') : Text();
        if (!value.isRead || !take("</attribute>")) {
            return false;
        }
        node.setAttribute(name.text, value.text);
        return true;
    }

    bool readChild(DataTreeNode& node, int level)
    {
        const Text name = readText('"');
        return name.isRead && readTypeAndContent(*node.createChild(name.text), level + 1);
    }

    /// Up to the delimiter, which stays.
    Text readText(char delimiter)
    {
        const char* const begin = m_at;
        bool isAscii = true;
        bool isEscaped = false;
        for (; m_at != m_end && *m_at != delimiter; ++m_at) {
            const auto byte = static_cast<unsigned char>(*m_at);
            // Of the characters that start with this byte some are not allowed in XML.
            constexpr unsigned char specials = 0xef;
            if (byte < ' ' || byte == '<' || byte == '>' || byte == '"' || byte == '&' ||
                byte == specials) {
                return {};
            }
            isAscii = isAscii && byte < 0x80;
            isEscaped = isEscaped || byte == '\\';
        }
        const int length = static_cast<int>(m_at - begin);
        Text result{isAscii ? QString::fromLatin1(begin, length) : QString(), m_at != m_end};
        if (!isAscii) {
            QTextCodec::ConverterState state;
            result.text = QTextCodec::codecForName("UTF-8")->toUnicode(begin, length, &state);
            result.isRead = result.isRead && state.invalidChars == 0 && state.remainingChars == 0;
        }
        if (isEscaped) {
            const QString escapedText = result.text;
            result.isRead = unescape(escapedText, result.text) && result.isRead;
        }
        return result;
    }

    const char* m_at;
    const char* m_end;
};

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
    if (WrittenFormReader(text).read(root)) {
        return CaError::nullError;
    }
    DataTreeNode().copyTo(root);
    return TreeReader(text).read(root);
}
