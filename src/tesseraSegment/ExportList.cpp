#include "ExportList.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

namespace kelp::command {

namespace {

/// Walks folders and remembers what it has seen, so that links neither loop nor give a file twice.
class Collector
{
public:
    explicit Collector(const QStringList& excluded)
    {
        for (const QString& folder : excluded) {
            const QString canonical = QFileInfo(folder).canonicalFilePath();
            if (!canonical.isEmpty()) {
                m_excluded.insert(canonical);
            }
        }
    }

    void addInput(const QString& input)
    {
        const QFileInfo info(input);
        if (!info.exists()) {
            addProblem(input, info.isSymLink() ? "The link leads nowhere."
                                               : "There is no such file or folder.");
        } else if (info.isDir()) {
            addFolderInput(input, info.canonicalFilePath());
        } else {
            addFile(info);
        }
    }

    ExportList takeResult() { return m_result; }

private:
    void addProblem(const QString& input, const QString& reason)
    {
        m_result.problems.append({input, reason});
    }

    void addFile(const QFileInfo& info)
    {
        const QString canonical = info.canonicalFilePath();
        if (!m_seenFiles.contains(canonical)) {
            m_seenFiles.insert(canonical);
            m_result.files.append(canonical);
        }
    }

    void addFolderInput(const QString& input, const QString& canonical)
    {
        m_found = 0;
        const int problemsBefore = m_result.problems.size();
        m_seenFolders.clear();
        addFolder(canonical);
        if (m_found == 0 && m_result.problems.size() == problemsBefore) {
            addProblem(input, "The folder holds no XML file.");
        }
    }

    void addFolder(const QString& canonical)
    {
        if (m_seenFolders.contains(canonical) || m_excluded.contains(canonical)) {
            return;
        }
        m_seenFolders.insert(canonical);
        const QFileInfo folder(canonical);
        if (!folder.isReadable() || !folder.isExecutable()) {
            addProblem(canonical, "The folder cannot be read: permission denied.");
            return;
        }
        const QFileInfoList entries = QDir(canonical).entryInfoList(
            QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
        for (const QFileInfo& entry : entries) {
            if (entry.isDir()) {
                addFolder(entry.canonicalFilePath());
            } else if (entry.suffix().compare("xml", Qt::CaseInsensitive) == 0) {
                ++m_found;
                addFile(entry);
            }
        }
    }

    QSet<QString> m_excluded;
    QSet<QString> m_seenFolders;
    QSet<QString> m_seenFiles;
    int m_found = 0;
    ExportList m_result;
};

} // namespace

ExportList collectExports(const QStringList& inputs, const QStringList& excluded)
{
    Collector collector(excluded);
    for (const QString& input : inputs) {
        collector.addInput(input);
    }
    return collector.takeResult();
}

} // namespace kelp::command
