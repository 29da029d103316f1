#pragma once

#include "PatientExchange.h"

#include <QObject>

class QAction;
class QWidget;

namespace kelp::patients {

class PatientListPane;

/// "Export" and "Import": the dialogs around the patient exchange.
class PatientTransfer : public QObject
{
    Q_OBJECT

public:
    PatientTransfer(PatientListPane* list, QWidget* window);

    QAction* importAction;
    QAction* exportAction;

signals:
    /// The store's patients are others now.
    void imported();

private slots:
    void importPatients();
    void exportPatients();

private:
    QString askImportFolder();
    void showReport(const QString& title, const kelp::exchange::Report& report);

    PatientListPane* m_list;
    QWidget* m_window;
};

} // namespace kelp::patients
