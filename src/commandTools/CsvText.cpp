#include "CsvText.h"

namespace kelp::command {

namespace {

QString quotedCell(const QString& cell)
{
    const bool plain = !cell.contains(',') && !cell.contains('"') && !cell.contains('\n') &&
                       !cell.contains('\r') && cell == cell.trimmed();
    if (plain) {
        return cell;
    }
    QString doubled = cell;
    doubled.replace('"', "\"\"");
    return '"' + doubled + '"';
}

} // namespace

QByteArray csvLine(const QStringList& cells)
{
    QStringList quoted;
    for (const QString& cell : cells) {
        quoted.append(quotedCell(cell));
    }
    return quoted.join(',').toUtf8() + '\n';
}

} // namespace kelp::command
