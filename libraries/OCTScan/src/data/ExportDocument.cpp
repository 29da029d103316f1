#include "ExportDocument.h"

#include "OCTScanPattern.h"
#include "kelpException.h"

#include <QFile>
#include <QFileInfo>

namespace kelp::oct::exportDocument {

namespace {

/// The tree takes some 20 times the file's size in memory. Exports of the largest scans, with all
/// their segmentation values, stay below 100 MB.
constexpr qint64 largestFile = 256 * 1024 * 1024;
/// The tree's own functions descend recursively; exports nest about ten deep.
constexpr int deepestNesting = 1000;

/// Position behind the next occurrence of the text, or the end.
int behind(const QString& text, QLatin1String wanted, int from)
{
    const int found = text.indexOf(wanted, from);
    return found < 0 ? text.size() : found + wanted.size();
}

/// Position behind the tag that starts here; a '>' within quotes does not end it.
int behindTag(const QString& text, int from)
{
    QChar quote;
    for (int i = from; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (!quote.isNull()) {
            if (c == quote) {
                quote = QChar();
            }
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            return i + 1;
        }
    }
    return text.size();
}

/// Looks at the markup without building anything, since the parser itself would follow entities and
/// nesting as far as memory goes.
void refuseHostileMarkup(const QString& text)
{
    int depth = 0;
    int position = text.indexOf('<');
    while (position >= 0) {
        const QStringRef rest = text.midRef(position, 9);
        if (rest.startsWith(QLatin1String("<!--"))) {
            position = behind(text, QLatin1String("-->"), position + 4);
        } else if (rest.startsWith(QLatin1String("<![CDATA["))) {
            position = behind(text, QLatin1String("]]>"), position + 9);
        } else if (rest.startsWith(QLatin1String("<?"))) {
            position = behind(text, QLatin1String("?>"), position + 2);
        } else if (rest.startsWith(QLatin1String("<!ENTITY"))) {
            throw ParsingError("it declares entities, which no export does");
        } else if (rest.startsWith(QLatin1String("<!"))) {
            // Only the opening is skipped, so that declarations inside are seen.
            position += 2;
        } else {
            const int end = behindTag(text, position + 1);
            if (rest.startsWith(QLatin1String("</"))) {
                --depth;
            } else if (end < 2 || text.at(end - 2) != '/') {
                ++depth;
            }
            position = end;
        }
        if (depth > deepestNesting) {
            throw ParsingError("its elements are nested too deeply");
        }
        position = text.indexOf('<', position);
    }
}

} // namespace

QString readText(const QString& xmlPath)
{
    const QFileInfo info(xmlPath);
    if (info.exists() && !info.isFile()) {
        throw IOFailure(QString("%1 is not a file.").arg(xmlPath));
    }
    QFile file(xmlPath);
    if (!file.open(QIODevice::ReadOnly)) {
        throw IOFailure(
            QString("The file %1 cannot be opened: %2.").arg(xmlPath, file.errorString()));
    }
    if (file.size() > largestFile) {
        throw IOFailure(QString("The file %1 is too large for an export.").arg(xmlPath));
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        throw IOFailure(
            QString("The file %1 cannot be read: %2.").arg(xmlPath, file.errorString()));
    }
    return QString::fromLatin1(bytes);
}

QDomDocument parse(const QString& text)
{
    if (text.isEmpty()) {
        throw ParsingError("it is empty");
    }
    if (text.startsWith(QString::fromLatin1("\xef\xbb\xbf"))) {
        throw ParsingError("it begins with a byte order mark, which no export does");
    }
    refuseHostileMarkup(text);
    QDomDocument document;
    QString error;
    int line = 0;
    int column = 0;
    if (!document.setContent(text, &error, &line, &column)) {
        throw ParsingError(QString("%1 at line %2, column %3").arg(error).arg(line).arg(column));
    }
    return document;
}

QDomDocument read(const QString& xmlPath)
{
    const QString text = readText(xmlPath);
    try {
        return parse(text);
    } catch (const ParsingError& error) {
        throw ParsingError(
            QString("The file %1 is no usable XML: %2.").arg(xmlPath, error.getMessage()));
    }
}

QDomElement firstDescendant(const QDomElement& element, const QString& name)
{
    QDomNode node = element.firstChild();
    while (!node.isNull()) {
        if (node.isElement() && node.toElement().tagName() == name) {
            return node.toElement();
        }
        QDomNode next = node.firstChild();
        while (next.isNull() && node != element) {
            next = node.nextSibling();
            node = node.parentNode();
        }
        node = next;
    }
    return QDomElement();
}

QDomElement firstDescendant(const QDomElement& element, const QStringList& path)
{
    QDomElement found = element;
    for (const QString& name : path) {
        found = firstDescendant(found, name);
    }
    return found;
}

std::optional<QString> descendantText(const QDomElement& element, const QStringList& path)
{
    const QDomElement found = firstDescendant(element, path);
    return found.isNull() ? std::nullopt : std::optional<QString>(found.text());
}

QList<QDomElement> childElements(const QDomElement& element, const QString& name)
{
    QList<QDomElement> children;
    for (QDomElement child = element.firstChildElement(name); !child.isNull();
         child = child.nextSiblingElement(name)) {
        children.append(child);
    }
    return children;
}

QDomElement findPatient(const QDomDocument& document)
{
    for (const QDomElement& body : childElements(document.documentElement(), "BODY")) {
        const QDomElement patient = body.firstChildElement("Patient");
        if (!patient.isNull()) {
            return patient;
        }
    }
    return QDomElement();
}

QString patternText(const QString& seriesType)
{
    if (seriesType == "Volume" || seriesType == "Fast Volume") {
        return OCTScanPatternVolume().toString();
    }
    if (seriesType == "Section") {
        return OCTScanPatternSingleBScan().toString();
    }
    if (seriesType == "Circle") {
        return OCTScanPatternCircularBScan().toString();
    }
    if (seriesType == "Star") {
        return OCTScanPatternStar().toString();
    }
    return OCTScanPatternUnknown().toString();
}

QString bareFileName(const QString& examUrl)
{
    return examUrl.mid(examUrl.lastIndexOf('\\') + 1);
}

QString unreadableImageText(const QString& imagePath)
{
    const QFileInfo info(imagePath);
    QString reason = "it is damaged or of an unknown kind";
    if (!info.exists()) {
        reason = "it does not exist";
    } else if (!info.isFile()) {
        reason = "it is not a file";
    } else if (!info.isReadable()) {
        reason = "reading it is not permitted";
    } else if (info.size() == 0) {
        reason = "it is empty";
    }
    return QString("The image %1 cannot be read: %2.").arg(imagePath, reason);
}

} // namespace kelp::oct::exportDocument
