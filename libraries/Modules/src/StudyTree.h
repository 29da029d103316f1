#pragma once

#include "Patient.h"

#include <QTreeWidget>

namespace kelp::patients {

/// One line of the tree: a study, an item of it, or a stored item that could not be read.
struct TreeNode
{
    DataPointer<Study> study;
    /// Null for the study itself and for an unreadable item.
    DataPointer<Data> item;
    QString unreadableId;

    bool isNull() const { return study.isNull(); }
    bool isStudy() const { return study && !item && unreadableId.isEmpty(); }
    bool isUnreadable() const { return !unreadableId.isEmpty(); }
};

/// The studies of one patient with their data, results below the scan that they were made from. A
/// study is read when it is opened.
class StudyTree : public QTreeWidget
{
    Q_OBJECT

public:
    explicit StudyTree(QWidget* parent = nullptr);

    /// Makes the study of this GUID current, or else the newest.
    void setPatient(const DataPointer<Patient>& patient, const QString& studyGuid);
    /// Shows what changed; keeps what is open and selected.
    void refresh();
    void selectGuid(const QString& guid);

    TreeNode currentNode() const;
    /// The study of the current line; null for none.
    DataPointer<Study> currentStudy() const;
    QList<TreeNode> selectedNodes() const;

private slots:
    void fillExpanded(QTreeWidgetItem* line);

private:
    void fill(QTreeWidgetItem* line);
    QTreeWidgetItem* findLine(const QString& guid) const;

    DataPointer<Patient> m_patient;
};

} // namespace kelp::patients
