#pragma once

#include "PatientFilterModel.h"

#include <QItemSelection>
#include <QWidget>

class QLabel;
class QLineEdit;
class QTreeView;

namespace kelp {
class HintOverlay;
}

namespace kelp::patients {

/// The list of patients with its search field, and what could not be read below it.
class PatientListPane : public QWidget
{
    Q_OBJECT

public:
    explicit PatientListPane(QWidget* parent = nullptr);

    /// Shows the store as it is now; keeps the selection.
    void refresh();
    PatientListModel& patients() { return *m_model; }
    QTreeView* view() const { return m_view; }

    /// The patient of the line that has the focus; null for none.
    DataPointer<Patient> currentPatient() const;
    QList<DataPointer<Patient>> selectedPatients() const;
    /// Clears a search that would hide the patient. Selects nothing for one that is not listed.
    void select(const QString& guid);
    /// After the patient of this line is gone: the one that took its place, or the last.
    void selectRow(int row);
    int currentRow() const;

public slots:
    void focusSearch();

signals:
    void selectionChanged();

private slots:
    void search(const QString& text);
    void enterList();
    void showProblems();

private:
    void makeView();
    void showState();

    PatientListModel* m_model;
    PatientFilterModel* m_filter;
    QLineEdit* m_search = nullptr;
    QTreeView* m_view = nullptr;
    QLabel* m_problems = nullptr;
    HintOverlay* m_hint = nullptr;
    CaError m_storeError;
    /// Selected last; a search may hide it for a while.
    QString m_lastSelected;
};

} // namespace kelp::patients
