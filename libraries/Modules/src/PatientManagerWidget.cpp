#include "PatientManagerWidget.h"

#include "AppBase.h"
#include "HintOverlay.h"
#include "PatientListPane.h"
#include "SavedState.h"
#include "StudyTree.h"
#include "kelpCheck.h"
#include "kelpSettings.h"

#include <QSplitter>
#include <QVBoxLayout>

namespace kelp::patients {

namespace {

constexpr const char* sourcePath = "libraries/Modules/src/PatientManagerWidget";
const QString patientKey = QStringLiteral("Gui/patientManager/patient");
const QString studyKey = QStringLiteral("Gui/patientManager/study");

} // namespace

PatientManagerWidget::PatientManagerWidget(QWidget* parent)
    : QWidget(parent), m_list(new PatientListPane), m_tree(new StudyTree)
{
    auto* const splitter = new QSplitter;
    splitter->addWidget(m_list);
    splitter->addWidget(m_tree);
    rememberSplitter(splitter, QStringLiteral("patientManager/patients"));
    m_treeHint = new HintOverlay(m_tree->viewport());
    auto* const box = new QVBoxLayout(this);
    box->addWidget(splitter);
    KELP_CONNECT(sourcePath, connect(m_list, SIGNAL(selectionChanged()), this,
                                     SLOT(patientSelectionChanged())));
    KELP_CONNECT(sourcePath, connect(m_tree, SIGNAL(itemSelectionChanged()), this,
                                     SLOT(studySelectionChanged())));
}

void PatientManagerWidget::refresh()
{
    m_list->refresh();
    m_tree->refresh();
    if (!m_isRestored) {
        m_isRestored = true;
        restoreSelection();
    }
}

void PatientManagerWidget::restoreSelection()
{
    m_list->select(Settings::get(patientKey, QString()));
}

void PatientManagerWidget::patientSelectionChanged()
{
    const DataPointer<Patient> patient = m_list->currentPatient();
    if (patient == m_shownPatient) {
        return;
    }
    m_shownPatient = patient;
    m_tree->setPatient(patient, Settings::get(studyKey, QString()));
    m_treeHint->setHint(patient ? QString()
                                : QStringLiteral("Select a patient to see its studies."));
}

void PatientManagerWidget::studySelectionChanged()
{
    announceSelection();
}

void PatientManagerWidget::announceSelection()
{
    const DataPointer<Study> study = m_tree->currentStudy();
    if (AppBase::getCurrentPatient() == m_shownPatient && AppBase::getCurrentStudy() == study) {
        return;
    }
    AppBase::setCurrent(m_shownPatient, study);
    if (m_shownPatient) {
        Settings::set(patientKey, m_shownPatient->getGUID());
    }
    if (study) {
        Settings::set(studyKey, study->getGUID());
    }
}

} // namespace kelp::patients

#include "moc_PatientManagerWidget.cpp"
