#include "QtDataConfigurationWidget.h"

QtDataConfigurationWidget::QtDataConfigurationWidget(Data* item, const QString& name,
                                                     QWidget* parent, Qt::WindowFlags flags)
    : QWidget(parent, flags), m_data(item), m_name(name)
{
}

void QtDataConfigurationWidget::cancel() {}

bool QtDataConfigurationWidget::canSaveAsDefault() const
{
    return false;
}

void QtDataConfigurationWidget::saveAsDefault() {}

#include "moc_QtDataConfigurationWidget.cpp"
