#include "FolderContent.h"

#include "ResultsFolder.h"
#include "kelpException.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace kelp::compare {

namespace {

/// A link that leads nowhere is there all the same.
bool isThere(const QFileInfo& info)
{
    return info.exists() || info.isSymLink();
}

/// Nothing but the kinds of files that a comparison writes, and nothing outside the folder.
bool isOwnName(const QString& name)
{
    return QDir::isRelativePath(name) && !name.split('/').contains("..") &&
           (name.endsWith(".csv") || name.endsWith(".png"));
}

/// Empty if this is no record of a comparison.
QJsonObject readRecord(const QString& path)
{
    QFile file(path);
    if (QFileInfo(path).isSymLink() || !file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QJsonObject record = QJsonDocument::fromJson(file.readAll()).object();
    return record.value("program").toString() == "tessera-compare" ? record : QJsonObject();
}

} // namespace

FolderContent::FolderContent(const QString& path) : m_path(path)
{
    const QJsonObject record = readRecord(pathOf(comparisonRecord));
    m_holdsComparison = !record.isEmpty();
    for (const QJsonValue value : record.value("files").toArray()) {
        const QString name = value.toString();
        if (isOwnName(name) && isOwnFile(name) && !m_comparisonFiles.contains(name)) {
            m_comparisonFiles.append(name);
        }
    }
}

QString FolderContent::pathOf(const QString& name) const
{
    return QDir(m_path).filePath(name);
}

bool FolderContent::isOwnFile(const QString& name) const
{
    const QFileInfo info(pathOf(name));
    const bool isInside = !name.contains('/') || !QFileInfo(info.path()).isSymLink();
    return isInside && isThere(info) && (info.isSymLink() || info.isFile());
}

bool FolderContent::isEmpty() const
{
    const auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    const QStringList names = QDir(m_path).entryList(everything);
    return std::all_of(names.begin(), names.end(), command::ResultsFolder::isWorkingFolder);
}

void FolderContent::refuseForeign(const QStringList& names) const
{
    for (const QString& name : names) {
        const QFileInfo info(pathOf(name));
        if (isThere(info) && !m_comparisonFiles.contains(name)) {
            throw IOFailure(QString("%1: There is such a file already, which no comparison wrote.")
                                .arg(info.filePath()));
        }
        const QFileInfo folder(info.path());
        if (name.contains('/') && isThere(folder) && (folder.isSymLink() || !folder.isDir())) {
            throw IOFailure(
                QString("%1: The comparison makes a folder of this name, but there is something "
                        "else.")
                    .arg(folder.filePath()));
        }
    }
}

} // namespace kelp::compare
