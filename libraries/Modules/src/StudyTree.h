#pragma once

#include "TreeNode.h"

#include <QTreeWidget>

namespace kelp::patients {

/// The studies of one patient with their data, results below the scan that they were made from. A
/// study is read when it is opened.
class StudyTree : public QTreeWidget
{
    Q_OBJECT

public:
    explicit StudyTree(QWidget* parent = nullptr);

    /// Makes the study of this GUID current, or else the newest.
    void setPatient(const DataPointer<Patient>& patient, const QString& studyGuid);
    /// Shows what changed; keeps what is open and selected. Where the current line is gone, its
    /// study or the next one is current.
    void refresh();
    void selectGuid(const QString& guid);

    TreeNode currentNode() const;
    /// The study of the current line; null for none.
    DataPointer<Study> currentStudy() const;
    QList<TreeNode> selectedNodes() const;

private slots:
    void fillExpanded(QTreeWidgetItem* line);

private:
    /// Which lines are open, selected and current, by their keys.
    struct State;
    State state();
    void rebuild(const State& former);
    void fill(QTreeWidgetItem* line);
    QTreeWidgetItem* findLine(const QString& guid) const;

    DataPointer<Patient> m_patient;
};

} // namespace kelp::patients
