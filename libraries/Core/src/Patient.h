#pragma once

#include "Study.h"

#include <QDate>
#include <QVariant>

class DataTreeIO;

/// A data item that can be stored by itself.
class StorableData : public Data
{
    Q_OBJECT

public:
    virtual CaError save(DataTreeIO* io) = 0;
    virtual CaError load(DataTreeIO* io) = 0;
};

/// A patient: who it is, and the studies in the order added.
class Patient : public StorableData
{
    Q_OBJECT

public:
    static _kelp::StringMixer classId();

    const QString& getName() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    const QDate& getBirthDate() const { return m_birthDate; }
    void setBirthDate(const QDate& date) { m_birthDate = date; }
    /// The name followed by the birth date in text-date form.
    const QString& getKeyText() const { return m_keyText; }
    void setKeyText(const QString& text) { m_keyText = text; }
    /// The last name's part of the name, which blanks inside a last name would leave open. Empty if
    /// it was never told.
    const QString& getLastName() const { return m_lastName; }
    void setLastName(const QString& lastName) { m_lastName = lastName; }
    const QString& getSex() const { return m_sex; }
    void setSex(const QString& sex) { m_sex = sex; }
    const QString& getRemark() const { return m_remark; }
    void setRemark(const QString& remark) { m_remark = remark; }

    /// An id that is taken gives an error and changes nothing.
    CaError addStudy(Study* study, bool notify);
    CaError removeStudy(const QString& id);
    /// An id that is empty or taken gives an error and changes nothing.
    CaError renameStudy(const QString& id, const QString& newId, bool notify);
    /// Null when there is none of this id.
    Study* getStudy(const QString& id) const;
    void getAllStudies(QList<Data*>& studies) const;

    bool hasChild(const QString& id) const override;

    /// The "Patient ID" that the user sees: eight characters of the GUID, so that it is assigned
    /// with the patient and stays the same in every store.
    QString getPatientNumber() const { return numberOf(getGUID()); }
    static QString numberOf(const QString& guid);
    QString toString() const;
    QMap<QString, QVariant> metaInformation() const;

    CaError save(DataTreeIO* io) override;
    CaError load(DataTreeIO* io) override;

    _kelp::StringMixer getClassId() const override;
    bool isA(const _kelp::StringMixer& classId) const override;
    using Data::doLoad;
    using Data::doSave;
    /// The header only: the studies are files of their own.
    CaError doSave(DataTreeNode* node, DataSaveContext& context) override;
    CaError doLoad(DataTreeNode* node, DataLoadContext& context) override;
    bool loadAttribute(const QString& name, const QString& value) override;

private:
    QString m_name;
    QString m_lastName;
    QDate m_birthDate;
    QString m_keyText;
    QString m_sex;
    QString m_remark;
    QList<DataPointer<Study>> m_studies;
};
