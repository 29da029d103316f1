#pragma once

#include "CaError.h"
#include "CaFactory.h"
#include "CaSubject.h"
#include "kelpStringMixer.h"
#include "kelpURI.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>

class Data;
class DataTreeNode;

/// Passed along while a tree is written: GUID of each item that stands in it already, and where.
using DataSaveContext = QMap<QString, QString>;
/// Passed along while a tree is read: each item read so far by its GUID, so that an item that two
/// others hold comes back as one.
using DataLoadContext = QMap<QString, Data*>;

/// Base of all items of the data tree. Lives by reference count: created with count 0, deleted when
/// unref brings it back to 0. Held through DataPointer. The count is atomic; everything else is for
/// one thread at a time.
class Data : public QObject, public CaSubject
{
    Q_OBJECT

public:
    Data();
    ~Data() override;

    static _kelp::StringMixer classId();
    /// The registry of creators by class id, from which stored items are made.
    static CaFactory<Data>& getFactory();

    /// The item's name inside its parent.
    const QString& getId() const { return m_id; }
    void setId(const QString& id) { m_id = id; }
    /// A unique text made at creation and kept through storing; items are compared by it.
    const QString& getGUID() const { return m_guid; }

    kelp::URI getUri(const QString& key) const;
    /// Refuses an empty key.
    CaError setUri(const QString& key, const kelp::URI& uri);
    /// In the order of their keys, but that of "OCTScanURI" first and numbered keys by number.
    void getUris(QList<kelp::URI>& uris) const;
    QList<QString> getUriKeys() const;

    virtual bool hasChild(const QString& id) const;

    virtual _kelp::StringMixer getClassId() const;
    virtual bool isA(const _kelp::StringMixer& classId) const;
    virtual void ref() const;
    virtual void unref() const;
    virtual CaError doBinSave();
    virtual CaError doSave();
    virtual CaError doSave(DataTreeNode* node, DataSaveContext& context);
    virtual CaError doLoad();
    virtual CaError doLoad(DataTreeNode* node, DataLoadContext& context);
    /// Takes over one attribute of a stored node; false if it is not one of this class.
    virtual bool loadAttribute(const QString& name, const QString& value);

    /// Writes the item with its class id as the node's type.
    static CaError saveToNode(Data* data, DataTreeNode* node, DataSaveContext& context);
    /// Makes the item from the node's type, or finds it in the context, and loads it. Null with the
    /// error filled on failure.
    static Data* loadFromNode(DataTreeNode* node, DataLoadContext& context, CaError& error);

    /// GUIDs of the items that were met as a reference only while the tree was read.
    static QStringList unresolvedReferences(const DataLoadContext& context);

    /// Keeps alive what loadFromNode makes while a tree is read, so that an item that nobody took
    /// (its holder failed to load) can still be referred to. At the end of the outermost scope of
    /// a context, items that nobody holds are deleted and leave the context.
    class LoadScope
    {
    public:
        explicit LoadScope(DataLoadContext& context);
        LoadScope(const LoadScope&) = delete;
        LoadScope& operator=(const LoadScope&) = delete;
        ~LoadScope();

        void hold(Data* item);
        /// This one outlives the scope even if nobody holds it yet: its caller will.
        void setResult(Data* item) { m_result = item; }

    private:
        DataLoadContext& m_context;
        LoadScope* m_outer;
        Data* m_result = nullptr;
        QList<Data*> m_items;
    };

private:
    static Data* instanceForNode(const DataTreeNode& node, DataLoadContext& context,
                                 LoadScope& scope, CaError& error);

    QString m_id;
    QString m_guid;
    mutable std::atomic<int> m_references{0};
    QMap<QString, kelp::URI> m_uris;
};
