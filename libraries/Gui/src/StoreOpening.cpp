#include "StoreOpening.h"

#include "DataIOManager.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

namespace kelp {

namespace {

enum class Wish
{
    TryAgain,
    OtherFolder,
    Quit
};

Wish askAfterFailure(QWidget* parent, const QString& folder, const CaError& error)
{
    QMessageBox box(QMessageBox::Critical, QStringLiteral("Patient Store"),
                    QStringLiteral("The patient store could not be opened:\n%1").arg(folder),
                    QMessageBox::NoButton, parent);
    box.setInformativeText(error.toString());
    auto* const again = box.addButton(QStringLiteral("&Try Again"), QMessageBox::AcceptRole);
    auto* const other =
        box.addButton(QStringLiteral("&Choose Another Folder"), QMessageBox::ActionRole);
    auto* const quit = box.addButton(QStringLiteral("&Quit"), QMessageBox::RejectRole);
    box.setDefaultButton(again);
    box.setEscapeButton(quit);
    box.exec();
    if (box.clickedButton() == again) {
        return Wish::TryAgain;
    }
    return box.clickedButton() == other ? Wish::OtherFolder : Wish::Quit;
}

} // namespace

bool openStoreOrAsk(QWidget* parent)
{
    QString folder = DataIOManager::isStoreOpen() ? DataIOManager::storeFolder()
                                                  : DataIOManager::defaultStoreFolder();
    for (;;) {
        const CaError error = DataIOManager::openStore(folder);
        if (error == CaError::nullError) {
            return true;
        }
        const Wish wish = askAfterFailure(parent, folder, error);
        if (wish == Wish::Quit) {
            return false;
        }
        if (wish == Wish::OtherFolder) {
            const QString other = QFileDialog::getExistingDirectory(
                parent, QStringLiteral("Folder of the Patient Store for This Session"), folder);
            if (!other.isEmpty()) {
                folder = other;
            }
        }
    }
}

void showStoreProblems(QWidget* parent, const QList<CaError>& problems)
{
    if (problems.isEmpty()) {
        return;
    }
    QStringList texts;
    for (const CaError& problem : problems) {
        texts.append(problem.toString());
    }
    QMessageBox box(
        QMessageBox::Warning, QStringLiteral("Patient Store"),
        problems.size() == 1
            ? QStringLiteral("One patient file could not be read.")
            : QStringLiteral("%1 patient files could not be read.").arg(problems.size()),
        QMessageBox::Ok, parent);
    box.setInformativeText(QStringLiteral("The other patients are there. The damaged files are "
                                          "left as they are; \"Show Details\" lists them."));
    box.setDetailedText(texts.join(QStringLiteral("\n\n")));
    box.exec();
}

} // namespace kelp
