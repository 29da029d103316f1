#include "XMLDataTreeIO.h"

#include "ParallelFor.h"
#include "StoreMentions.h"
#include "XMLDataTree.h"
#include "kelpFileWriter.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <vector>

namespace {

const QString fileSuffix = QStringLiteral(".xml");

QByteArray digestOf(const QByteArray& content)
{
    return QCryptographicHash::hash(content, QCryptographicHash::Sha256);
}

CaError unusable(const QString& folder)
{
    return CaError("StoreUnusable",
                   QString("Could not create folder %1: %2").arg(folder, qt_error_string(errno)),
                   QString());
}

CaError withFile(const CaError& error, const QString& path)
{
    return CaError(error.getIdentifier(),
                   QString("Could not read file %1: %2").arg(path, error.getText()),
                   error.getDetail());
}

/// In no order. By hand, since matching ten thousand names with a pattern takes its time.
QStringList xmlFilesIn(const QString& folder)
{
    QStringList names;
    QDirIterator files(folder, QDir::Files | QDir::Hidden);
    while (files.hasNext()) {
        files.next();
        if (files.fileName().endsWith(fileSuffix, Qt::CaseInsensitive)) {
            names.append(files.fileName());
        }
    }
    return names;
}

/// Plain pointers, since sorting moves its elements about, which is slow for tracking ones.
using Patients = std::vector<std::unique_ptr<Patient>>;

void sortByName(Patients& patients)
{
    std::sort(patients.begin(), patients.end(), [](const auto& a, const auto& b) {
        const int order = a->getName().compare(b->getName(), Qt::CaseInsensitive);
        return order != 0 ? order < 0 : a->getGUID() < b->getGUID();
    });
}

} // namespace

CaError XMLDataTreeIO::checkGuid(const QString& guid)
{
    if (guid.isEmpty() || guid.startsWith('.') || guid != DataTreeNode::makeIdValid(guid)) {
        return CaError("InvalidGUID", QString("\"%1\" is no valid GUID.").arg(guid), QString());
    }
    return CaError::nullError;
}

CaError XMLDataTreeIO::Files::readTree(const QString& path, DataTreeNode& root)
{
    QByteArray content;
    CaError error = io->read(path, content);
    if (error != CaError::nullError) {
        return error;
    }
    error = XMLDataTree::read(content, root);
    return error == CaError::nullError ? error : withFile(error, path);
}

CaError XMLDataTreeIO::Files::writeTree(const QString& path, const DataTreeNode& root)
{
    const QByteArray content = XMLDataTree::write(root);
    const QByteArray digest = digestOf(content);
    if (digests.value(path) == digest && QFile::exists(path)) {
        return CaError::nullError;
    }
    const CaError error = io->write(path, content);
    if (error == CaError::nullError) {
        digests.insert(path, digest);
    }
    return error;
}

CaError XMLDataTreeIO::open(const QString& folder)
{
    auto files = std::make_shared<Files>();
    files->io.reset(FileIO::getFactory().create("file"));
    if (!files->io) {
        return CaError("NoFileAccess", "No access to files is registered.", QString());
    }
    const QString root = QDir::cleanPath(QDir(folder).absolutePath());
    if (!QDir().mkpath(root)) {
        return unusable(root);
    }
    const CaError locked = m_lock.acquire(root);
    if (locked != CaError::nullError) {
        return locked;
    }
    for (const char* const name : {"patients", "studies", "binary"}) {
        const QString path = root + "/" + name;
        if (!QDir().mkpath(path)) {
            m_lock.release();
            return unusable(path);
        }
        kelp::AtomicFile::removeLeftovers(path);
    }
    m_folder = root;
    m_files = files;
    return CaError::nullError;
}

CaError XMLDataTreeIO::listPatients(QList<DataPointer<Patient>>& patients)
{
    patients.clear();
    m_problems.clear();
    const QStringList names = xmlFilesIn(m_folder + "/patients");
    // A part after the other, so that the trees of a large store are never all in memory.
    constexpr int partSize = 500;
    Patients listed;
    for (int first = 0; first < names.size(); first += partSize) {
        std::vector<Header> headers(
            static_cast<std::size_t>(std::min(partSize, names.size() - first)));
        kelp::parallelFor(static_cast<int>(headers.size()), [&](int i) {
            Header& header = headers[static_cast<std::size_t>(i)];
            header.guid = names[first + i].chopped(fileSuffix.size());
            header.error = readHeader(header.guid, header.tree);
        });
        for (Header& header : headers) {
            auto patient = std::make_unique<Patient>();
            const CaError error = takeHeader(header, *patient);
            if (error == CaError::nullError) {
                listed.push_back(std::move(patient));
            } else {
                m_problems.append(error);
            }
        }
    }
    sortByName(listed);
    patients.reserve(static_cast<int>(listed.size()));
    for (std::unique_ptr<Patient>& patient : listed) {
        patients.append(DataPointer<Patient>(patient.release()));
    }
    return CaError::nullError;
}

CaError XMLDataTreeIO::loadPatient(Patient& patient)
{
    return loadHeader(patient.getGUID(), patient);
}

CaError XMLDataTreeIO::loadHeader(const QString& guid, Patient& patient) const
{
    Header header;
    header.guid = guid;
    header.error = readHeader(guid, header.tree);
    return takeHeader(header, patient);
}

