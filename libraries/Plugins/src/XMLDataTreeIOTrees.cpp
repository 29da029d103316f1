#include "XMLDataTreeIO.h"

#include <QFile>

#include <vector>

/// Puts back the files that a failed writing of several has changed already.
class XMLDataTreeIO::Undo
{
public:
    explicit Undo(Files& files) : m_files(files) {}
    Undo(const Undo&) = delete;
    Undo& operator=(const Undo&) = delete;
    ~Undo()
    {
        for (auto file = m_former.rbegin(); file != m_former.rend(); ++file) {
            m_files.digests.remove(file->path);
            // What cannot be put back either stays as it was written: there is no better answer.
            static_cast<void>(file->existed ? m_files.io->write(file->path, file->content)
                                            : m_files.io->remove(file->path));
        }
    }

    CaError remember(const QString& path)
    {
        Former former{path, QFile::exists(path), {}};
        const CaError error =
            former.existed ? m_files.io->read(path, former.content) : CaError::nullError;
        if (error == CaError::nullError) {
            m_former.push_back(former);
        }
        return error;
    }
    void dismiss() { m_former.clear(); }

private:
    struct Former
    {
        QString path;
        bool existed;
        QByteArray content;
    };

    Files& m_files;
    std::vector<Former> m_former;
};

CaError XMLDataTreeIO::readTree(Patient& patient, PatientTree& tree)
{
    DataSaveContext context;
    CaError error = patient.doSave(&tree.header, context);
    QList<Data*> studies;
    patient.getAllStudies(studies);
    for (Data* const study : studies) {
        if (error != CaError::nullError) {
            break;
        }
        tree.studies.push_back(std::make_unique<DataTreeNode>());
        error = readBodyTree(*static_cast<Study*>(study), *tree.studies.back());
    }
    return error;
}

CaError XMLDataTreeIO::readBodyTree(Study& study, DataTreeNode& body)
{
    const QString path = studyPath(study.getGUID());
    if (!study.isBodyLoaded() && QFile::exists(path)) {
        return m_files->readTree(path, body);
    }
    const CaError error = study.ensureLoaded();
    DataSaveContext context;
    return error == CaError::nullError ? study.doSave(&body, context) : error;
}

CaError XMLDataTreeIO::checkTree(const PatientTree& tree, const DataTreeNode& formerHeader) const
{
    const CaError invalid("InvalidTree", "The studies do not match the patient's header.",
                          QString());
    QStringList formerGuids;
    for (const DataTreeNode* const study : formerHeader.getChildren()) {
        formerGuids.append(study->getAttribute("GUID"));
    }
    const QList<DataTreeNode*> studies = tree.header.getChildren();
    if (studies.size() != static_cast<int>(tree.studies.size())) {
        return invalid;
    }
    for (int i = 0; i < studies.size(); ++i) {
        const QString guid = studies[i]->getAttribute("GUID");
        const DataTreeNode& body = *tree.studies[static_cast<std::size_t>(i)];
        if (body.getType() != Study::classId().toQString() || body.getAttribute("GUID") != guid) {
            return invalid;
        }
        if (!formerGuids.contains(guid) && QFile::exists(studyPath(guid))) {
            return CaError("IdTaken",
                           QString("Study %1 belongs to another patient already.").arg(guid),
                           QString());
        }
    }
    return CaError::nullError;
}

CaError XMLDataTreeIO::writeTree(const PatientTree& tree, Patient& patient)
{
    const QString guid = tree.header.getAttribute("GUID");
    CaError error = checkGuid(guid);
    if (error == CaError::nullError) {
        error = checkHeader(tree.header, patientPath(guid), guid);
    }
    DataTreeNode former;
    if (error == CaError::nullError && QFile::exists(patientPath(guid))) {
        error = readHeader(guid, former);
    }
    if (error == CaError::nullError) {
        error = checkTree(tree, former);
    }
    Undo undo(*m_files);
    if (error == CaError::nullError) {
        error = writeFiles(tree, undo);
    }
    if (error == CaError::nullError) {
        error = loadHeader(guid, patient);
    }
    if (error != CaError::nullError) {
        return error;
    }
    undo.dismiss();
    QStringList guids;
    for (const auto& study : tree.studies) {
        guids.append(study->getAttribute("GUID"));
    }
    return removeStudiesOf(former, guids);
}

CaError XMLDataTreeIO::writeFiles(const PatientTree& tree, Undo& undo)
{
    const auto write = [this, &undo](const QString& path, const DataTreeNode& root) {
        const CaError error = undo.remember(path);
        return error == CaError::nullError ? m_files->writeTree(path, root) : error;
    };
    // Bodies first: at no time does a header name a study that is not there.
    for (const auto& study : tree.studies) {
        const CaError error = write(studyPath(study->getAttribute("GUID")), *study);
        if (error != CaError::nullError) {
            return error;
        }
    }
    return write(patientPath(tree.header.getAttribute("GUID")), tree.header);
}
