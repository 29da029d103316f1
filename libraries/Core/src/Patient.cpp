#include "Patient.h"

#include "DataTreeIO.h"
#include "DataTreeNode.h"

namespace {

const QString nameAttribute = QStringLiteral("Name");
const QString lastNameAttribute = QStringLiteral("LastName");
const QString birthDateAttribute = QStringLiteral("BirthDate");
const QString keyTextAttribute = QStringLiteral("KeyText");
const QString sexAttribute = QStringLiteral("Sex");
const QString remarkAttribute = QStringLiteral("Remark");
const QString studyName = QStringLiteral("Study");

} // namespace

_kelp::StringMixer Patient::classId()
{
    return "Patient";
}

_kelp::StringMixer Patient::getClassId() const
{
    return classId();
}

bool Patient::isA(const _kelp::StringMixer& wanted) const
{
    return wanted == classId() || StorableData::isA(wanted);
}

CaError Patient::addStudy(Study* study, bool notifyObservers)
{
    const DataPointer<Study> item(study);
    if (!study) {
        return CaError("InvalidItem", QString("Patient \"%1\" takes no null study.").arg(m_name),
                       QString());
    }
    if (hasChild(study->getId())) {
        return CaError(
            "IdTaken",
            QString("Patient \"%1\" already has a study \"%2\".").arg(m_name, study->getId()),
            QString());
    }
    m_studies.append(item);
    if (notifyObservers) {
        notify(study, "addStudy");
    }
    return CaError::nullError;
}

CaError Patient::removeStudy(const QString& id)
{
    for (int i = 0; i < m_studies.size(); ++i) {
        if (m_studies[i]->getId() == id) {
            m_studies.removeAt(i);
            return CaError::nullError;
        }
    }
    return CaError("UnknownId", QString("Patient \"%1\" has no study \"%2\".").arg(m_name, id),
                   QString());
}

CaError Patient::renameStudy(const QString& id, const QString& newId, bool notifyObservers)
{
    Study* const study = getStudy(id);
    if (!study || newId.isEmpty()) {
        return CaError(
            "InvalidItem",
            QString("Patient \"%1\" cannot call its study \"%2\" \"%3\".").arg(m_name, id, newId),
            QString());
    }
    if (id != newId && hasChild(newId)) {
        return CaError("IdTaken",
                       QString("Patient \"%1\" already has a study \"%2\".").arg(m_name, newId),
                       QString());
    }
    study->setId(newId);
    if (notifyObservers) {
        notify(study, "renameStudy");
    }
    return CaError::nullError;
}

Study* Patient::getStudy(const QString& id) const
{
    for (const DataPointer<Study>& study : m_studies) {
        if (study->getId() == id) {
            return study.data();
        }
    }
    return nullptr;
}

void Patient::getAllStudies(QList<Data*>& studies) const
{
    studies.clear();
    for (const DataPointer<Study>& study : m_studies) {
        studies.append(study.data());
    }
}

bool Patient::hasChild(const QString& id) const
{
    return getStudy(id) != nullptr;
}

QString Patient::numberOf(const QString& guid)
{
    constexpr int length = 8;
    return guid.left(length).toUpper();
}

QString Patient::toString() const
{
    return m_birthDate.isValid() ? m_name + " " + m_birthDate.toString(Qt::TextDate) : m_name;
}

QMap<QString, QVariant> Patient::metaInformation() const
{
    return {{"Name", m_name},
            {"Birth Date", m_birthDate},
            {"Sex", m_sex},
            {"Remark", m_remark},
            {"Patient ID", getPatientNumber()}};
}

CaError Patient::save(DataTreeIO* io)
{
    return io ? io->savePatient(*this) : CaError("NullArgument", "There is no store.", QString());
}

CaError Patient::load(DataTreeIO* io)
{
    return io ? io->loadPatient(*this) : CaError("NullArgument", "There is no store.", QString());
}

CaError Patient::doSave(DataTreeNode* node, DataSaveContext& context)
{
    node->setType(classId().toQString());
    const CaError error = Data::doSave(node, context);
    if (error != CaError::nullError) {
        return error;
    }
    node->setAttribute(nameAttribute, m_name);
    node->setAttribute(lastNameAttribute, m_lastName);
    node->setAttribute(birthDateAttribute, m_birthDate.toString(Qt::ISODate));
    node->setAttribute(keyTextAttribute, m_keyText);
    node->setAttribute(sexAttribute, m_sex);
    node->setAttribute(remarkAttribute, m_remark);
    for (const DataPointer<Study>& study : m_studies) {
        const CaError studyError = study->doSaveHeader(node->createChild(studyName), context);
        if (studyError != CaError::nullError) {
            return studyError;
        }
    }
    return CaError::nullError;
}

CaError Patient::doLoad(DataTreeNode* node, DataLoadContext& context)
{
    const CaError error = Data::doLoad(node, context);
    if (error != CaError::nullError) {
        return error;
    }
    m_studies.clear();
    for (DataTreeNode* const child : node->getChildren()) {
        if (child->getName() != studyName) {
            continue;
        }
        const DataPointer<Study> study(new Study);
        const CaError studyError = study->doLoad(child, context);
        if (studyError != CaError::nullError) {
            return studyError;
        }
        m_studies.append(study);
    }
    return CaError::nullError;
}

bool Patient::loadAttribute(const QString& name, const QString& value)
{
    if (name == nameAttribute) {
        m_name = value;
    } else if (name == lastNameAttribute) {
        m_lastName = value;
    } else if (name == birthDateAttribute) {
        m_birthDate = QDate::fromString(value, Qt::ISODate);
    } else if (name == keyTextAttribute) {
        m_keyText = value;
    } else if (name == sexAttribute) {
        m_sex = value;
    } else if (name == remarkAttribute) {
        m_remark = value;
    } else {
        return StorableData::loadAttribute(name, value);
    }
    return true;
}
