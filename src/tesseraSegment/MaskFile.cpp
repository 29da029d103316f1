#include "MaskFile.h"

#include "kelpException.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cmath>

namespace kelp::command {

namespace {

/// Far more than a mask drawn by hand has; guards against a file of another kind.
constexpr qint64 maximumBytes = 16 * 1024 * 1024;

[[noreturn]] void refuseLine(const QString& path, int line, const QString& reason)
{
    throw ParsingError(QString("%1, line %2: %3").arg(path).arg(line).arg(reason));
}

double readNumber(const QString& text, const QString& path, int line)
{
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(value)) {
        refuseLine(path, line, QString("\"%1\" is not a number.").arg(text.left(40)));
    }
    return value;
}

QPolygonF readPolygon(const QString& text, const QString& path, int line)
{
    static const QRegularExpression blanks("\\s+");
    QPolygonF polygon;
    for (const QString& corner : text.split(blanks, Qt::SkipEmptyParts)) {
        const QStringList numbers = corner.split(',');
        if (numbers.size() != 2) {
            refuseLine(path, line, QString("\"%1\" is not of the form x,y.").arg(corner.left(40)));
        }
        polygon.append({readNumber(numbers[0], path, line), readNumber(numbers[1], path, line)});
    }
    if (polygon.size() < 3) {
        refuseLine(path, line, "A polygon needs at least three corners.");
    }
    return polygon;
}

} // namespace

QList<QPolygonF> readMaskFile(const QString& path)
{
    QFile file(path);
    if (QFileInfo(path).isDir()) {
        throw IOFailure(QString("%1: This is a folder, not a mask file.").arg(path));
    }
    if (!file.open(QIODevice::ReadOnly)) {
        throw IOFailure(QString("%1: %2.").arg(path, file.errorString()));
    }
    const QByteArray content = file.read(maximumBytes + 1);
    if (content.size() > maximumBytes) {
        throw ParsingError(QString("%1: The file is too large for a mask.").arg(path));
    }

    QList<QPolygonF> polygons;
    int line = 0;
    for (const QString& text : QString::fromUtf8(content).split('\n')) {
        ++line;
        const QString trimmed = text.trimmed();
        if (!trimmed.isEmpty() && !trimmed.startsWith('#')) {
            polygons.append(readPolygon(trimmed, path, line));
        }
    }
    if (polygons.isEmpty()) {
        throw ParsingError(QString("%1: The file holds no polygon.").arg(path));
    }
    return polygons;
}

} // namespace kelp::command
