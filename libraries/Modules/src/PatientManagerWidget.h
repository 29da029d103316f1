#pragma once

#include "Patient.h"

#include <QWidget>

class QAction;
class QLayout;
class QPoint;
class QTextBrowser;

namespace kelp {
class HintOverlay;
}

namespace kelp::patients {

class PatientActions;
class PatientListPane;
class PatientTransfer;
class StudyTree;

/// The tab of the patient manager: the list of patients, the studies of the one that is selected
/// with details beside them, and the buttons for all that can be done with them.
class PatientManagerWidget : public QWidget
{
    Q_OBJECT

public:
    explicit PatientManagerWidget(QWidget* parent = nullptr);

    /// Shows the store as it is now. The first time, selects what was selected at the last end.
    void refresh();

private slots:
    void refreshAfterImport();
    void patientSelectionChanged();
    void nodeSelectionChanged();
    void showListMenu(const QPoint& position);
    void showTreeMenu(const QPoint& position);
    void enterTree();

private:
    QWidget* makeListSide();
    QWidget* makeTreeSide();
    void makeShortcuts();
    void showPatient(const DataPointer<Patient>& patient);
    void announceSelection();
    void showDetails();
    void showHints();

    PatientListPane* m_list;
    StudyTree* m_tree;
    QTextBrowser* m_details;
    HintOverlay* m_treeHint;
    PatientActions* m_actions;
    PatientTransfer* m_transfer;
    DataPointer<Patient> m_shownPatient;
    bool m_isRestored = false;
};

} // namespace kelp::patients
