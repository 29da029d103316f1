#include "ExchangeManifest.h"

#include "DataTreeNode.h"
#include "XMLDataTree.h"
#include "kelpException.h"

#include <QFile>
#include <QFileInfo>

namespace kelp::exchange {

namespace {

const QString typeName = QStringLiteral("PatientExport");
const QString patientName = QStringLiteral("Patient");
const QString fileNodeName = QStringLiteral("File");
const QString guidAttribute = QStringLiteral("GUID");
const QString nameAttribute = QStringLiteral("Name");
const QString pathAttribute = QStringLiteral("Path");
const QString sizeAttribute = QStringLiteral("Size");
const QString digestAttribute = QStringLiteral("SHA256");
const QString missingAttribute = QStringLiteral("Missing");

[[noreturn]] void failReading(const QString& folder, const QString& reason)
{
    throw IOFailure(QStringLiteral("Could not read the export in %1: %2").arg(folder, reason));
}

/// A manifest may have been tampered with: its paths must not lead out of the folder.
bool staysInside(const QString& path)
{
    const QStringList parts = path.split('/');
    for (const QString& part : parts) {
        if (part.isEmpty() || part == QStringLiteral(".") || part == QStringLiteral("..") ||
            part.contains(QChar::Null)) {
            return false;
        }
    }
    return true;
}

} // namespace

QString patientTreePath(const QString& guid)
{
    return QStringLiteral("patients/%1.xml").arg(guid);
}

QString studyTreePath(const QString& guid)
{
    return QStringLiteral("studies/%1.xml").arg(guid);
}

void Manifest::addPatient(const QString& guid, const QString& name)
{
    m_patients.append({guid, name});
}

void Manifest::addFile(const QString& path, const FileDigest& digest)
{
    m_paths.append(path);
    m_entries.insert(path, {digest, false});
}

void Manifest::addMissing(const QString& path)
{
    m_paths.append(path);
    m_entries.insert(path, {{}, true});
}

bool Manifest::contains(const QString& path) const
{
    return m_entries.contains(path);
}

bool Manifest::isMissing(const QString& path) const
{
    return m_entries.value(path).isMissing;
}

FileDigest Manifest::getDigest(const QString& path) const
{
    return m_entries.value(path).digest;
}

QByteArray Manifest::toText() const
{
    DataTreeNode root(typeName, typeName);
    for (const Patient& patient : m_patients) {
        DataTreeNode* const node = root.createChild(patientName);
        node->setAttribute(guidAttribute, patient.guid);
        node->setAttribute(nameAttribute, patient.name);
    }
    for (const QString& path : m_paths) {
        const Entry entry = m_entries.value(path);
        DataTreeNode* const node = root.createChild(fileNodeName);
        node->setAttribute(pathAttribute, path);
        if (entry.isMissing) {
            node->setAttribute(missingAttribute, QStringLiteral("true"));
        } else {
            node->setAttribute(sizeAttribute, QString::number(entry.digest.size));
            node->setAttribute(digestAttribute, QString::fromLatin1(entry.digest.sha256));
        }
    }
    return XMLDataTree::write(root);
}

Manifest Manifest::read(const QString& folder)
{
    QFile file(folder + '/' + fileName());
    if (!file.open(QIODevice::ReadOnly)) {
        failReading(folder, QStringLiteral("%1: %2").arg(fileName(), file.errorString()));
    }
    DataTreeNode root;
    const CaError error = XMLDataTree::read(file.readAll(), root);
    if (error != CaError::nullError) {
        failReading(folder, QStringLiteral("%1: %2").arg(fileName(), error.toString()));
    }
    if (root.getType() != typeName) {
        failReading(folder, QStringLiteral("%1 lists no export.").arg(fileName()));
    }
    Manifest manifest;
    const QList<DataTreeNode*> nodes = root.getChildren();
    for (const DataTreeNode* const node : nodes) {
        if (node->getName() == patientName) {
            const QString guid = node->getAttribute(guidAttribute);
            if (guid.contains('/') || !staysInside(patientTreePath(guid))) {
                failReading(folder, QStringLiteral("%1 is no valid GUID.").arg(guid));
            }
            manifest.addPatient(guid, node->getAttribute(nameAttribute));
            continue;
        }
        const QString path = node->getAttribute(pathAttribute);
        if (!staysInside(path)) {
            failReading(folder,
                        QStringLiteral("%1 lies outside of the export's folder.").arg(path));
        }
        if (node->hasAttribute(missingAttribute)) {
            manifest.addMissing(path);
        } else {
            manifest.addFile(path, {node->getAttribute(sizeAttribute).toLongLong(),
                                    node->getAttribute(digestAttribute).toLatin1()});
        }
    }
    return manifest;
}

bool Manifest::existsIn(const QString& folder)
{
    return QFileInfo(folder + '/' + fileName()).isFile();
}

QString Manifest::fileName()
{
    return QStringLiteral("manifest.xml");
}

} // namespace kelp::exchange
