#include "CopiedFiles.h"

#include "DataIOManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace kelp::patients {

namespace {

/// Only such names stand in stored trees as they are, and can be searched for there.
bool isPlainWord(const QString& name)
{
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), [](QChar character) {
        const ushort code = character.unicode();
        return code < 128 &&
               (character.isLetterOrNumber() || code == '_' || code == '-' || code == '.');
    });
}

/// The folder of the store's copies with links resolved; empty if there is none.
QString binaryFolder()
{
    return QDir(DataTreeIO::binaryDataDirUri().path()).canonicalPath();
}

QSet<QString> pathsInMemory()
{
    QList<Patient*> patients;
    DataIOManager::getPatientList(patients);
    QSet<QString> paths;
    for (const Patient* const patient : patients) {
        QList<Data*> studies;
        patient->getAllStudies(studies);
        for (Data* const data : studies) {
            auto* const study = static_cast<Study*>(data);
            if (!study->isBodyLoaded()) {
                continue;
            }
            QList<Data*> items;
            study->getAllData(items);
            for (const Data* const item : items) {
                for (const QString& path : pathsOf(*item)) {
                    paths.insert(QFileInfo(path).canonicalFilePath());
                }
            }
        }
    }
    return paths;
}

} // namespace

QStringList pathsOf(const Data& item)
{
    QList<kelp::URI> uris;
    item.getUris(uris);
    QStringList paths;
    for (const kelp::URI& uri : uris) {
        paths.append(uri.path().replace(QLatin1Char('\\'), QLatin1Char('/')));
    }
    return paths;
}

void CopiedFiles::addItem(const Data& item)
{
    const QString root = binaryFolder();
    if (root.isEmpty()) {
        return;
    }
    for (const QString& path : pathsOf(item)) {
        const QString file = QFileInfo(path).canonicalFilePath();
        if (file.startsWith(root + QLatin1Char('/')) && QFileInfo(file).isFile()) {
            m_paths.insert(file);
        }
    }
}

void CopiedFiles::addStudy(Study& study)
{
    QList<Data*> items;
    study.getAllData(items);
    for (const Data* const item : items) {
        addItem(*item);
    }
}

int CopiedFiles::remove() const
{
    // A file is mentioned where the name of its folder is and its own. Both are searched for at
    // once: the stored studies of a large store take a while to read.
    QSet<QString> words;
    for (const QString& path : m_paths) {
        words.insert(QFileInfo(path).dir().dirName());
        words.insert(QFileInfo(path).fileName());
    }
    QStringList searchable;
    std::copy_if(words.begin(), words.end(), std::back_inserter(searchable), isPlainWord);
    QSet<QString> mentioned;
    if (m_paths.isEmpty() ||
        DataIOManager::findMentions(searchable, mentioned) != CaError::nullError) {
        return 0;
    }
    const QSet<QString> inMemory = pathsInMemory();
    const auto mayBeMentioned = [&](const QString& word) {
        return !isPlainWord(word) || mentioned.contains(word);
    };
    int removed = 0;
    for (const QString& path : m_paths) {
        const QFileInfo file(path);
        const bool isNeeded = inMemory.contains(path) || (mayBeMentioned(file.dir().dirName()) &&
                                                          mayBeMentioned(file.fileName()));
        if (!isNeeded && QFile::remove(path)) {
            ++removed;
            // Fails as it should for a folder that is not empty.
            if (file.absolutePath() != binaryFolder()) {
                QDir().rmdir(file.absolutePath());
            }
        }
    }
    return removed;
}

} // namespace kelp::patients
