#include "FileExchange.h"

#include "FolderContent.h"
#include "JsonWriter.h"
#include "kelpException.h"
#include "kelpFileWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kelp::compare {

namespace {

int renameFile(const QString& from, const QString& to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData());
}

QString in(const QString& folder, const QString& name)
{
    return QDir(folder).filePath(name);
}

/// Stands in the folder while files are moved: should the process be killed meanwhile, the next
/// comparison knows all the files as its own.
QByteArray unfinishedRecord(const QStringList& files)
{
    command::JsonWriter json;
    json.beginObject();
    json.value("program", "tessera-compare");
    json.value("version", TESSERA_VERSION);
    json.value("unfinished", true);
    json.texts("files", files);
    json.endObject();
    return json.text();
}

} // namespace

FileExchange::~FileExchange()
{
    if (m_isDone) {
        return;
    }
    for (auto move = m_moves.crbegin(); move != m_moves.crend(); ++move) {
        renameFile(move->second, move->first);
    }
    for (auto folder = m_madeFolders.crbegin(); folder != m_madeFolders.crend(); ++folder) {
        QDir().rmdir(*folder);
    }
}

void FileExchange::move(const QString& from, const QString& to)
{
    const QString folder = QFileInfo(to).path();
    if (!QFileInfo::exists(folder)) {
        if (!QDir().mkpath(folder)) {
            throw IOFailure(QString("%1: The folder cannot be made.").arg(folder));
        }
        m_madeFolders.append(folder);
    }
    if (renameFile(from, to) != 0) {
        throw IOFailure(QString("%1: %2.").arg(to, QString::fromLocal8Bit(std::strerror(errno))));
    }
    m_moves.append({from, to});
}

void FileExchange::keepRecord(const QString& record, const QString& kept)
{
    // A copy: without a record, even for a moment, the folder would be that of a stranger.
    if (!QFileInfo::exists(record)) {
        return;
    }
    if (!QFile::copy(record, kept)) {
        throw IOFailure(QString("%1: The file cannot be written.").arg(kept));
    }
    m_moves.append({record, kept});
}

void FileExchange::run(const QStringList& former, const QString& fresh, const QStringList& written)
{
    const QString record = in(m_folder, comparisonRecord);
    const QString announcement = in(m_aside, "unfinished.json");
    kelp::writeFileAtomically(announcement, unfinishedRecord(former + written));
    keepRecord(record, in(m_aside, comparisonRecord));
    move(announcement, record);
    for (const QString& name : former) {
        move(in(m_folder, name), in(m_aside, name));
    }
    for (const QString& name : written) {
        move(in(fresh, name), in(m_folder, name));
    }
    // Over the announcement, in one step.
    move(in(fresh, comparisonRecord), record);
    m_isDone = true;
    removeEmptyFolders(former);
}

void FileExchange::removeEmptyFolders(const QStringList& names) const
{
    for (const QString& name : names) {
        if (name.contains('/')) {
            QDir(m_folder).rmdir(QFileInfo(name).path());
        }
    }
}

} // namespace kelp::compare
