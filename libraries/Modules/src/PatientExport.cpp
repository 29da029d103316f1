#include "ExchangeFiles.h"
#include "PatientExchange.h"

#include "XMLDataTree.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QMap>

#include <cerrno>
#include <cstdio>

namespace kelp::exchange {

namespace {

/// Finds a place in the export for every file that one patient's trees name. Files of one folder
/// stay together, since an export's XML names its images by their bare names.
class PatientFiles
{
public:
    explicit PatientFiles(const QString& guid) : m_root(QStringLiteral("files/") + guid) {}

    URI carried(const URI& uri)
    {
        const LocatedFile file =
            locate(uri, [](const QString& path) { return QFileInfo::exists(path); });
        return file.path.isEmpty() ? uri : relocated(uri, file, placeOf(file.path));
    }

    /// Places by the paths of the files.
    const QMap<QString, QString>& getPlaces() const { return m_places; }

private:
    QString placeOf(const QString& path)
    {
        const QFileInfo info(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
        const auto known = m_places.constFind(info.filePath());
        if (known != m_places.constEnd()) {
            return *known;
        }
        const QString place = folderOf(info.path()) + '/' + info.fileName();
        m_places.insert(info.filePath(), place);
        return place;
    }

    QString folderOf(const QString& source)
    {
        const auto known = m_folders.constFind(source);
        if (known != m_folders.constEnd()) {
            return *known;
        }
        QString name = DataTreeNode::makeIdValid(QFileInfo(source).fileName());
        if (name.isEmpty() || name.startsWith('.')) {
            name = QStringLiteral("files");
        }
        QString folder = m_root + '/' + name;
        for (int number = 2; m_folders.values().contains(folder); ++number) {
            folder = QStringLiteral("%1/%2_%3").arg(m_root, name).arg(number);
        }
        m_folders.insert(source, folder);
        return folder;
    }

    QString m_root;
    QMap<QString, QString> m_folders;
    QMap<QString, QString> m_places;
};

class Exporter
{
public:
    Exporter(const QString& folder, const Progress& progress, int patients)
        : m_folder(folder), m_progress(progress, patients)
    {
    }

    /// False once the user has cancelled.
    bool add(const DataPointer<Patient>& patient);
    /// Makes the export whole.
    void finish()
    {
        writeNewFile(m_folder + '/' + Manifest::fileName(), m_manifest.toText());
        flushToDisk(m_folder);
    }
    Report report;

private:
    bool copyFiles(const PatientFiles& files, const QString& name);
    void copyFile(const QString& source, const QString& place, const QString& name);
    void writeTree(const QString& path, const DataTreeNode& root);
    void makeFolderOf(const QString& place) const;

    QString m_folder;
    PatientProgress m_progress;
    Manifest m_manifest;
};

bool Exporter::add(const DataPointer<Patient>& patient)
{
    const QString guid = patient->getGUID();
    const QString name = displayName(patient->getName(), guid);
    m_progress.nextPatient();
    if (!m_progress.tell(0, 1, name)) {
        return false;
    }
    PatientTree tree;
    const CaError error = DataIOManager::readPatientTree(patient, tree);
    if (error != CaError::nullError) {
        report.problems.append(
            QStringLiteral("%1 was not exported: %2").arg(name, error.toString()));
        return true;
    }
    PatientFiles files(guid);
    const auto carry = [&files](const URI& uri) { return files.carried(uri); };
    rewriteUris(tree.header, carry);
    for (const auto& study : tree.studies) {
        rewriteUris(*study, carry);
    }
    if (!copyFiles(files, name)) {
        return false;
    }
    for (const auto& study : tree.studies) {
        writeTree(studyTreePath(study->getAttribute(QStringLiteral("GUID"))), *study);
    }
    writeTree(patientTreePath(guid), tree.header);
    m_manifest.addPatient(guid, patient->getName());
    report.carried.append(name);
    return true;
}

bool Exporter::copyFiles(const PatientFiles& files, const QString& name)
{
    const QMap<QString, QString>& places = files.getPlaces();
    int done = 0;
    for (auto file = places.begin(); file != places.end(); ++file) {
        if (!m_progress.tell(done++, places.size(),
                             name + QStringLiteral(": ") + QFileInfo(file.key()).fileName())) {
            return false;
        }
        copyFile(file.key(), file.value(), name);
    }
    return m_progress.tell(1, 1, name);
}

void Exporter::copyFile(const QString& source, const QString& place, const QString& name)
{
    makeFolderOf(place);
    try {
        const FileDigest digest = exchange::copyFile(source, m_folder + '/' + place);
        m_manifest.addFile(place, digest);
        ++report.files;
        report.bytes += digest.size;
    } catch (const SourceFailure& failure) {
        // The rest of the patient is worth carrying all the same.
        m_manifest.addMissing(place);
        report.problems.append(
            QStringLiteral("%1 was exported without a file. %2").arg(name, failure.getMessage()));
    }
}

void Exporter::writeTree(const QString& path, const DataTreeNode& root)
{
    makeFolderOf(path);
    m_manifest.addFile(path, writeNewFile(m_folder + '/' + path, XMLDataTree::write(root)));
}

void Exporter::makeFolderOf(const QString& place) const
{
    const QString folder = QFileInfo(m_folder + '/' + place).path();
    if (!QDir().mkpath(folder)) {
        throw IOFailure(
            QStringLiteral("Could not create folder %1: %2").arg(folder, qt_error_string(errno)));
    }
}

/// Gives the folder its name: "Export__" and the time, or the next number that is free.
QString publish(const QString& temporary, const QString& destination)
{
    qint64 number =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss")).toLongLong();
    QString folder;
    do {
        folder = QStringLiteral("%1/Export__%2").arg(destination).arg(number++);
    } while (QFileInfo::exists(folder));
    if (std::rename(QFile::encodeName(temporary).constData(),
                    QFile::encodeName(folder).constData()) != 0) {
        throw IOFailure(
            QStringLiteral("Could not create folder %1: %2").arg(folder, qt_error_string(errno)));
    }
    return folder;
}

} // namespace

Report exportPatients(const QList<DataPointer<Patient>>& patients, const QString& destination,
                      const Progress& progress)
{
    if (!QFileInfo(destination).isDir()) {
        throw IOFailure(
            QStringLiteral("Could not export to %1: There is no such folder.").arg(destination));
    }
    // Beside its final place, so that what stands there is whole.
    TemporaryFolder folder(
        makeFolder(destination,
                   QStringLiteral("Unfinished_export_%1").arg(QCoreApplication::applicationPid())));
    Exporter exporter(folder.getPath(), progress, patients.size());
    for (const DataPointer<Patient>& patient : patients) {
        if (patient && !exporter.add(patient)) {
            exporter.report.cancelled = true;
            break;
        }
    }
    Report& report = exporter.report;
    if (report.cancelled || report.carried.isEmpty()) {
        report.carried.clear();
        report.files = 0;
        report.bytes = 0;
        return report;
    }
    exporter.finish();
    report.folder = publish(folder.getPath(), QDir::cleanPath(destination));
    folder.keep();
    return report;
}

} // namespace kelp::exchange
