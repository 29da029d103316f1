#pragma once

#include "DataPointer.h"
#include "ProcessData.h"

#include <functional>
#include <memory>

/// An examination of a patient: data items (scans) and process data (their segmentations), each
/// list in the order added. The items of a stored study are read when they are first asked for.
///
/// A stored item that cannot be made (its class is unknown to this program, or its content is
/// damaged) does not hide the others: getItemErrors names it, its id stays taken, and its node is
/// kept as it was read and written back when the study is stored.
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
    /// Gives a data item or process data another id. One that is empty or taken gives an error and
    /// changes nothing.
    CaError renameItem(const QString& id, const QString& newId, bool notify);
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
    /// One error for each stored item that could not be made, and for each dangling reference.
    QList<CaError> getItemErrors() const;
    /// What getItemErrors names of a stored item that could not be made.
    struct ItemProblem
    {
        QString id;
        QString className;
        CaError error;
    };
    QList<ItemProblem> getUnreadableItems() const;
    /// Drops such an item's node; it is gone from the store with the study's next storing.
    CaError removeUnreadableItem(const QString& id);

    _kelp::StringMixer getClassId() const override;
    bool isA(const _kelp::StringMixer& classId) const override;
    using Data::doLoad;
    using Data::doSave;
    CaError doSave(DataTreeNode* node, DataSaveContext& context) override;
    CaError doLoad(DataTreeNode* node, DataLoadContext& context) override;
    bool loadAttribute(const QString& name, const QString& value) override;
    /// What stands in the patient's header: everything but the items.
    CaError doSaveHeader(DataTreeNode* node, DataSaveContext& context);

private:
    struct UnreadableItem
    {
        QString section;
        std::shared_ptr<const DataTreeNode> node;
        CaError error;
    };

    CaError checkNewItem(const Data* data, const QString& id) const;
    CaError unknownId(const QString& id) const;
    template <typename T>
    CaError saveSection(const QList<DataPointer<T>>& items, const QString& section,
                        DataTreeNode* node, DataSaveContext& context);
    template <typename Take>
    void loadSection(DataTreeNode* node, const QString& section, DataLoadContext& context,
                     const Take& take);
    void resolveReferences(DataTreeNode* node, DataLoadContext& context);

    QString m_institution;
    QList<DataPointer<Data>> m_data;
    QList<DataPointer<ProcessData>> m_processData;
    QList<UnreadableItem> m_unreadable;
    QList<CaError> m_referenceErrors;
    mutable BodyLoader m_bodyLoader;
    mutable CaError m_loadError;
};
