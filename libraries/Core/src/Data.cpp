#include "Data.h"

#include "DataTreeNode.h"
#include "PatientTree.h"
#include "kelpException.h"

#include <QUuid>

#include <algorithm>

namespace {

const QString scanUriKey = QStringLiteral("OCTScanURI");
const QString idAttribute = QStringLiteral("Id");
const QString guidAttribute = QStringLiteral("GUID");
const QString referenceAttribute = QStringLiteral("Reference");
const QString uriAttributePrefix = QStringLiteral("URI/");

/// A key without its closing digits, and these.
QPair<QString, QString> splitNumberedKey(const QString& key)
{
    int digits = 0;
    while (digits < key.size() && key[key.size() - 1 - digits].isDigit()) {
        ++digits;
    }
    QString number = key.right(digits);
    while (number.size() > 1 && number.startsWith('0')) {
        number.remove(0, 1);
    }
    return {key.left(key.size() - digits), number};
}

bool isBefore(const QString& a, const QString& b)
{
    if ((a == scanUriKey) != (b == scanUriKey)) {
        return a == scanUriKey;
    }
    const auto [nameA, numberA] = splitNumberedKey(a);
    const auto [nameB, numberB] = splitNumberedKey(b);
    if (nameA != nameB) {
        return nameA < nameB;
    }
    if (numberA.size() != numberB.size()) {
        return numberA.size() < numberB.size();
    }
    return numberA != numberB ? numberA < numberB : a < b;
}

thread_local Data::LoadScope* innermostScope = nullptr;

/// Classes of the tree report with errors, but their checks throw.
template <typename Operation>
CaError withoutExceptions(const char* identifier, const Operation& operation)
{
    try {
        return operation();
    } catch (const kelp::Exception& exception) {
        return CaError(identifier, exception.getMessage(), exception.getDetail());
    }
}

/// Under this key the context keeps an item of which only a reference was met so far.
QString unresolvedKey(const QString& guid)
{
    return "?" + guid;
}

} // namespace

Data::Data() : m_guid(QUuid::createUuid().toString(QUuid::WithoutBraces)) {}

Data::~Data() = default;

bool isUriAttribute(const QString& name)
{
    return name.startsWith(uriAttributePrefix);
}

_kelp::StringMixer Data::classId()
{
    return "Data";
}

CaFactory<Data>& Data::getFactory()
{
    static CaFactory<Data> factory;
    return factory;
}

kelp::URI Data::getUri(const QString& key) const
{
    return m_uris.value(key);
}

CaError Data::setUri(const QString& key, const kelp::URI& uri)
{
    if (key.isEmpty()) {
        return CaError("EmptyUriKey", "A URI needs a key.", uri.toString());
    }
    m_uris.insert(key, uri);
    return CaError::nullError;
}

void Data::getUris(QList<kelp::URI>& uris) const
{
    uris.clear();
    for (const QString& key : getUriKeys()) {
        uris.append(m_uris.value(key));
    }
}

QList<QString> Data::getUriKeys() const
{
    QList<QString> keys = m_uris.keys();
    std::sort(keys.begin(), keys.end(), isBefore);
    return keys;
}

bool Data::hasChild(const QString& /*id*/) const
{
    return false;
}

_kelp::StringMixer Data::getClassId() const
{
    return classId();
}

bool Data::isA(const _kelp::StringMixer& wanted) const
{
    return wanted == classId();
}

void Data::ref() const
{
    m_references.fetch_add(1, std::memory_order_relaxed);
}

