#pragma once

#include "QtAppModule.h"

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
};
