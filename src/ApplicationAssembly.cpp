#include "ApplicationAssembly.h"

#include "ActiveDataItems.h"
#include "AppBase.h"
#include "DataFactory.h"
#include "LoadingInteraction.h"
#include "OCTAutoSegmentationModule.h"
#include "OCTBatchProcessModule.h"
#include "OCTDecoderHeidelbergXML.h"
#include "OCTHelpModule.h"
#include "OCTManualSegmentationModule.h"
#include "OCTMeasurementModule.h"
#include "OCTScan.h"
#include "OCTScanLoadingWidget.h"
#include "QtModuleTabSelector.h"
#include "QtPMModule.h"
#include "StorePlugins.h"
#include "kelpTrace.h"

#include <QGuiApplication>
#include <QIcon>
#include <QLocale>
#include <QResource>

/// Here, since the macro wants the global namespace.
static void makeIconsKnown()
{
    Q_INIT_RESOURCE(icons);
}

namespace kelp::oct {

namespace {

/// Qt's plug-ins come from beside the program and from nowhere else: what a desktop or an
/// environment adds may have been built for another Qt.
void limitLibraryPaths()
{
    QCoreApplication::setLibraryPaths(
        {QCoreApplication::applicationDirPath() + QStringLiteral("/plugins")});
    Trace() << "====================configured plugin lib paths:==========================";
    for (const QString& path : QCoreApplication::libraryPaths()) {
        Trace() << path;
    }
    Trace() << "==========================================================================";
}

void identify(AppBase& application)
{
    makeIconsKnown();
    // What ties the window to its entry in the desktop's menu.
    QGuiApplication::setDesktopFileName(QStringLiteral("tessera"));
    const QResource resource(QStringLiteral(":/icon/iconTessera48.png"), QLocale());
    const QIcon icon(resource.absoluteFilePath());
    application.setApplicationIdentification(QStringLiteral("Tessera App"), icon,
                                             QStringLiteral("Tessera App"));
    Trace() << "done setting icon";
}

} // namespace

void registerFactories()
{
    createOCTDecoderHeidelbergXMLFactory();
    createFileIOFactory();
    createXMLDataTreeIOFactory();
    createOCTScanFactory();
    createOCTScanLoadingWidgetFactory();
    createOCTScanLoadingWidgetFactory();
    constexpr int linkFlags = 2;
    linkDataToWidget(QStringLiteral("OCTScan"), QStringLiteral("OCTScanLoadingWidget"),
                     QStringLiteral("OCT Image"), linkFlags, QString());
}

void assembleApplication(AppBase& application)
{
    limitLibraryPaths();
    identify(application);
    static LoadingInteraction loadingInteraction;

    application.setModuleSelector(
        new QtModuleTabSelector(QtModuleSelector::Top, true, false, true, true));
    application.addModule(new QtPMModule);
    // Shared by the three tabs that work on one scan, for as long as the program runs.
    static auto* const activeDataItems = new ActiveDataItems;
    activeDataItems->clear();
    application.addModule(
        new OCTAutoSegmentationModule(activeDataItems, QStringLiteral("OCT Auto-Segmentation")));
    application.addModule(new OCTManualSegmentationModule(
        activeDataItems, QStringLiteral("OCT Manual Segmentation")));
    application.addModule(
        new OCTMeasurementModule(activeDataItems, QStringLiteral("OCT Measurement")));
    application.addModule(new OCTBatchProcessModule(QStringLiteral("OCT Batch Processing")));
    const QString help = QStringLiteral("OCT Help");
    application.addModule(new OCTHelpModule(help));
    application.setHelpModule(help);
}

} // namespace kelp::oct
