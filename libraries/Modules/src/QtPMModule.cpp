#include "QtPMModule.h"

#include "PatientManagerWidget.h"

QtPMModule::QtPMModule()
    : QtAppModule(QStringLiteral("Patient Manager"), false),
      m_widget(new kelp::patients::PatientManagerWidget)
{
}

QtPMModule::~QtPMModule() = default;

void QtPMModule::activate()
{
    m_widget->refresh();
}

void QtPMModule::deactivate() {}

QWidget* QtPMModule::getMainWidget()
{
    return m_widget.data();
}

#include "moc_QtPMModule.cpp"
