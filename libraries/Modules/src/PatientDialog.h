#pragma once

#include "PatientIdentity.h"

#include <QDialog>

class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace kelp::patients {

/// Asks for the details of a new patient, or changes those of one.
class PatientDialog : public QDialog
{
    Q_OBJECT

public:
    /// The others are looked through for one of the same name and birth date.
    PatientDialog(const QString& title, const Patient& patient, const QList<Patient*>& others,
                  QWidget* parent);

    PatientDetails details() const;

public slots:
    void accept() override;

private slots:
    void check();

private:
    void fill();
    bool isTwinIntended();

    const Patient& m_patient;
    QList<Patient*> m_others;
    QLineEdit* m_lastName;
    QLineEdit* m_firstNames;
    QLineEdit* m_birthDate;
    QComboBox* m_sex;
    QPlainTextEdit* m_remark;
    QLabel* m_problem;
    QDialogButtonBox* m_buttons;
};

} // namespace kelp::patients
