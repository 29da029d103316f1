#include "QtAppModule.h"

QtAppModule::QtAppModule(const QString& name, bool) : m_name(name) {}

QtAppModule::~QtAppModule() = default;

void QtAppModule::activate() {}

void QtAppModule::deactivate() {}

QWidget* QtAppModule::getWidget()
{
    return getMainWidget();
}

QWidget* QtAppModule::getMainWidget()
{
    return nullptr;
}

#include "moc_QtAppModule.cpp"
