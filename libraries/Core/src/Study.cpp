#include "Study.h"

#include "DataTreeNode.h"

#include <algorithm>

namespace {

const QString institutionAttribute = QStringLiteral("Institution");
const QString dataSection = QStringLiteral("Data");
const QString processDataSection = QStringLiteral("ProcessData");
const QString itemName = QStringLiteral("Item");

template <typename T>
bool containsId(const QList<DataPointer<T>>& items, const QString& id)
{
    return std::any_of(items.begin(), items.end(),
                       [&id](const DataPointer<T>& item) { return item->getId() == id; });
}

template <typename T>
bool removeId(QList<DataPointer<T>>& items, const QString& id)
{
    for (int i = 0; i < items.size(); ++i) {
        if (items[i]->getId() == id) {
            items.removeAt(i);
            return true;
        }
    }
    return false;
}

template <typename T>
void collect(const QList<DataPointer<T>>& items, QList<Data*>& target)
{
    target.clear();
    for (const DataPointer<T>& item : items) {
        target.append(item.data());
    }
}

/// The node that holds this item in full, wherever in the tree it stands.
DataTreeNode* findFullNode(DataTreeNode* node, const QString& guid)
{
    if (node->getAttribute("GUID") == guid && !node->hasAttribute("Reference")) {
        return node;
    }
    for (DataTreeNode* const child : node->getChildren()) {
        if (DataTreeNode* const found = findFullNode(child, guid)) {
            return found;
        }
    }
    return nullptr;
}

} // namespace

_kelp::StringMixer Study::classId()
{
    return "Study";
}

_kelp::StringMixer Study::getClassId() const
{
    return classId();
}

bool Study::isA(const _kelp::StringMixer& wanted) const
{
    return wanted == classId() || Data::isA(wanted);
}

CaError Study::checkNewItem(const Data* data, const QString& id) const
{
    if (!data || id.isEmpty()) {
        return CaError("InvalidItem",
                       QString("Study \"%1\" takes no item without data or id.").arg(getId()),
                       QString());
    }
    const CaError loaded = ensureLoaded();
    if (loaded != CaError::nullError) {
        return loaded;
    }
    if (hasChild(id)) {
        return CaError("IdTaken", QString("Study \"%1\" already holds \"%2\".").arg(getId(), id),
                       QString());
    }
    return CaError::nullError;
}

CaError Study::addData(Data* data, const QString& id, bool notifyObservers)
{
    const DataPointer<Data> item(data);
    const CaError error = checkNewItem(data, id);
    if (error != CaError::nullError) {
        return error;
    }
    data->setId(id);
    m_data.append(item);
    if (notifyObservers) {
        notify(data, "addData");
    }
    return CaError::nullError;
}

CaError Study::addProcessData(ProcessData* data, const QString& id, bool notifyObservers)
{
    const DataPointer<ProcessData> item(data);
    const CaError error = checkNewItem(data, id);
    if (error != CaError::nullError) {
        return error;
    }
    data->setId(id);
    m_processData.append(item);
    if (notifyObservers) {
        notify(data, "addProcessData");
    }
    return CaError::nullError;
}

CaError Study::removeData(const QString& id)
{
    const CaError loaded = ensureLoaded();
    if (loaded != CaError::nullError) {
        return loaded;
    }
    return removeId(m_data, id) ? CaError::nullError : unknownId(id);
}

CaError Study::removeProcessData(const QString& id)
{
    const CaError loaded = ensureLoaded();
    if (loaded != CaError::nullError) {
        return loaded;
    }
    return removeId(m_processData, id) ? CaError::nullError : unknownId(id);
}

CaError Study::renameItem(const QString& id, const QString& newId, bool notifyObservers)
{
    const CaError loaded = ensureLoaded();
    if (loaded != CaError::nullError) {
        return loaded;
    }
    QList<Data*> items;
    QList<Data*> results;
    collect(m_data, items);
    collect(m_processData, results);
    items += results;
    const auto item = std::find_if(items.begin(), items.end(),
                                   [&id](const Data* data) { return data->getId() == id; });
    if (item == items.end()) {
        return unknownId(id);
    }
    if (id == newId) {
        return CaError::nullError;
    }
    const CaError error = checkNewItem(*item, newId);
    if (error != CaError::nullError) {
        return error;
    }
    (*item)->setId(newId);
    if (notifyObservers) {
        notify(*item, "renameItem");
    }
    return CaError::nullError;
}

CaError Study::unknownId(const QString& id) const
{
    return CaError("UnknownId", QString("Study \"%1\" has no item \"%2\".").arg(getId(), id),
                   QString());
}

void Study::getAllData(QList<Data*>& data)
{
    ensureLoaded();
    collect(m_data, data);
}

void Study::getAllProcessData(QList<Data*>& data)
{
    ensureLoaded();
    collect(m_processData, data);
}

