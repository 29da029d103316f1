#include "PatientTransfer.h"

#include "AppBase.h"
#include "ExportDialog.h"
#include "FailureBox.h"
#include "PatientListPane.h"
#include "PresentQuestion.h"
#include "SavedState.h"
#include "TransferProgress.h"
#include "kelpCheck.h"

#include <QAction>
#include <QFileDialog>
#include <QMessageBox>

namespace kelp::patients {

namespace {

constexpr const char* sourcePath = "libraries/Modules/src/PatientTransfer";
const QString importFolderKey = QStringLiteral("patientManager/importFolder");

} // namespace

PatientTransfer::PatientTransfer(PatientListPane* list, QWidget* window)
    : QObject(window), importAction(new QAction(QStringLiteral("&Import"), this)),
      exportAction(new QAction(QStringLiteral("E&xport"), this)), m_list(list), m_window(window)
{
    importAction->setObjectName(QStringLiteral("import"));
    importAction->setToolTip(
        QStringLiteral("Read the patients of a folder that was exported on another computer"));
    exportAction->setObjectName(QStringLiteral("export"));
    exportAction->setToolTip(
        QStringLiteral("Copy patients with all their data into a folder for another computer"));
    KELP_CONNECT(sourcePath,
                 connect(importAction, SIGNAL(triggered()), this, SLOT(importPatients())));
    KELP_CONNECT(sourcePath,
                 connect(exportAction, SIGNAL(triggered()), this, SLOT(exportPatients())));
}

void PatientTransfer::exportPatients()
{
    const QString title = QStringLiteral("Export");
    ExportDialog dialog(m_list->selectedPatients(), m_window);
    if (dialog.exec() != QDialog::Accepted || !AppBase::saveChanges()) {
        return;
    }
    kelp::exchange::Report report;
    const bool isDone = guarded(m_window, QStringLiteral("The export failed:\n"), title, [&] {
        TransferProgress progress(title, m_window);
        report =
            kelp::exchange::exportPatients(dialog.chosenPatients(), dialog.folder(),
                                           [&progress](int done, int all, const QString& what) {
                                               return progress.step(done, all, what);
                                           });
    });
    if (isDone) {
        showReport(title, report);
    }
}

QString PatientTransfer::askImportFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(
        m_window, QStringLiteral("Choose an Exported Folder"), lastFolder(importFolderKey));
    if (folder.isEmpty()) {
        return QString();
    }
    if (!kelp::exchange::isExportFolder(folder)) {
        showFailure(m_window, QStringLiteral("Import"),
                    QStringLiteral("The folder %1 was not made by an export. Choose a folder whose "
                                   "name begins with \"Export__\".")
                        .arg(QDir::toNativeSeparators(folder)));
        return QString();
    }
    setLastFolder(importFolderKey, QFileInfo(folder).absolutePath());
    return folder;
}

void PatientTransfer::importPatients()
{
    const QString title = QStringLiteral("Import");
    // A patient that is replaced must not be overwritten by a late save of what it was.
    const QString folder = AppBase::saveChanges() ? askImportFolder() : QString();
    if (folder.isEmpty()) {
        return;
    }
    kelp::exchange::Report report;
    const bool isDone = guarded(m_window, QStringLiteral("The import failed:\n"), title, [&] {
        TransferProgress progress(title, m_window);
        PresentQuestion question(progress.window());
        report = kelp::exchange::importPatients(
            folder,
            [&progress](int done, int all, const QString& what) {
                return progress.step(done, all, what);
            },
            [&question](const Patient& present) { return question.ask(present); });
    });
    emit imported();
    if (isDone) {
        showReport(title, report);
    }
}

void PatientTransfer::showReport(const QString& title, const kelp::exchange::Report& report)
{
    const bool isClean = report.problems.isEmpty();
    QMessageBox box(isClean ? QMessageBox::Information : QMessageBox::Warning, title,
                    report.summary(), QMessageBox::Ok, m_window);
    if (report.problems.size() > kelp::exchange::Report::shownProblems) {
        box.setDetailedText(report.problems.join(QStringLiteral("\n")));
    }
    box.exec();
}

} // namespace kelp::patients

#include "moc_PatientTransfer.cpp"
