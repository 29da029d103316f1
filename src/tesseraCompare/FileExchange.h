#pragma once

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

namespace kelp::compare {

/// Moves the files of a new comparison into the place of those of a former one, all or none of
/// them. All folders must be on one file system.
class FileExchange
{
public:
    /// aside: an empty folder that takes the former files.
    FileExchange(const QString& folder, const QString& aside) : m_folder(folder), m_aside(aside) {}
    /// Moves all back unless run() came to its end.
    ~FileExchange();
    FileExchange(const FileExchange&) = delete;
    FileExchange& operator=(const FileExchange&) = delete;

    /// fresh: the folder that holds the new files and the new record. Names that are in the folder,
    /// but not among the former ones, must not be among the new ones. Throws IOFailure.
    void run(const QStringList& former, const QString& fresh, const QStringList& written);

private:
    void keepRecord(const QString& record, const QString& kept);
    void move(const QString& from, const QString& to);
    void removeEmptyFolders(const QStringList& names) const;

    QString m_folder;
    QString m_aside;
    QVector<QPair<QString, QString>> m_moves;
    QStringList m_madeFolders;
    bool m_isDone = false;
};

} // namespace kelp::compare
