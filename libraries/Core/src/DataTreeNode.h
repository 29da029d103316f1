#pragma once

#include <QList>
#include <QPair>
#include <QString>

#include <memory>
#include <vector>

/// One node of the stored tree in memory: a type text, attributes and named children, which it
/// owns. Attributes and children keep the order in which they were made.
class DataTreeNode
{
public:
    explicit DataTreeNode(const QString& name = QString(), const QString& type = QString());
    DataTreeNode(const DataTreeNode&) = delete;
    DataTreeNode& operator=(const DataTreeNode&) = delete;
    ~DataTreeNode();

    const QString& getName() const { return m_name; }
    const QString& getType() const { return m_type; }
    void setType(const QString& type) { m_type = type; }

    void setAttribute(const QString& name, const QString& value);
    /// Empty when there is none of this name.
    QString getAttribute(const QString& name) const;
    bool hasAttribute(const QString& name) const;
    const QList<QPair<QString, QString>>& getAttributes() const { return m_attributes; }

    bool hasChild(const QString& name) const;
    /// Null when there is none of this name. Owned by this node.
    DataTreeNode* getChild(const QString& name) const;
    /// A new child behind the others. Owned by this node.
    DataTreeNode* createChild(const QString& name);
    QList<DataTreeNode*> getChildren() const;

    /// Makes the target a deep copy of this node, except that it keeps its own name.
    void copyTo(DataTreeNode& target) const;

    /// Keeps letters, digits, '_', '-' and '.', and puts '_' for every other character.
    static QString makeIdValid(const QString& text);

private:
    QString m_name;
    QString m_type;
    QList<QPair<QString, QString>> m_attributes;
    std::vector<std::unique_ptr<DataTreeNode>> m_children;
};
