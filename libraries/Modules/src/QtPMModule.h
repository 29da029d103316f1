#pragma once

#include "QtAppModule.h"

#include <QScopedPointer>

namespace kelp::patients {
class PatientManagerWidget;
}

/// The patient manager: patients, their studies and data. The only place where the current patient
/// and study change.
class QtPMModule : public QtAppModule
{
    Q_OBJECT

public:
    /// Named "Patient Manager".
    QtPMModule();
    ~QtPMModule() override;

    void activate() override;
    void deactivate() override;
    QWidget* getMainWidget() override;

private:
    QScopedPointer<kelp::patients::PatientManagerWidget> m_widget;
};
