#include "PatientExchange.h"

#include "DetailsText.h"
#include "ExchangeManifest.h"

namespace kelp::exchange {

namespace {

QString counted(int count, const QString& one, const QString& many)
{
    return QStringLiteral("%1 %2").arg(count).arg(count == 1 ? one : many);
}

QString countedPatients(int count)
{
    return counted(count, QStringLiteral("patient"), QStringLiteral("patients"));
}

/// The first few of a list that may be too long to be read.
QString shortened(const QStringList& entries, const QString& separator, int shown)
{
    QString text = entries.mid(0, shown).join(separator);
    if (entries.size() > shown) {
        text += separator + QStringLiteral("and %1 more").arg(entries.size() - shown);
    }
    return text;
}

} // namespace

QString Report::summary() const
{
    constexpr int shownNames = 20;
    const QString comma = QStringLiteral(", ");
    QStringList lines;
    const QString carriedFiles = QStringLiteral("%1 (%2)").arg(
        counted(files, QStringLiteral("file"), QStringLiteral("files")),
        patients::displaySize(bytes));
    if (isImport && carried.isEmpty() && replaced.isEmpty()) {
        lines << QStringLiteral("Nothing was imported.");
    } else if (isImport) {
        lines << QStringLiteral("Imported %1 with %2.")
                     .arg(countedPatients(carried.size() + replaced.size()), carriedFiles);
    } else if (!carried.isEmpty()) {
        lines << QStringLiteral("Exported %1 with %2 to\n%3")
                     .arg(countedPatients(carried.size()), carriedFiles, folder);
    } else {
        lines << QStringLiteral("Nothing was exported.");
    }
    if (cancelled) {
        lines << QStringLiteral("Cancelled before the end.");
    }
    if (!replaced.isEmpty()) {
        lines << QStringLiteral("Replaced: %1").arg(shortened(replaced, comma, shownNames));
    }
    if (!present.isEmpty()) {
        lines << QStringLiteral("There already and left unchanged: %1")
                     .arg(shortened(present, comma, shownNames));
    }
    if (!problems.isEmpty()) {
        lines << QStringLiteral("Problems:\n%1")
                     .arg(shortened(problems, QStringLiteral("\n"), shownProblems));
    }
    return lines.join(QStringLiteral("\n\n"));
}

bool isExportFolder(const QString& folder)
{
    return Manifest::existsIn(folder);
}

} // namespace kelp::exchange
