#pragma once

#include "ItemNames.h"

#include <QDialog>

class QDialogButtonBox;
class QLabel;
class QLineEdit;

namespace kelp::patients {

/// Asks for the name of a study or an item, of a study also for its institution.
class NameDialog : public QDialog
{
    Q_OBJECT

public:
    /// Names that are taken are refused; the name shown first never is, where the item exists.
    NameDialog(const QString& title, const QString& name, const IsTaken& isTaken, QWidget* parent);
    /// Adds the field.
    void askInstitution(const QString& institution);

    QString id() const;
    QString institution() const;

private slots:
    void check();

private:
    IsTaken m_isTaken;
    QLineEdit* m_name;
    QLineEdit* m_institution;
    QLabel* m_note;
    QDialogButtonBox* m_buttons;
};

} // namespace kelp::patients
