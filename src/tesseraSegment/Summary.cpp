#include "Summary.h"

#include "CsvText.h"

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

QStringList sectorMeans(const std::optional<EtdrsTable>& table)
{
    QStringList cells;
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            const auto mean = table ? table->means[row][column] : std::nullopt;
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
    QByteArray text =
        csvLine(QStringList{"input", "series", "folder", "outcome", "reason"} + sectorNames());
    for (int i = 0; i < plan.jobs.size(); ++i) {
        const ScanJob& job = plan.jobs[i];
        const ScanOutcome& outcome = outcomes[i];
        const QString folder = outcome.etdrs ? job.folder : QString();
        text += csvLine(
            QStringList{job.input, job.series, folder, outcomeName(outcome.kind), outcome.reason} +
            sectorMeans(outcome.etdrs));
    }
    for (const InputProblem& problem : plan.problems) {
        text += csvLine(QStringList{problem.input, QString(), QString(),
                                    outcomeName(ScanOutcome::Kind::Failed), problem.reason} +
                        sectorMeans(std::nullopt));
    }
    return text;
}

} // namespace kelp::command
