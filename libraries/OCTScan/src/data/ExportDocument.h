#pragma once

#include <QDomDocument>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// The element tree of a Heidelberg XML export and the two ways in which its elements are found.
namespace kelp::oct::exportDocument {

/// All bytes of the file read as Latin-1, whatever the file declares. Throws IOFailure naming the
/// file and the reason.
QString readText(const QString& xmlPath);
/// Throws ParsingError with the reason. Refuses declared entities and absurdly deep nesting, which
/// serve only to exhaust the reader.
QDomDocument parse(const QString& text);
/// Both of the above; every failure names the file.
QDomDocument read(const QString& xmlPath);

/// The first element of this name anywhere below, in document order. Null without one.
QDomElement firstDescendant(const QDomElement& element, const QString& name);
/// A chain of such look-ups, each from the element found before.
QDomElement firstDescendant(const QDomElement& element, const QStringList& path);
/// The text at the end of the chain; nothing when an element of it is missing.
std::optional<QString> descendantText(const QDomElement& element, const QStringList& path);
/// The direct children of this name, in order.
QList<QDomElement> childElements(const QDomElement& element, const QString& name);

/// The element that scans are read from: the first Patient of the first BODY that has one.
QDomElement findPatient(const QDomDocument& document);
/// The text of the OCTScanPattern that a series' Type stands for.
QString patternText(const QString& seriesType);
/// What stands behind the last backslash: exports name their images with paths of the machine that
/// wrote them.
QString bareFileName(const QString& examUrl);
/// Why this image file cannot be read, as a plain sentence that names it.
QString unreadableImageText(const QString& imagePath);

} // namespace kelp::oct::exportDocument
