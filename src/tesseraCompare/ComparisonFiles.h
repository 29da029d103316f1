#pragma once

#include "CompareOptions.h"
#include "ComparisonPool.h"
#include "JsonWriter.h"
#include "OutFolder.h"

namespace kelp::compare {

/// The names of the files that a comparison of these scans may write.
QStringList possibleFiles(const QStringList& scans);

/// Writes the CSV files, the pictures and the record of a comparison, scan by scan, and keeps none
/// of the scans. All throw IOFailure.
class ComparisonFiles
{
public:
    /// scans: the names of all that are to be compared.
    ComparisonFiles(const Options& options, const QStringList& scans);

    void add(const ScanComparison& scan);
    /// What is written of all together. pool: of the scans that were added.
    void addPooled(const ComparisonPool& pool);
    /// Last: puts all into its place.
    void publish();

private:
    QStringList titleOf(const QString& what) const;
    void writeAScanAgreement(const ComparisonPool& pool);
    void writeSectorAgreement(const QList<Agreement>& agreements);

    OutFolder m_folder;
    bool m_areSeveral;
    QString m_a;
    QString m_b;
    command::JsonWriter m_record;
};

} // namespace kelp::compare
