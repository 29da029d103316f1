#include "ExchangeFiles.h"
#include "PatientExchange.h"

#include "XMLDataTree.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>

#include <memory>
#include <vector>

namespace kelp::exchange {

namespace {

[[noreturn]] void failSource(const QString& path, const QString& reason)
{
    throw SourceFailure(QStringLiteral("Could not read file %1: %2").arg(path, reason));
}

const QString damaged = QStringLiteral("It is not the file that was exported: the export is "
                                       "damaged or was not copied whole.");

/// The files of an export, each held against the manifest.
class ExportedFiles
{
public:
    explicit ExportedFiles(const QString& folder)
        : m_folder(QFileInfo(folder).canonicalFilePath()), m_manifest(Manifest::read(folder))
    {
    }

    const Manifest& getManifest() const { return m_manifest; }

    void readTree(const QString& path, DataTreeNode& root) const
    {
        const QString source = checkedSource(path);
        QFile file(source);
        if (!file.open(QIODevice::ReadOnly)) {
            failSource(source, file.errorString());
        }
        const QByteArray content = file.readAll();
        const FileDigest digest{
            content.size(), QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex()};
        if (!(digest == m_manifest.getDigest(path))) {
            failSource(source, damaged);
        }
        const CaError error = XMLDataTree::read(content, root);
        if (error != CaError::nullError) {
            failSource(source, error.toString());
        }
    }

    FileDigest copy(const QString& path, const QString& target) const
    {
        const QString source = checkedSource(path);
        const FileDigest digest = copyFile(source, target);
        if (!(digest == m_manifest.getDigest(path))) {
            failSource(source, damaged);
        }
        return digest;
    }

private:
    QString checkedSource(const QString& path) const
    {
        const QString source = m_folder + '/' + path;
        if (!m_manifest.contains(path)) {
            failSource(source, QStringLiteral("The export does not list it."));
        }
        // A link may lead anywhere.
        const QString canonical = QFileInfo(source).canonicalFilePath();
        if (!canonical.isEmpty() && !canonical.startsWith(m_folder + '/')) {
            failSource(source, QStringLiteral("It lies outside of the export's folder."));
        }
        return source;
    }

    QString m_folder;
    Manifest m_manifest;
};

/// Brings the files of one patient below the store's binary folder. They go again unless kept.
class ArrivingFiles
{
public:
    explicit ArrivingFiles(const ExportedFiles& files)
        : m_files(files), m_binary(DataTreeIO::binaryDataDirUri().path())
    {
    }

    URI arrived(const URI& uri)
    {
        const Manifest& manifest = m_files.getManifest();
        const LocatedFile file =
            locate(uri, [&manifest](const QString& path) { return manifest.contains(path); });
        if (file.path.isEmpty()) {
            return uri;
        }
        if (!manifest.contains(file.path)) {
            failSource(file.path, QStringLiteral("The export does not list it."));
        }
        const QString target =
            folderOf(QFileInfo(file.path).path()) + '/' + QFileInfo(file.path).fileName();
        m_targets.insert(file.path, target);
        return relocated(uri, file, target);
    }

    /// Targets by the paths in the export.
    const QMap<QString, QString>& getTargets() const { return m_targets; }

    void keep()
    {
        for (const auto& folder : m_folders) {
            folder->keep();
        }
    }

private:
    QString folderOf(const QString& source)
    {
        const auto known = m_folderPaths.constFind(source);
        if (known != m_folderPaths.constEnd()) {
            return *known;
        }
        const QString folder = makeFolder(m_binary, QFileInfo(source).fileName());
        m_folders.push_back(std::make_unique<TemporaryFolder>(folder));
        m_folderPaths.insert(source, folder);
        return folder;
    }

    const ExportedFiles& m_files;
    QString m_binary;
    QMap<QString, QString> m_folderPaths;
    QMap<QString, QString> m_targets;
    std::vector<std::unique_ptr<TemporaryFolder>> m_folders;
};

class Importer
{
public:
    Importer(const QString& folder, const Progress& progress, const Question& question)
        : m_files(folder), m_progress(progress, m_files.getManifest().getPatients().size()),
          m_question(question)
    {
        report.isImport = true;
        report.folder = folder;
    }

    const QList<Manifest::Patient>& getPatients() const
    {
        return m_files.getManifest().getPatients();
    }
    /// False when there is no sense in going on: the user has cancelled, or the store takes no
    /// more.
    bool add(const Manifest::Patient& patient);
    Report report;

private:
    void readTree(const Manifest::Patient& patient, PatientTree& tree) const;
    bool carry(const Manifest::Patient& patient, const QString& name);
    bool copyFiles(const ArrivingFiles& files, const QString& name, Report& arrived);

