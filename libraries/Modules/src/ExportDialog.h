#pragma once

#include "PatientChoiceModel.h"
#include "PatientFilterModel.h"

#include <QDialog>

class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QTreeView;

namespace kelp::patients {

/// Asks which patients to export, and where to.
class ExportDialog : public QDialog
{
    Q_OBJECT

public:
    /// The preselected ones are checked.
    ExportDialog(const QList<DataPointer<Patient>>& preselected, QWidget* parent);

    QList<DataPointer<Patient>> chosenPatients() const { return m_patients->checkedPatients(); }
    QString folder() const;

public slots:
    void accept() override;

private slots:
    void search(const QString& text);
    void checkAll();
    void checkNone();
    void chooseFolder();
    void check();

private:
    void makeList();
    void checkShown(bool checked);

    PatientChoiceModel* m_patients;
    PatientFilterModel* m_filter;
    QLineEdit* m_search;
    QTreeView* m_view;
    QLabel* m_count;
    QLineEdit* m_folder;
    QLabel* m_note;
    QDialogButtonBox* m_buttons;
};

} // namespace kelp::patients
