#include "Summary.h"

#include "CsvText.h"
#include "RunRecord.h"

namespace kelp::command {

namespace {

using kelp::oct::EtdrsTable;

QString outcomeName(ScanOutcome::Kind kind)
{
    switch (kind) {
    case ScanOutcome::Kind::Segmented:
        return "segmented";
    case ScanOutcome::Kind::Skipped:
        return "skipped";
    case ScanOutcome::Kind::Failed:
        return "failed";
    }
    return {};
}

/// What the run had to say against its result; empty if nothing.
QString warningsText(const std::optional<StoredRecord>& record)
{
    if (!record) {
        return {};
    }
    return record->warnings ? record->warnings->join("; ")
                            : QString("not recorded by the version that segmented the scan");
}

QString cutSectorsText(const std::optional<StoredRecord>& record)
{
    return record ? record->etdrs.cutSectors().join(' ') : QString();
}

QString notFoundText(const std::optional<StoredRecord>& record)
{
    return record ? record->notFound.join(' ') : QString();
}

QStringList sectorMeans(const std::optional<StoredRecord>& record)
{
    QStringList cells;
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            const auto mean = record ? record->etdrs.means[row][column] : std::nullopt;
            cells.append(mean ? QString::number(*mean, 'f', 2) : QString());
        }
    }
    return cells;
}

QStringList sectorNames()
{
    QStringList names;
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            names.append(etdrsCellName(row, column));
        }
    }
    return names;
}

} // namespace

QByteArray summaryCsv(const ScanPlan& plan, const QList<ScanOutcome>& outcomes)
{
    QByteArray text = csvLine(QStringList{"input", "series", "folder", "outcome", "reason",
                                          "warnings", "cut sectors", "no surface found"} +
                              sectorNames());
    for (int i = 0; i < plan.jobs.size(); ++i) {
        const ScanJob& job = plan.jobs[i];
        const ScanOutcome& outcome = outcomes[i];
        const QString folder = outcome.record ? job.folder : QString();
        text += csvLine(QStringList{job.input, job.series, folder, outcomeName(outcome.kind),
                                    outcome.reason, warningsText(outcome.record),
                                    cutSectorsText(outcome.record), notFoundText(outcome.record)} +
                        sectorMeans(outcome.record));
    }
    for (const InputProblem& problem : plan.problems) {
        text += csvLine(QStringList{problem.input, QString(), QString(),
                                    outcomeName(ScanOutcome::Kind::Failed), problem.reason,
                                    QString(), QString(), QString()} +
                        sectorMeans(std::nullopt));
    }
    return text;
}

QString summaryText(const ScanPlan& plan, const QList<ScanOutcome>& outcomes)
{
    QStringList parts;
    for (const auto kind :
         {ScanOutcome::Kind::Segmented, ScanOutcome::Kind::Skipped, ScanOutcome::Kind::Failed}) {
        int number = kind == ScanOutcome::Kind::Failed ? plan.problems.size() : 0;
        int withWarnings = 0;
        for (const ScanOutcome& outcome : outcomes) {
            const bool isCounted = outcome.kind == kind;
            const bool hasWarnings = outcome.record && outcome.record->nrWarnings() > 0;
            number += isCounted ? 1 : 0;
            withWarnings += isCounted && hasWarnings ? 1 : 0;
        }
        if (number > 0) {
            const QString remark =
                withWarnings > 0 ? QString(" (%1 with warnings)").arg(withWarnings) : QString();
            parts.append(QString("%1 %2%3").arg(number).arg(outcomeName(kind), remark));
        }
    }
    return parts.join(", ");
}

} // namespace kelp::command
