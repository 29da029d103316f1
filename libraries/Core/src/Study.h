#pragma once

#include "DataPointer.h"
#include "ProcessData.h"

#include <functional>

/// An examination of a patient: data items (scans) and process data (their segmentations), each
/// list in the order added. The items of a stored study are read when they are first asked for.
class Study : public Data
{
    Q_OBJECT

public:
    static _kelp::StringMixer classId();

    const QString& getInstitution() const { return m_institution; }
    void setInstitution(const QString& institution) { m_institution = institution; }

    /// notify tells the observers of the study. An id that is taken gives an error and changes
    /// nothing.
    CaError addData(Data* data, const QString& id, bool notify);
    CaError addProcessData(ProcessData* data, const QString& id, bool notify);
    CaError removeData(const QString& id);
    CaError removeProcessData(const QString& id);
    void getAllData(QList<Data*>& data);
    void getAllProcessData(QList<Data*>& data);

    bool hasChild(const QString& id) const override;

    /// How the body of a stored study is read on demand: called once, at first use. A failure is
    /// kept in getLoadError and the study then has no items and refuses to be stored over.
    using BodyLoader = std::function<CaError(Study&)>;
    void setBodyLoader(const BodyLoader& loader) { m_bodyLoader = loader; }
    bool isBodyLoaded() const { return !m_bodyLoader; }
    CaError ensureLoaded() const;
    const CaError& getLoadError() const { return m_loadError; }

    _kelp::StringMixer getClassId() const override;
    bool isA(const _kelp::StringMixer& classId) const override;
    using Data::doLoad;
    using Data::doSave;
    CaError doSave(DataTreeNode* node, DataSaveContext& context) override;
    CaError doLoad(DataTreeNode* node, DataLoadContext& context) override;

private:
    QString m_institution;
    QList<DataPointer<Data>> m_data;
    QList<DataPointer<ProcessData>> m_processData;
    mutable BodyLoader m_bodyLoader;
    mutable CaError m_loadError;
};
