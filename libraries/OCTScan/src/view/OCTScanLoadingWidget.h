#pragma once

#include "DataFactory.h"
#include "QtDataLoadingWidget.h"

/// Adds a scan from an XML export: the user picks the file and one series, and the files are copied
/// into the store.
class OCTScanLoadingWidget : public QtDataLoadingWidget
{
    Q_OBJECT

public:
    OCTScanLoadingWidget(Data* item, const QString& name, QWidget* parent, Qt::WindowFlags flags);

    bool apply() override;

protected:
    QString getFileFilter() const override;
};

class OCTScanLoadingWidgetDataFactoryRegistration : public DataFactory::Registration
{
public:
    QString name() const override;
    QtDataConfigurationWidget* configurationWidget(Data* item, const QString& name,
                                                   QWidget* parent) const override;
};

/// Returns 1. Also runs during static initialisation.
int createOCTScanLoadingWidgetFactory();
