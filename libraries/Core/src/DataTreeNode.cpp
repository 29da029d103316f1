#include "DataTreeNode.h"

#include <algorithm>

DataTreeNode::DataTreeNode(const QString& name, const QString& type) : m_name(name), m_type(type) {}

DataTreeNode::~DataTreeNode() = default;

void DataTreeNode::setAttribute(const QString& name, const QString& value)
{
    for (QPair<QString, QString>& attribute : m_attributes) {
        if (attribute.first == name) {
            attribute.second = value;
            return;
        }
    }
    m_attributes.append({name, value});
}

QString DataTreeNode::getAttribute(const QString& name) const
{
    for (const QPair<QString, QString>& attribute : m_attributes) {
        if (attribute.first == name) {
            return attribute.second;
        }
    }
    return QString();
}

bool DataTreeNode::hasAttribute(const QString& name) const
{
    return std::any_of(
        m_attributes.begin(), m_attributes.end(),
        [&name](const QPair<QString, QString>& attribute) { return attribute.first == name; });
}

bool DataTreeNode::hasChild(const QString& name) const
{
    return getChild(name) != nullptr;
}

DataTreeNode* DataTreeNode::getChild(const QString& name) const
{
    const auto found =
        std::find_if(m_children.begin(), m_children.end(),
                     [&name](const auto& child) { return child->getName() == name; });
    return found == m_children.end() ? nullptr : found->get();
}

DataTreeNode* DataTreeNode::createChild(const QString& name)
{
    m_children.push_back(std::make_unique<DataTreeNode>(name));
    return m_children.back().get();
}

QList<DataTreeNode*> DataTreeNode::getChildren() const
{
    QList<DataTreeNode*> children;
    for (const auto& child : m_children) {
        children.append(child.get());
    }
    return children;
}

void DataTreeNode::copyTo(DataTreeNode& target) const
{
    target.m_type = m_type;
    target.m_attributes = m_attributes;
    target.m_children.clear();
    for (const auto& child : m_children) {
        child->copyTo(*target.createChild(child->getName()));
    }
}

QString DataTreeNode::makeIdValid(const QString& text)
{
    QString id = text;
    for (QChar& character : id) {
        if (!character.isLetter() && !character.isDigit() && character != '_' && character != '-' &&
            character != '.') {
            character = '_';
        }
    }
    return id;
}
