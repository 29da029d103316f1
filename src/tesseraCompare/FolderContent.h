#pragma once

#include <QString>
#include <QStringList>

namespace kelp::compare {

/// The file that lists what a comparison wrote.
constexpr const char* comparisonRecord = "compare.json";

/// What stands in a folder that a comparison is to be written to. Looks only.
class FolderContent
{
public:
    /// The folder need not be there.
    explicit FolderContent(const QString& path);

    bool holdsComparison() const { return m_holdsComparison; }
    /// Also where there is nothing but what an interrupted run left.
    bool isEmpty() const;

    /// What the comparison wrote and is still there, without its record. Nothing outside the
    /// folder.
    const QStringList& comparisonFiles() const { return m_comparisonFiles; }

    /// Throws IOFailure if a file of one of these names would take the place of what no comparison
    /// wrote, or would come to lie outside the folder.
    void refuseForeign(const QStringList& names) const;

private:
    QString pathOf(const QString& name) const;
    bool isOwnFile(const QString& name) const;

    QString m_path;
    bool m_holdsComparison = false;
    QStringList m_comparisonFiles;
};

} // namespace kelp::compare