    ExportedFiles m_files;
    PatientProgress m_progress;
    const Question& m_question;
};

DataPointer<Patient> findPresent(const QString& guid)
{
    QList<Patient*> patients;
    const CaError error = DataIOManager::getPatientList(patients);
    if (error != CaError::nullError) {
        throw IOFailure(error.toString());
    }
    for (Patient* const patient : qAsConst(patients)) {
        if (patient->getGUID() == guid) {
            return patient;
        }
    }
    return {};
}

bool Importer::add(const Manifest::Patient& patient)
{
    const QString name = displayName(patient.name, patient.guid);
    m_progress.nextPatient();
    if (!m_progress.tell(0, 1, name)) {
        report.cancelled = true;
        return false;
    }
    const DataPointer<Patient> present = findPresent(patient.guid);
    const Present answer = present && m_question ? m_question(*present) : Present::Keep;
    if (answer == Present::Cancel) {
        report.cancelled = true;
        return false;
    }
    const bool isReplaced = answer == Present::Replace;
    if (present && !isReplaced) {
        report.present.append(name);
        return true;
    }
    const QString problem = QStringLiteral("%1 was not imported. %2");
    try {
        if (carry(patient, name)) {
            (isReplaced ? report.replaced : report.carried).append(name);
        }
    } catch (const SourceFailure& failure) {
        report.problems.append(problem.arg(name, failure.getMessage()));
    } catch (const IOFailure& failure) {
        report.problems.append(problem.arg(name, failure.getMessage()) +
                               QStringLiteral(" The import ended there."));
        return false;
    }
    report.cancelled = m_progress.isCancelled();
    return !report.cancelled;
}

void Importer::readTree(const Manifest::Patient& patient, PatientTree& tree) const
{
    const QString guid = QStringLiteral("GUID");
    m_files.readTree(patientTreePath(patient.guid), tree.header);
    if (tree.header.getAttribute(guid) != patient.guid) {
        failSource(patientTreePath(patient.guid), QStringLiteral("It holds another patient."));
    }
    const QList<DataTreeNode*> studies = tree.header.getChildren();
    for (const DataTreeNode* const study : studies) {
        tree.studies.push_back(std::make_unique<DataTreeNode>());
        m_files.readTree(studyTreePath(study->getAttribute(guid)), *tree.studies.back());
    }
}

/// Files first, the patient last: what the store lists is whole at any time.
bool Importer::carry(const Manifest::Patient& patient, const QString& name)
{
    PatientTree tree;
    readTree(patient, tree);
    ArrivingFiles files(m_files);
    const auto arrive = [&files](const URI& uri) { return files.arrived(uri); };
    rewriteUris(tree.header, arrive);
    for (const auto& study : tree.studies) {
        rewriteUris(*study, arrive);
    }
    Report arrived;
    if (!copyFiles(files, name, arrived)) {
        return false;
    }
    flushToDisk(DataTreeIO::binaryDataDirUri().path());
    const CaError error = DataIOManager::storePatientTree(tree);
    if (error != CaError::nullError) {
        throw SourceFailure(error.toString());
    }
    files.keep();
    report.problems += arrived.problems;
    report.files += arrived.files;
    report.bytes += arrived.bytes;
    return true;
}

bool Importer::copyFiles(const ArrivingFiles& files, const QString& name, Report& arrived)
{
    const QMap<QString, QString>& targets = files.getTargets();
    int done = 0;
    for (auto file = targets.begin(); file != targets.end(); ++file) {
        if (!m_progress.tell(done++, targets.size(),
                             name + QStringLiteral(": ") + QFileInfo(file.key()).fileName())) {
            return false;
        }
        if (m_files.getManifest().isMissing(file.key())) {
            arrived.problems.append(
                QStringLiteral("%1 lacks the file %2, which was missing already when the export "
                               "was written.")
                    .arg(name, QFileInfo(file.key()).fileName()));
            continue;
        }
        ++arrived.files;
        arrived.bytes += m_files.copy(file.key(), file.value()).size;
    }
    return m_progress.tell(1, 1, name);
}

} // namespace

Report importPatients(const QString& folder, const Progress& progress, const Question& question)
{
    Importer importer(QDir::cleanPath(folder), progress, question);
    for (const Manifest::Patient& patient : importer.getPatients()) {
        if (!importer.add(patient)) {
            break;
        }
    }
    return importer.report;
}

} // namespace kelp::exchange