void Data::unref() const
{
    // Whatever another thread did with the item before it let go must be seen by its destructor.
    if (m_references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

CaError Data::doBinSave()
{
    return CaError::nullError;
}

CaError Data::doSave()
{
    return CaError::nullError;
}

CaError Data::doSave(DataTreeNode* node, DataSaveContext& /*context*/)
{
    node->setAttribute(idAttribute, m_id);
    node->setAttribute(guidAttribute, m_guid);
    for (const QString& key : getUriKeys()) {
        node->setAttribute(uriAttributePrefix + key, m_uris.value(key).toString());
    }
    return CaError::nullError;
}

CaError Data::doLoad()
{
    return CaError::nullError;
}

CaError Data::doLoad(DataTreeNode* node, DataLoadContext& /*context*/)
{
    m_uris.clear();
    for (const QPair<QString, QString>& attribute : node->getAttributes()) {
        loadAttribute(attribute.first, attribute.second);
    }
    return CaError::nullError;
}

bool Data::loadAttribute(const QString& name, const QString& value)
{
    if (name == idAttribute) {
        m_id = value;
        return true;
    }
    if (name == guidAttribute) {
        m_guid = value;
        return true;
    }
    if (isUriAttribute(name)) {
        return setUri(name.mid(uriAttributePrefix.size()), kelp::URI(value)) == CaError::nullError;
    }
    return false;
}

CaError Data::saveToNode(Data* data, DataTreeNode* node, DataSaveContext& context)
{
    if (!data || !node) {
        return CaError("NullArgument", "There is no item or no node to save it to.", QString());
    }
    node->setType(data->getClassId().toQString());
    if (context.contains(data->getGUID())) {
        node->setAttribute(guidAttribute, data->getGUID());
        node->setAttribute(referenceAttribute, "true");
        return CaError::nullError;
    }
    context.insert(data->getGUID(), node->getName());
    return withoutExceptions("SaveFailure", [&] { return data->doSave(node, context); });
}

Data* Data::instanceForNode(const DataTreeNode& node, DataLoadContext& context, LoadScope& scope,
                            CaError& error)
{
    const QString guid = node.getAttribute(guidAttribute);
    if (guid.isEmpty()) {
        error = CaError("MissingGUID", QString("Item \"%1\" has no GUID.").arg(node.getName()),
                        QString());
        return nullptr;
    }
    if (Data* const known = context.value(guid)) {
        if (known->getClassId().toQString() == node.getType()) {
            return known;
        }
        error = CaError("ClassMismatch",
                        QString("Item %1 is stored as %2 and as %3.")
                            .arg(guid, known->getClassId().toQString(), node.getType()),
                        QString());
        return nullptr;
    }
    Data* const created = getFactory().create(node.getType());
    if (!created) {
        error = CaError(
            "UnknownClass",
            QString("Cannot create an item of the unknown class \"%1\".").arg(node.getType()),
            QString("It is item \"%1\".").arg(node.getAttribute(idAttribute)));
        return nullptr;
    }
    created->m_guid = guid;
    scope.hold(created);
    context.insert(guid, created);
    return created;
}

Data* Data::loadFromNode(DataTreeNode* node, DataLoadContext& context, CaError& error)
{
    error = CaError::nullError;
    if (!node) {
        error = CaError("NullArgument", "There is no node to load from.", QString());
        return nullptr;
    }
    LoadScope scope(context);
    const QString guid = node->getAttribute(guidAttribute);
    const bool isKnown = context.contains(guid);
    Data* const item = instanceForNode(*node, context, scope, error);
    if (!item) {
        return nullptr;
    }
    if (node->getAttribute(referenceAttribute) == "true") {
        if (!isKnown) {
            context.insert(unresolvedKey(guid), item);
        }
        scope.setResult(item);
        return item;
    }
    error = withoutExceptions("LoadFailure", [&] { return item->doLoad(node, context); });
    if (error != CaError::nullError) {
        if (!isKnown) {
            context.remove(guid);
        }
        return nullptr;
    }
    context.remove(unresolvedKey(guid));
    scope.setResult(item);
    return item;
}

Data::LoadScope::LoadScope(DataLoadContext& context) : m_context(context), m_outer(innermostScope)
{
    innermostScope = this;
}

void Data::LoadScope::hold(Data* item)
{
    if (m_outer && &m_outer->m_context == &m_context) {
        m_outer->hold(item);
        return;
    }
    item->ref();
    m_items.append(item);
}

Data::LoadScope::~LoadScope()
{
    innermostScope = m_outer;
    // In the order made, which is holders before what they hold.
    for (Data* const item : m_items) {
        if (item == m_result) {
            item->m_references.fetch_sub(1, std::memory_order_acq_rel);
            continue;
        }
        if (item->m_references.load(std::memory_order_acquire) == 1) {
            if (m_context.value(item->m_guid) == item) {
                m_context.remove(item->m_guid);
                m_context.remove(unresolvedKey(item->m_guid));
            }
        }
        item->unref();
    }
}

QStringList Data::unresolvedReferences(const DataLoadContext& context)
{
    QStringList guids;
    for (auto entry = context.begin(); entry != context.end(); ++entry) {
        if (entry.key().startsWith('?')) {
            guids.append(entry.key().mid(1));
        }
    }
    return guids;
}
