#pragma once

#include "ScanPlan.h"

namespace kelp::command {

/// How a scan came out.
struct ScanOutcome
{
    enum class Kind
    {
        Failed,
        Segmented,
        Skipped
    };

    Kind kind = Kind::Failed;
    QString reason;
    /// Of the results that stand there, if any.
    std::optional<StoredRecord> record;
};

/// The table of all scans of a run, and of the inputs that gave none, as the file summary.csv holds
/// it: comma-separated, one row a scan, with warnings, the sectors that the scan's
/// border cuts, the surfaces that were not found and the sector means in micrometres.
QByteArray summaryCsv(const ScanPlan& plan, const QList<ScanOutcome>& outcomes);

/// Its rows counted by outcome, for instance "3 segmented (1 with warnings), 1 skipped, 2 failed".
QString summaryText(const ScanPlan& plan, const QList<ScanOutcome>& outcomes);

} // namespace kelp::command
