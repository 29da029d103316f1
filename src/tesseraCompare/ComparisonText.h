#pragma once

#include "ComparisonPool.h"

#include <QString>
#include <QStringList>

namespace kelp::compare {

/// The tables that are printed: for one scan all, for several those over all scans and the surfaces
/// of each. Units stand in the headers.
class ComparisonText
{
public:
    /// What is compared.
    ComparisonText(const QString& a, const QString& b) : m_a(a), m_b(b) {}

    /// Keeps the tables of the scan, not the scan.
    void add(const ScanComparison& scan);

    /// pool: of the scans that were added.
    QString text(const ComparisonPool& pool) const;

private:
    QString m_a;
    QString m_b;
    QString m_first; ///< all tables of the first scan, in case that it stays alone
    QStringList m_scans;
};

} // namespace kelp::compare
