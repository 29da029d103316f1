#include "ExportDialog.h"

#include "PatientTable.h"
#include "SavedState.h"
#include "kelpCheck.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeView>

namespace kelp::patients {

namespace {

constexpr const char* sourcePath = "libraries/Modules/src/ExportDialog";
const QString folderKey = QStringLiteral("patientManager/exportFolder");

QPushButton* makeButton(const QString& text, const char* name)
{
    auto* const button = new QPushButton(text);
    button->setObjectName(QLatin1String(name));
    button->setAutoDefault(false);
    return button;
}

} // namespace

ExportDialog::ExportDialog(const QList<DataPointer<Patient>>& preselected, QWidget* parent)
    : QDialog(parent), m_patients(new PatientChoiceModel(this)),
      m_filter(new PatientFilterModel(m_patients, this)), m_search(new QLineEdit),
      m_view(new QTreeView), m_count(new QLabel), m_folder(new QLineEdit), m_note(new QLabel),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Cancel))
{
    setWindowTitle(QStringLiteral("Export"));
    m_patients->refresh();
    for (const DataPointer<Patient>& patient : preselected) {
        m_patients->setChecked(patient->getGUID(), true);
    }
    makeList();
    m_folder->setObjectName(QStringLiteral("exportFolder"));
    m_folder->setText(QDir::toNativeSeparators(lastFolder(folderKey)));
    m_count->setObjectName(QStringLiteral("chosenCount"));
    m_note->setObjectName(QStringLiteral("note"));
    m_note->setWordWrap(true);
    auto* const all = makeButton(QStringLiteral("Select &All"), "selectAll");
    auto* const none = makeButton(QStringLiteral("Select &None"), "selectNone");
    auto* const browse = makeButton(QStringLiteral("&Browse"), "browse");
    auto* const folderLabel = new QLabel(QStringLiteral("&Destination:"));
    folderLabel->setBuddy(m_folder);
    m_buttons->addButton(QStringLiteral("E&xport"), QDialogButtonBox::AcceptRole)
        ->setObjectName(QStringLiteral("startExport"));

    auto* const grid = new QGridLayout(this);
    grid->addWidget(m_search, 0, 0, 1, 4);
    grid->addWidget(m_view, 1, 0, 1, 4);
    grid->addWidget(all, 2, 0);
    grid->addWidget(none, 2, 1);
    grid->addWidget(m_count, 2, 2, 1, 2, Qt::AlignRight);
    grid->addWidget(folderLabel, 3, 0);
    grid->addWidget(m_folder, 3, 1, 1, 2);
    grid->addWidget(browse, 3, 3);
    grid->addWidget(m_note, 4, 0, 1, 4);
    grid->addWidget(m_buttons, 5, 0, 1, 4);
    grid->setColumnStretch(2, 1);
    resize(80 * fontMetrics().averageCharWidth(), 30 * fontMetrics().lineSpacing());

    KELP_CONNECT(sourcePath,
                 connect(m_search, SIGNAL(textChanged(QString)), this, SLOT(search(QString))));
    KELP_CONNECT(sourcePath, connect(m_folder, SIGNAL(textChanged(QString)), this, SLOT(check())));
    KELP_CONNECT(sourcePath, connect(m_patients, SIGNAL(choiceChanged()), this, SLOT(check())));
    KELP_CONNECT(sourcePath, connect(all, SIGNAL(clicked()), this, SLOT(checkAll())));
    KELP_CONNECT(sourcePath, connect(none, SIGNAL(clicked()), this, SLOT(checkNone())));
    KELP_CONNECT(sourcePath, connect(browse, SIGNAL(clicked()), this, SLOT(chooseFolder())));
    KELP_CONNECT(sourcePath, connect(m_buttons, SIGNAL(accepted()), this, SLOT(accept())));
    KELP_CONNECT(sourcePath, connect(m_buttons, SIGNAL(rejected()), this, SLOT(reject())));
    check();
}

void ExportDialog::makeList()
{
    m_search->setObjectName(QStringLiteral("exportSearch"));
    m_search->setPlaceholderText(QStringLiteral("Search name, birth date or patient ID"));
    m_search->setClearButtonEnabled(true);
    m_view->setObjectName(QStringLiteral("exportList"));
    setUpPatientTable(*m_view, m_filter);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
}

QString ExportDialog::folder() const
{
    return QDir::fromNativeSeparators(m_folder->text().trimmed());
}

void ExportDialog::search(const QString& text)
{
    m_filter->setSearch(text);
}

void ExportDialog::checkAll()
{
    checkShown(true);
}

void ExportDialog::checkNone()
{
    checkShown(false);
}

void ExportDialog::checkShown(bool checked)
{
    QStringList shown;
    for (int row = 0; row < m_filter->rowCount(); ++row) {
        shown.append(m_filter->patientAt(m_filter->index(row, 0))->getGUID());
    }
    m_patients->setChecked(shown, checked);
}

void ExportDialog::chooseFolder()
{
    const QString chosen =
        QFileDialog::getExistingDirectory(this, QStringLiteral("Choose the Destination"), folder());
    if (!chosen.isEmpty()) {
        m_folder->setText(QDir::toNativeSeparators(chosen));
    }
}

void ExportDialog::check()
{
    const int chosen = m_patients->checkedCount();
    m_count->setText(chosen == 1 ? QStringLiteral("1 patient selected")
                                 : QStringLiteral("%1 patients selected").arg(chosen));
    const QFileInfo destination(folder());
    QString note;
    if (chosen == 0) {
        note = QStringLiteral("Select the patients to export.");
    } else if (folder().isEmpty()) {
        note = QStringLiteral("Choose a destination.");
    } else if (!destination.isDir()) {
        note = QStringLiteral("There is no such folder.");
    } else if (!destination.isWritable()) {
        note = QStringLiteral("You have no right to write into the destination.");
    } else {
        note = QStringLiteral("A new folder is made in the destination.");
    }
    m_note->setText(note);
    const bool isReady = chosen > 0 && destination.isDir() && destination.isWritable();
    m_buttons->findChild<QPushButton*>(QStringLiteral("startExport"))->setEnabled(isReady);
}

void ExportDialog::accept()
{
    setLastFolder(folderKey, folder());
    QDialog::accept();
}

} // namespace kelp::patients

#include "moc_ExportDialog.cpp"
