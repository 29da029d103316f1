#include "PresentQuestion.h"

#include "PatientIdentity.h"

#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>

namespace kelp::patients {

using kelp::exchange::Present;

Present PresentQuestion::ask(const Patient& present)
{
    if (m_isForAll) {
        return m_answer;
    }
    const QString date = displayDate(present.getBirthDate());
    QMessageBox box(QMessageBox::Question, QStringLiteral("Import"),
                    QStringLiteral("The patient \"%1\"%2 is here already.")
                        .arg(displayName(present),
                             date.isEmpty() ? QString() : QStringLiteral(", born %1,").arg(date)),
                    QMessageBox::NoButton, m_parent);
    box.setInformativeText(
        QStringLiteral("Keep the patient as it is here, or replace all its studies, scans and "
                       "segmentations by those of the import?"));
    auto* const keep = box.addButton(QStringLiteral("&Keep"), QMessageBox::AcceptRole);
    auto* const replace = box.addButton(QStringLiteral("&Replace"), QMessageBox::DestructiveRole);
    auto* const cancel = box.addButton(QMessageBox::Cancel);
    cancel->setToolTip(QStringLiteral("End the import here; what was imported so far stays"));
    box.setDefaultButton(keep);
    box.setEscapeButton(cancel);
    auto* const forAll =
        new QCheckBox(QStringLiteral("Do the same for &all patients that are here"));
    forAll->setObjectName(QStringLiteral("forAll"));
    box.setCheckBox(forAll);
    box.exec();
    if (box.clickedButton() == cancel) {
        return Present::Cancel;
    }
    m_answer = box.clickedButton() == replace ? Present::Replace : Present::Keep;
    m_isForAll = forAll->isChecked();
    return m_answer;
}

} // namespace kelp::patients