bool Study::hasChild(const QString& id) const
{
    ensureLoaded();
    const auto hasThisId = [&id](const UnreadableItem& item) {
        return item.node->getAttribute("Id") == id;
    };
    return containsId(m_data, id) || containsId(m_processData, id) ||
           std::any_of(m_unreadable.begin(), m_unreadable.end(), hasThisId);
}

CaError Study::ensureLoaded() const
{
    if (m_bodyLoader) {
        const BodyLoader loader = m_bodyLoader;
        m_bodyLoader = nullptr;
        // Reading on first use does not change what the study is to its callers.
        m_loadError = loader(const_cast<Study&>(*this));
    }
    return m_loadError;
}

QList<CaError> Study::getItemErrors() const
{
    ensureLoaded();
    QList<CaError> errors;
    for (const UnreadableItem& item : m_unreadable) {
        errors.append(item.error);
    }
    return errors + m_referenceErrors;
}

QList<Study::ItemProblem> Study::getUnreadableItems() const
{
    ensureLoaded();
    QList<ItemProblem> problems;
    for (const UnreadableItem& item : m_unreadable) {
        problems.append({item.node->getAttribute("Id"), item.node->getType(), item.error});
    }
    return problems;
}

CaError Study::removeUnreadableItem(const QString& id)
{
    const CaError loaded = ensureLoaded();
    if (loaded != CaError::nullError) {
        return loaded;
    }
    for (int i = 0; i < m_unreadable.size(); ++i) {
        if (m_unreadable[i].node->getAttribute("Id") == id) {
            m_unreadable.removeAt(i);
            return CaError::nullError;
        }
    }
    return unknownId(id);
}

CaError Study::doSave(DataTreeNode* node, DataSaveContext& context)
{
    CaError error = doSaveHeader(node, context);
    if (error == CaError::nullError) {
        error = saveSection(m_data, dataSection, node, context);
    }
    if (error == CaError::nullError) {
        error = saveSection(m_processData, processDataSection, node, context);
    }
    return error;
}

CaError Study::doSaveHeader(DataTreeNode* node, DataSaveContext& context)
{
    node->setType(classId().toQString());
    node->setAttribute(institutionAttribute, m_institution);
    return Data::doSave(node, context);
}

template <typename T>
CaError Study::saveSection(const QList<DataPointer<T>>& items, const QString& section,
                           DataTreeNode* node, DataSaveContext& context)
{
    DataTreeNode* const parent = node->createChild(section);
    for (const DataPointer<T>& item : items) {
        const CaError error = saveToNode(item.data(), parent->createChild(itemName), context);
        if (error != CaError::nullError) {
            return error;
        }
    }
    for (const UnreadableItem& item : m_unreadable) {
        if (item.section == section) {
            item.node->copyTo(*parent->createChild(itemName));
        }
    }
    return CaError::nullError;
}

CaError Study::doLoad(DataTreeNode* node, DataLoadContext& context)
{
    m_data.clear();
    m_processData.clear();
    m_unreadable.clear();
    m_referenceErrors.clear();
    const LoadScope scope(context);
    const CaError error = Data::doLoad(node, context);
    if (error != CaError::nullError) {
        return error;
    }
    loadSection(node, dataSection, context, [this](Data* item) {
        m_data.append(DataPointer<Data>(item));
        return true;
    });
    loadSection(node, processDataSection, context, [this](Data* item) {
        auto* const result = dynamic_cast<ProcessData*>(item);
        if (result) {
            m_processData.append(DataPointer<ProcessData>(result));
        }
        return result != nullptr;
    });
    resolveReferences(node, context);
    return CaError::nullError;
}

template <typename Take>
void Study::loadSection(DataTreeNode* node, const QString& section, DataLoadContext& context,
                        const Take& take)
{
    const DataTreeNode* const parent = node->getChild(section);
    if (!parent) {
        return;
    }
    for (DataTreeNode* const child : parent->getChildren()) {
        CaError error;
        const DataPointer<Data> item(loadFromNode(child, context, error));
        if (item && take(item.data())) {
            continue;
        }
        if (item) {
            error = CaError("WrongSection",
                            QString("Item \"%1\" of class \"%2\" is no result.")
                                .arg(item->getId(), child->getType()),
                            QString());
        }
        const auto kept = std::make_shared<DataTreeNode>();
        child->copyTo(*kept);
        m_unreadable.append({section, kept, error});
    }
}

void Study::resolveReferences(DataTreeNode* node, DataLoadContext& context)
{
    for (const QString& guid : unresolvedReferences(context)) {
        CaError error;
        DataTreeNode* const full = findFullNode(node, guid);
        if (full) {
            loadFromNode(full, context, error);
        } else {
            error = CaError("DanglingReference",
                            QString("Study \"%1\" refers to the item %2, which it does not hold.")
                                .arg(getId(), guid),
                            QString());
        }
        if (error != CaError::nullError) {
            m_referenceErrors.append(error);
        }
    }
}

bool Study::loadAttribute(const QString& name, const QString& value)
{
    if (name == institutionAttribute) {
        m_institution = value;
        return true;
    }
    return Data::loadAttribute(name, value);
}
