#pragma once

#include "Patient.h"

#include <QWidget>

class QAction;
class QBoxLayout;

namespace kelp {
class HintOverlay;
}

namespace kelp::patients {

class PatientListPane;
class StudyTree;

/// The tab of the patient manager: the list of patients, the studies of the one that is selected,
/// and the buttons for all that can be done with them.
class PatientManagerWidget : public QWidget
{
    Q_OBJECT

public:
    explicit PatientManagerWidget(QWidget* parent = nullptr);

    /// Shows the store as it is now. The first time, selects what was selected at the last end.
    void refresh();

private slots:
    void patientSelectionChanged();
    void studySelectionChanged();

private:
    void restoreSelection();
    void announceSelection();

    PatientListPane* m_list;
    StudyTree* m_tree;
    HintOverlay* m_treeHint;
    DataPointer<Patient> m_shownPatient;
    bool m_isRestored = false;
};

} // namespace kelp::patients
