#include "ExportCollector.h"

#include <QDir>
#include <QDirIterator>
#include <QSet>

#include <algorithm>

namespace kelp::oct {

namespace {

/// Equal for equal QFileInfo, which a list of thousands could not be searched for.
QString identityOf(const QFileInfo& file)
{
    const QString canonical = file.canonicalFilePath();
    return canonical.isEmpty() ? file.absoluteFilePath() : canonical;
}

class Collection
{
public:
    void addFolder(const QDir& folder)
    {
        if (m_folders.contains(folder.absolutePath())) {
            return;
        }
        m_folders.insert(folder.absolutePath());
        for (const QFileInfo& file : folder.entryInfoList({QStringLiteral("*.xml")})) {
            const QString identity = identityOf(file);
            if (!m_files.contains(identity)) {
                m_files.insert(identity);
                m_paths.append(file.absoluteFilePath());
            }
        }
    }
    int size() const { return m_paths.size(); }
    /// The paths behind the first ones by name: a file system gives its folders in any order.
    QStringList pathsSortedFrom(int first)
    {
        std::sort(m_paths.begin() + first, m_paths.end());
        return m_paths;
    }

private:
    QSet<QString> m_folders;
    QSet<QString> m_files;
    QStringList m_paths;
};

} // namespace

std::optional<QStringList> collectExports(const QString& folder, const std::function<bool()>& goOn)
{
    // An empty path is the current folder to QDir, but nothing to QDirIterator.
    const QDir top(folder);
    Collection collection;
    collection.addFolder(top);
    const int ofTop = collection.size();
    // A folder counts through its "." entry, which the iteration gives for each.
    QDirIterator entries(top.path(), QDir::Dirs, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        if (!goOn()) {
            return std::nullopt;
        }
        entries.next();
        collection.addFolder(entries.fileInfo().dir());
    }
    return collection.pathsSortedFrom(ofTop);
}

} // namespace kelp::oct
