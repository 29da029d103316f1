#include "FailureBox.h"

#include <QMessageBox>

namespace kelp {

void showFailure(QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox::critical(parent, title, text);
}

QString failureText(const QString& firstLine, const Exception& exception)
{
    return firstLine + QString::fromUtf8(exception.what());
}

} // namespace kelp
