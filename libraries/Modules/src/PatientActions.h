#pragma once

#include "DeletionPlan.h"

#include <QObject>

class QAction;
class QWidget;

namespace kelp::patients {

class PatientListPane;
class StudyTree;

/// What can be done with patients, their studies and data: each action asks in a dialog, changes
/// the tree, has it saved, and shows the change in both views.
class PatientActions : public QObject
{
    Q_OBJECT

public:
    /// The window is the parent of all dialogs.
    PatientActions(PatientListPane* list, StudyTree* tree, QWidget* window);

    /// To be called when the selection has changed.
    void updateEnabled();

    QAction* newPatientAction;
    QAction* editPatientAction;
    QAction* deletePatientsAction;
    QAction* newStudyAction;
    QAction* addDataAction;
    QAction* renameAction;
    QAction* deleteNodesAction;

private slots:
    void newPatient();
    void editPatient();
    void deletePatients();
    void newStudy();
    void addData();
    void renameNode();
    void deleteNodes();

private:
    QAction* makeAction(const QString& name, const QString& caption, const QString& toolTip,
                        const char* slot);
    bool confirmDeletion(const DeletionPlan& plan);
    bool removeFromStore(const DataPointer<Patient>& patient, QStringList& problems);
    void renameStudy(Study& study);
    void renameItem(Study& study, const QString& id);
    void showError(const QString& title, const QString& firstLine, const CaError& error);

    PatientListPane* m_list;
    StudyTree* m_tree;
    QWidget* m_window;
};

} // namespace kelp::patients
