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
    std::optional<kelp::oct::EtdrsTable> etdrs;
};

/// The table of all scans of a run, and of the inputs that gave none, as the file summary.csv holds
/// it: comma-separated, one row a scan, with the sector means in micrometres.
QByteArray summaryCsv(const ScanPlan& plan, const QList<ScanOutcome>& outcomes);

} // namespace kelp::command
