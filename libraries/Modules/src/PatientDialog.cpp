#include "PatientDialog.h"

#include "BirthDate.h"
#include "kelpCheck.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>

namespace kelp::patients {

namespace {

constexpr const char* sourcePath = "libraries/Modules/src/PatientDialog";
constexpr int widthInCharacters = 44;
constexpr int remarkLines = 4;

template <typename Widget>
Widget* named(Widget* widget, const char* name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

} // namespace

PatientDialog::PatientDialog(const QString& title, const Patient& patient,
                             const QList<Patient*>& others, QWidget* parent)
    : QDialog(parent), m_patient(patient), m_others(others),
      m_lastName(named(new QLineEdit, "lastName")),
      m_firstNames(named(new QLineEdit, "firstNames")),
      m_birthDate(named(new QLineEdit, "birthDate")), m_sex(named(new QComboBox, "sex")),
      m_remark(named(new QPlainTextEdit, "remark")), m_problem(named(new QLabel, "problem")),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel))
{
    setWindowTitle(title);
    auto* const number = named(new QLabel(patientNumber(patient)), "patientNumber");
    number->setTextInteractionFlags(Qt::TextSelectableByMouse);
    number->setToolTip(QStringLiteral("Assigned automatically"));
    m_birthDate->setPlaceholderText(displayDate(QDate(1960, 12, 31)));
    m_birthDate->setToolTip(
        QStringLiteral("Year, month and day, or day and month in your usual order. May be empty."));
    m_remark->setTabChangesFocus(true);
    m_remark->setFixedHeight(remarkLines * fontMetrics().lineSpacing() +
                             2 * fontMetrics().height());
    m_problem->setWordWrap(true);
    m_problem->setMinimumHeight(2 * fontMetrics().lineSpacing());
    m_problem->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_problem->setMinimumWidth(widthInCharacters * fontMetrics().averageCharWidth());

    auto* const form = new QFormLayout(this);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->addRow(QStringLiteral("&Last name:"), m_lastName);
    form->addRow(QStringLiteral("&First name:"), m_firstNames);
    form->addRow(QStringLiteral("&Birth date:"), m_birthDate);
    form->addRow(QStringLiteral("&Sex:"), m_sex);
    form->addRow(QStringLiteral("&Remark:"), m_remark);
    form->addRow(QStringLiteral("Patient ID:"), number);
    form->addRow(m_problem);
    form->addRow(m_buttons);
    fill();
    for (QLineEdit* const edit : {m_lastName, m_firstNames, m_birthDate}) {
        KELP_CONNECT(sourcePath, connect(edit, SIGNAL(textChanged(QString)), this, SLOT(check())));
    }
    KELP_CONNECT(sourcePath, connect(m_buttons, SIGNAL(accepted()), this, SLOT(accept())));
    KELP_CONNECT(sourcePath, connect(m_buttons, SIGNAL(rejected()), this, SLOT(reject())));
    check();
}

void PatientDialog::fill()
{
    const PatientDetails known = detailsOf(m_patient);
    m_lastName->setText(known.name.lastName);
    m_firstNames->setText(known.name.firstNames);
    m_birthDate->setText(displayDate(known.birthDate));
    m_sex->addItems(
        {QString(), QStringLiteral("Female"), QStringLiteral("Male"), QStringLiteral("Other")});
    if (m_sex->findText(known.sex) < 0) {
        m_sex->addItem(known.sex);
    }
    m_sex->setCurrentText(known.sex);
    m_remark->setPlainText(known.remark);
}

PatientDetails PatientDialog::details() const
{
    const PatientDetails known = detailsOf(m_patient);
    const QString date = m_birthDate->text().trimmed();
    // What was not touched stays, even where it could not be typed like that.
    const QDate birthDate =
        date == displayDate(known.birthDate) ? known.birthDate : readBirthDate(date);
    return {{m_firstNames->text(), m_lastName->text()},
            birthDate,
            m_sex->currentText(),
            m_remark->toPlainText()};
}

void PatientDialog::check()
{
    const PatientDetails entered = details();
    const bool hasName = !joinName(entered.name).trimmed().isEmpty();
    const bool hasDate = entered.birthDate.isValid() || m_birthDate->text().trimmed().isEmpty();
    QString note;
    if (!hasName) {
        note = QStringLiteral("Enter a last name or a first name.");
    } else if (!hasDate) {
        note = QStringLiteral("This is no birth date. Write it like %1 or 1960-12-31.")
                   .arg(displayDate(QDate(1960, 12, 31)));
    } else if (entered.birthDate.isValid()) {
        note = QStringLiteral("Born on %1.")
                   .arg(QLocale().toString(entered.birthDate, QLocale::LongFormat));
    }
    m_problem->setText(note);
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(hasName && hasDate);
}

void PatientDialog::accept()
{
    if (m_buttons->button(QDialogButtonBox::Ok)->isEnabled() && isTwinIntended()) {
        QDialog::accept();
    }
}

bool PatientDialog::isTwinIntended()
{
    const PatientDetails entered = details();
    const PatientDetails known = detailsOf(m_patient);
    const bool isSame =
        joinName(entered.name) == m_patient.getName() && entered.birthDate == known.birthDate;
    const Patient* const twin = findTwin(m_others, m_patient, entered);
    if (isSame || !twin) {
        return true;
    }
    const QString date = displayDate(twin->getBirthDate());
    const QString text =
        QStringLiteral("There is already a patient \"%1\"%2, with the Patient ID %3.\n\nIs this "
                       "another person?")
            .arg(displayName(*twin),
                 date.isEmpty() ? QString() : QStringLiteral(", born %1").arg(date),
                 patientNumber(*twin));
    return QMessageBox::question(this, QStringLiteral("Patient Exists"), text,
                                 QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::No) == QMessageBox::Yes;
}

} // namespace kelp::patients

#include "moc_PatientDialog.cpp"