CaError XMLDataTreeIO::takeHeader(Header& header, Patient& patient) const
{
    if (header.error != CaError::nullError) {
        return header.error;
    }
    DataLoadContext context;
    const CaError error = patient.doLoad(&header.tree, context);
    if (error != CaError::nullError) {
        return withFile(error, patientPath(header.guid));
    }
    QList<Data*> studies;
    patient.getAllStudies(studies);
    for (Data* const item : studies) {
        static_cast<Study*>(item)->setBodyLoader(
            [files = m_files, path = studyPath(item->getGUID())](Study& study) {
                return readBody(*files, path, study);
            });
    }
    return CaError::nullError;
}

CaError XMLDataTreeIO::readHeader(const QString& guid, DataTreeNode& header) const
{
    const QString path = patientPath(guid);
    const CaError error = m_files->readTree(path, header);
    return error == CaError::nullError ? checkHeader(header, path, guid) : error;
}

CaError XMLDataTreeIO::checkHeader(const DataTreeNode& header, const QString& path,
                                   const QString& guid)
{
    if (header.getType() != Patient::classId().toQString()) {
        return withFile(CaError("InvalidTree", "It holds no patient.", QString()), path);
    }
    // A copy made by hand would be a second patient of the same GUID.
    if (header.getAttribute("GUID") != guid) {
        return withFile(CaError("InvalidTree", "It holds the patient of another file.", QString()),
                        path);
    }
    for (const DataTreeNode* const study : header.getChildren()) {
        const CaError error = checkGuid(study->getAttribute("GUID"));
        if (error != CaError::nullError) {
            return withFile(error, path);
        }
    }
    return CaError::nullError;
}

CaError XMLDataTreeIO::readBody(Files& files, const QString& path, Study& study)
{
    DataTreeNode body;
    const CaError error = files.readTree(path, body);
    if (error != CaError::nullError) {
        return error;
    }
    if (body.getType() != Study::classId().toQString() ||
        body.getAttribute("GUID") != study.getGUID()) {
        return withFile(CaError("InvalidTree", "It holds another study.", QString()), path);
    }
    // The patient's header was read before and may have been changed since.
    const QString id = study.getId();
    const QString institution = study.getInstitution();
    DataLoadContext context;
    const CaError loaded = study.doLoad(&body, context);
    study.setId(id);
    study.setInstitution(institution);
    return loaded == CaError::nullError ? loaded : withFile(loaded, path);
}

CaError XMLDataTreeIO::saveBody(Study& study)
{
    CaError error = checkGuid(study.getGUID());
    if (error != CaError::nullError) {
        return error;
    }
    const QString path = studyPath(study.getGUID());
    const bool isStored = QFile::exists(path);
    if (isStored && !study.isBodyLoaded()) {
        return CaError::nullError;
    }
    error = study.ensureLoaded();
    if (error != CaError::nullError) {
        // It took no items since, so what the file holds is all there is.
        return isStored ? CaError::nullError : error;
    }
    DataTreeNode body;
    DataSaveContext context;
    error = study.doSave(&body, context);
    return error == CaError::nullError ? m_files->writeTree(path, body) : error;
}

CaError XMLDataTreeIO::savePatient(Patient& patient)
{
    const QString guid = patient.getGUID();
    CaError error = checkGuid(guid);
    DataTreeNode former;
    if (error == CaError::nullError && QFile::exists(patientPath(guid))) {
        error = readHeader(guid, former);
    }
    if (error != CaError::nullError) {
        return error;
    }
    QList<Data*> studies;
    patient.getAllStudies(studies);
    QStringList guids;
    // Bodies first: at no time does a header name a study that is not there.
    for (Data* const study : studies) {
        error = saveBody(*static_cast<Study*>(study));
        if (error != CaError::nullError) {
            return error;
        }
        guids.append(study->getGUID());
    }
    DataTreeNode header;
    DataSaveContext context;
    error = patient.doSave(&header, context);
    if (error == CaError::nullError) {
        error = m_files->writeTree(patientPath(guid), header);
    }
    return error == CaError::nullError ? removeStudiesOf(former, guids) : error;
}

CaError XMLDataTreeIO::removePatient(const QString& guid)
{
    CaError error = checkGuid(guid);
    DataTreeNode header;
    if (error == CaError::nullError) {
        error = readHeader(guid, header);
    }
    if (error == CaError::nullError) {
        error = m_files->io->remove(patientPath(guid));
    }
    return error == CaError::nullError ? removeStudiesOf(header, QStringList()) : error;
}

CaError XMLDataTreeIO::findMentions(const QStringList& words, QSet<QString>& found) const
{
    return ::findMentions(m_folder + "/studies", words, found);
}

CaError XMLDataTreeIO::removeStudiesOf(const DataTreeNode& formerHeader, const QStringList& keep)
{
    for (const DataTreeNode* const study : formerHeader.getChildren()) {
        const QString guid = study->getAttribute("GUID");
        const QString path = studyPath(guid);
        if (!keep.contains(guid) && QFile::exists(path)) {
            const CaError error = m_files->io->remove(path);
            if (error != CaError::nullError) {
                return error;
            }
        }
    }
    return CaError::nullError;
}

QString XMLDataTreeIO::patientPath(const QString& guid) const
{
    return m_folder + "/patients/" + guid + fileSuffix;
}

QString XMLDataTreeIO::studyPath(const QString& guid) const
{
    return m_folder + "/studies/" + guid + fileSuffix;
}
