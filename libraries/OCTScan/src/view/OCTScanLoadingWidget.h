#pragma once

#include "DataFactory.h"
#include "QtDataLoadingWidget.h"

#include <QHash>

#include <optional>

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

private:
    /// Nothing unless exactly one file is chosen and there is an item to give it to; says why.
    std::optional<QString> chosenXmlPath();
    /// Nothing when the user chooses none.
    std::optional<QString> askForSeries(const QStringList& labels,
                                        const QHash<QString, QString>& idsByLabel);
    QStringList copyFiles(const QStringList& files);
    bool setUris(const QStringList& files, const QString& seriesId);
    bool setUri(const QString& key, const kelp::URI& uri);
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
