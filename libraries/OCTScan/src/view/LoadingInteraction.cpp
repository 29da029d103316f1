#include "LoadingInteraction.h"

#include "AppBase.h"
#include "FailureBox.h"

#include <QApplication>

namespace kelp::oct {

LoadingInteraction::LoadingInteraction()
{
    OCTScanLoadingUtils::setInteraction(this);
}

LoadingInteraction::~LoadingInteraction()
{
    OCTScanLoadingUtils::setInteraction(nullptr);
}

void LoadingInteraction::showProblem(const QString& title, const QString& text)
{
    // The dialog that asked for the copy is in front of the main form.
    QWidget* const asking = QApplication::activeModalWidget();
    showFailure(asking ? asking : AppBase::getMainForm(), title, text);
}

void LoadingInteraction::setBusy(bool busy)
{
    if (busy) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
        QApplication::restoreOverrideCursor();
    }
}

} // namespace kelp::oct
