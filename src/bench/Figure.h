#pragma once

#include <QList>
#include <QString>

namespace kelp::bench {

/// One thing that is to be fast: what was measured, and how slow it may be.
struct Figure
{
    QString what;
    double limit = 0.0;           ///< milliseconds
    QList<double> milliseconds{}; ///< one per repetition

    double median() const;
    double worst() const;
    /// Also without any measurement: what could not be measured is not known to be fast.
    bool isMissed() const;
};

/// A line per figure with its limit, median and worst, and how it did.
QString toTable(const QList<Figure>& figures);

} // namespace kelp::bench
