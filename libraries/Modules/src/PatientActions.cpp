#include "PatientActions.h"

#include "AddDataDialog.h"
#include "AppBase.h"
#include "FailureBox.h"
#include "NameDialog.h"
#include "PatientDialog.h"
#include "PatientListPane.h"
#include "StudyTree.h"
#include "WaitCursor.h"
#include "kelpCheck.h"

#include <QAction>
#include <QMessageBox>
#include <QPushButton>

namespace kelp::patients {

namespace {

constexpr const char* sourcePath = "libraries/Modules/src/PatientActions";

} // namespace

PatientActions::PatientActions(PatientListPane* list, StudyTree* tree, QWidget* window)
    : QObject(window), m_list(list), m_tree(tree), m_window(window)
{
    newPatientAction =
        makeAction(QStringLiteral("newPatient"), QStringLiteral("New &Patient"),
                   QStringLiteral("Enter a new patient (Ctrl+N)"), SLOT(newPatient()));
    editPatientAction =
        makeAction(QStringLiteral("editPatient"), QStringLiteral("&Edit"),
                   QStringLiteral("Change the details of the patient (F2)"), SLOT(editPatient()));
    deletePatientsAction =
        makeAction(QStringLiteral("deletePatients"), QStringLiteral("De&lete"),
                   QStringLiteral("Delete the selected patients with all their data (Del)"),
                   SLOT(deletePatients()));
    newStudyAction =
        makeAction(QStringLiteral("newStudy"), QStringLiteral("New &Study"),
                   QStringLiteral("Add a study to the patient (Ctrl+Shift+N)"), SLOT(newStudy()));
    addDataAction = makeAction(QStringLiteral("addData"), QStringLiteral("&Add Data"),
                               QStringLiteral("Add a scan to the study (Ctrl+D)"), SLOT(addData()));
    renameAction =
        makeAction(QStringLiteral("rename"), QStringLiteral("&Rename"),
                   QStringLiteral("Rename the study or the data (F2)"), SLOT(renameNode()));
    deleteNodesAction = makeAction(QStringLiteral("deleteNodes"), QStringLiteral("Dele&te"),
                                   QStringLiteral("Delete the selected studies and data (Del)"),
                                   SLOT(deleteNodes()));
}

QAction* PatientActions::makeAction(const QString& name, const QString& caption,
                                    const QString& toolTip, const char* slot)
{
    auto* const action = new QAction(caption, this);
    action->setObjectName(name);
    action->setToolTip(toolTip);
    KELP_CONNECT(sourcePath, connect(action, SIGNAL(triggered()), this, slot));
    return action;
}

void PatientActions::updateEnabled()
{
    const QList<TreeNode> nodes = m_tree->selectedNodes();
    editPatientAction->setEnabled(m_list->selectedPatients().size() == 1);
    deletePatientsAction->setEnabled(!m_list->selectedPatients().isEmpty());
    newStudyAction->setEnabled(!m_list->currentPatient().isNull());
    addDataAction->setEnabled(!m_tree->currentStudy().isNull());
    renameAction->setEnabled(nodes.size() == 1 && !nodes.front().isUnreadable());
    deleteNodesAction->setEnabled(!nodes.isEmpty());
}

void PatientActions::showError(const QString& title, const QString& firstLine, const CaError& error)
{
    showFailure(m_window, title, firstLine + QLatin1Char('\n') + error.toString());
}

void PatientActions::newPatient()
{
    QList<Patient*> patients;
    AppBase::getPatientList(patients);
    const DataPointer<Patient> patient(new Patient);
    PatientDialog dialog(QStringLiteral("New Patient"), *patient, patients, m_window);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    setDetails(*patient, dialog.details());
    m_list->patients().addPatient(patient);
    AppBase::markChanged(patient);
    AppBase::saveChanges();
    m_list->refresh();
    m_list->select(patient->getGUID());
}

void PatientActions::editPatient()
{
    const DataPointer<Patient> patient = m_list->currentPatient();
    if (!patient) {
        return;
    }
    QList<Patient*> patients;
    AppBase::getPatientList(patients);
    PatientDialog dialog(QStringLiteral("Edit Patient"), *patient, patients, m_window);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    setDetails(*patient, dialog.details());
    AppBase::markChanged(patient);
    m_list->refresh();
    m_list->select(patient->getGUID());
}

bool PatientActions::confirmDeletion(const DeletionPlan& plan)
{
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Delete"), plan.question(),
                    QMessageBox::Cancel, m_window);
    box.setInformativeText(
        plan.files().isEmpty()
            ? QStringLiteral("This cannot be undone.")
            : QStringLiteral("The copied image files go too. This cannot be undone."));
    auto* const confirm = box.addButton(QStringLiteral("&Delete"), QMessageBox::DestructiveRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.setEscapeButton(QMessageBox::Cancel);
    box.exec();
    return box.clickedButton() == confirm;
}

void PatientActions::deletePatients()
{
    DeletionPlan plan;
    {
        // Counting reads the studies.
        const WaitCursor wait;
        plan = DeletionPlan::ofPatients(m_list->selectedPatients());
    }
    if (plan.isEmpty() || !confirmDeletion(plan)) {
        return;
    }
    const int row = m_list->currentRow();
    QStringList problems;
    {
        const WaitCursor wait;
        CopiedFiles files;
        for (const DataPointer<Patient>& patient : plan.patients()) {
            const CopiedFiles own = filesOf(*patient);
            if (removeFromStore(patient, problems)) {
                files.add(own);
            }
        }
        m_list->refresh();
        files.remove();
    }
    if (!m_list->currentPatient()) {
        m_list->selectRow(row);
    }
    if (!problems.isEmpty()) {
        showFailure(m_window, QStringLiteral("Delete"), problems.join(QStringLiteral("\n\n")));
    }
}

bool PatientActions::removeFromStore(const DataPointer<Patient>& patient, QStringList& problems)
{
    if (!m_list->patients().isUnstored(patient)) {
        const CaError error = DataIOManager::removePatient(patient);
        if (error != CaError::nullError) {
            problems.append(QStringLiteral("The patient \"%1\" could not be deleted:\n%2")
                                .arg(displayName(*patient), error.toString()));
            return false;
        }
    }
    // A change that waits to be saved would bring the patient back.
    AppBase::forgetChanges(patient);
    m_list->patients().forgetPatient(patient);
    return true;
}

void PatientActions::newStudy()
{
    const DataPointer<Patient> patient = m_list->currentPatient();
    if (!patient) {
        return;
    }
    const IsTaken isTaken = [patient](const QString& id) { return patient->hasChild(id); };
    NameDialog dialog(QStringLiteral("New Study"), suggestedStudyId(QDate::currentDate(), isTaken),
                      isTaken, m_window);
    dialog.askInstitution(QString());
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    const DataPointer<Study> study(new Study);
    study->setId(dialog.id());
    study->setInstitution(dialog.institution());
    const CaError error = patient->addStudy(study.data(), true);
    if (error != CaError::nullError) {
        showError(QStringLiteral("New Study"), QStringLiteral("The study could not be added:"),
                  error);
        return;
    }
    AppBase::markChanged(patient);
    m_tree->refresh();
    m_tree->selectGuid(study->getGUID());
}

void PatientActions::addData()
{
    const DataPointer<Patient> patient = m_list->currentPatient();
    const DataPointer<Study> study = m_tree->currentStudy();
    const QString title = QStringLiteral("Add Data");
    const CaError unreadable = study ? study->ensureLoaded() : CaError::nullError;
    if (!patient || !study || unreadable != CaError::nullError) {
        showError(title, QStringLiteral("The study takes no data:"), unreadable);
        return;
    }
    AddDataDialog dialog(m_window);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    const QString id = uniqueId(dialog.wantedId(),
                                [&study](const QString& taken) { return study->hasChild(taken); });
    const CaError error = study->addData(dialog.item().data(), id, true);
    if (error != CaError::nullError) {
        CopiedFiles files;
        files.addItem(*dialog.item());
        files.remove();
        showError(title, QStringLiteral("The data could not be added:"), error);
        return;
    }
    AppBase::markChanged(patient);
    AppBase::saveChanges();
    m_tree->refresh();
    m_tree->selectGuid(dialog.item()->getGUID());
}

void PatientActions::renameNode()
{
    const TreeNode node = m_tree->currentNode();
    if (node.isStudy()) {
        renameStudy(*node.study);
    } else if (node.item) {
        const QString former = node.item->getId();
        renameItem(*node.study, former);
    }
}

void PatientActions::renameStudy(Study& study)
{
    const DataPointer<Patient> patient = m_list->currentPatient();
    const QString former = study.getId();
    NameDialog dialog(
        QStringLiteral("Rename Study"), former,
        [&](const QString& id) { return id != former && patient->hasChild(id); }, m_window);
    dialog.askInstitution(study.getInstitution());
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    const CaError error = patient->renameStudy(former, dialog.id(), true);
    if (error != CaError::nullError) {
        showError(QStringLiteral("Rename Study"), QStringLiteral("The study could not be renamed:"),
                  error);
        return;
    }
    study.setInstitution(dialog.institution());
    AppBase::markChanged(patient);
    m_tree->refresh();
}

void PatientActions::renameItem(Study& study, const QString& id)
{
    NameDialog dialog(
        QStringLiteral("Rename"), id,
        [&](const QString& wanted) { return wanted != id && study.hasChild(wanted); }, m_window);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    const CaError error = study.renameItem(id, dialog.id(), true);
    if (error != CaError::nullError) {
        showError(QStringLiteral("Rename"), QStringLiteral("\"%1\" could not be renamed:").arg(id),
                  error);
        return;
    }
    AppBase::markChanged(m_list->currentPatient());
    m_tree->refresh();
}

void PatientActions::deleteNodes()
{
    const DataPointer<Patient> patient = m_list->currentPatient();
    DeletionPlan plan = DeletionPlan::ofNodes(m_tree->selectedNodes());
    if (!patient || plan.isEmpty() || !confirmDeletion(plan)) {
        return;
    }
    const CaError error = plan.removeNodes(*patient);
    m_tree->refresh();
    AppBase::markChanged(patient);
    // Files that the stored tree still names are kept.
    if (AppBase::saveChanges()) {
        const WaitCursor wait;
        plan.files().remove();
    }
    if (error != CaError::nullError) {
        showError(QStringLiteral("Delete"), QStringLiteral("Not everything could be deleted:"),
                  error);
    }
}

} // namespace kelp::patients

#include "moc_PatientActions.cpp"
