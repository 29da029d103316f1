#include "PatientListPane.h"

#include "HintOverlay.h"
#include "PatientTable.h"
#include "kelpCheck.h"

#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTreeView>
#include <QVBoxLayout>

namespace kelp::patients {

namespace {

constexpr const char* sourcePath = "libraries/Modules/src/PatientListPane";

} // namespace

PatientListPane::PatientListPane(QWidget* parent)
    : QWidget(parent), m_model(new PatientListModel(this)),
      m_filter(new PatientFilterModel(m_model, this))
{
    m_search = new QLineEdit;
    m_search->setObjectName(QStringLiteral("patientSearch"));
    m_search->setPlaceholderText(QStringLiteral("Search name, birth date or patient ID"));
    m_search->setToolTip(QStringLiteral("Search by name, birth date or patient ID (Ctrl+F)"));
    m_search->setClearButtonEnabled(true);
    makeView();
    m_problems = new QLabel;
    m_problems->setObjectName(QStringLiteral("storeProblems"));
    m_problems->setWordWrap(true);
    m_problems->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    m_problems->hide();
    auto* const box = new QVBoxLayout(this);
    box->setContentsMargins(0, 0, 0, 0);
    box->addWidget(m_search);
    box->addWidget(m_view);
    box->addWidget(m_problems);
    KELP_CONNECT(sourcePath,
                 connect(m_search, SIGNAL(textChanged(QString)), this, SLOT(search(QString))));
    KELP_CONNECT(sourcePath, connect(m_search, SIGNAL(returnPressed()), this, SLOT(enterList())));
    KELP_CONNECT(sourcePath,
                 connect(m_problems, SIGNAL(linkActivated(QString)), this, SLOT(showProblems())));
    KELP_CONNECT(sourcePath, connect(m_view->selectionModel(),
                                     SIGNAL(selectionChanged(QItemSelection, QItemSelection)), this,
                                     SIGNAL(selectionChanged())));
}

void PatientListPane::makeView()
{
    m_view = new QTreeView;
    m_view->setObjectName(QStringLiteral("patientList"));
    setUpPatientTable(*m_view, m_filter);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_hint = new HintOverlay(m_view->viewport());
}

void PatientListPane::refresh()
{
    const DataPointer<Patient> current = currentPatient();
    QList<QString> selected;
    for (const DataPointer<Patient>& patient : selectedPatients()) {
        selected.append(patient->getGUID());
    }
    {
        const QSignalBlocker blocker(m_view->selectionModel());
        m_storeError = m_model->refresh();
        if (current) {
            m_view->selectionModel()->setCurrentIndex(m_filter->indexOf(current->getGUID()),
                                                      QItemSelectionModel::NoUpdate);
        }
        for (const QString& guid : selected) {
            m_view->selectionModel()->select(
                m_filter->indexOf(guid), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }
    m_view->viewport()->update();
    showState();
    emit selectionChanged();
}

void PatientListPane::showState()
{
    const int problems = DataIOManager::getProblems().size();
    if (m_storeError != CaError::nullError) {
        m_problems->setText(QStringLiteral("The patient store cannot be used: %1")
                                .arg(m_storeError.toString().toHtmlEscaped()));
    } else if (problems > 0) {
        m_problems->setText(
            (problems == 1 ? QStringLiteral("One patient file could not be read. ")
                           : QStringLiteral("%1 patient files could not be read. ").arg(problems)) +
            QStringLiteral("<a href=\"problems\">Show why</a>"));
    }
    m_problems->setVisible(m_storeError != CaError::nullError || problems > 0);
    QString hint;
    if (m_model->rowCount() == 0) {
        hint = QStringLiteral("No patients yet.\nPress \"New Patient\" to enter one, or \"Import\" "
                              "to read an exported folder.");
    } else if (m_filter->rowCount() == 0) {
        hint = QStringLiteral("No patient matches the search.");
    }
    m_hint->setHint(hint);
}

void PatientListPane::showProblems()
{
    QStringList reasons;
    for (const CaError& problem : DataIOManager::getProblems()) {
        reasons.append(problem.toString());
    }
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Unreadable Patients"),
                    QStringLiteral("These patients are not listed. Their files are left as they "
                                   "are."),
                    QMessageBox::Ok, this);
    box.setInformativeText(reasons.mid(0, 5).join(QStringLiteral("\n\n")));
    if (reasons.size() > 5) {
        box.setDetailedText(reasons.join(QStringLiteral("\n\n")));
    }
    box.exec();
}

void PatientListPane::search(const QString& text)
{
    const DataPointer<Patient> current = currentPatient();
    if (current) {
        m_lastSelected = current->getGUID();
    }
    m_filter->setSearch(text);
    showState();
    if (selectedPatients().isEmpty() && m_filter->indexOf(m_lastSelected).isValid()) {
        select(m_lastSelected);
    }
}

void PatientListPane::enterList()
{
    if (m_filter->rowCount() > 0) {
        if (selectedPatients().isEmpty()) {
            selectRow(0);
        }
        m_view->setFocus(Qt::OtherFocusReason);
    }
}

DataPointer<Patient> PatientListPane::currentPatient() const
{
    const QModelIndex index = m_view->currentIndex();
    return m_view->selectionModel()->isSelected(index) ? m_filter->patientAt(index)
                                                       : DataPointer<Patient>();
}

QList<DataPointer<Patient>> PatientListPane::selectedPatients() const
{
    QList<DataPointer<Patient>> patients;
    for (const QModelIndex& index : m_view->selectionModel()->selectedRows()) {
        patients.append(m_filter->patientAt(index));
    }
    return patients;
}

void PatientListPane::select(const QString& guid)
{
    if (!m_filter->indexOf(guid).isValid() && m_model->rowOf(guid) >= 0) {
        m_search->clear();
    }
    const QModelIndex index = m_filter->indexOf(guid);
    m_view->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                         QItemSelectionModel::Rows);
    m_view->scrollTo(index);
}

int PatientListPane::currentRow() const
{
    return m_view->currentIndex().row();
}

void PatientListPane::selectRow(int row)
{
    const QModelIndex index = m_filter->index(qMin(row, m_filter->rowCount() - 1), 0);
    m_view->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                         QItemSelectionModel::Rows);
}

void PatientListPane::focusSearch()
{
    m_search->setFocus(Qt::ShortcutFocusReason);
    m_search->selectAll();
}

} // namespace kelp::patients

#include "moc_PatientListPane.cpp"
