#include "GuiBench.h"

#include "DataIOManager.h"
#include "OCTBatchProcessModule.h"
#include "OCTScan.h"
#include "Patient.h"
#include "QtPMModule.h"
#include "Study.h"
#include "kelpCheck.h"

#include <QAbstractItemModel>
#include <QDir>
#include <QElapsedTimer>
#include <QTableWidget>
#include <QTest>
#include <QTreeView>

#include <algorithm>

namespace kelp::bench {

namespace {

constexpr Place place{"src/bench/StoreBench", "kelp::bench::measureStore"};

void checkDone(const CaError& error)
{
    check(error == CaError::nullError, place, error.toString());
}

/// As an import leaves it: named by its series and its images.
OCTScan* makeScan(const QString& folder, const Sizes& sizes)
{
    auto* const scan = new OCTScan;
    checkDone(scan->setUri(QStringLiteral("OCTScanURI"),
                           URI(QStringLiteral("file++hra:%1/scan.xml?seriesId=1").arg(folder))));
    for (int i = 0; i <= sizes.bScans; ++i) {
        checkDone(
            scan->setUri(QStringLiteral("SliceImage%1").arg(i),
                         URI(QStringLiteral("file++dummy:%1/image%2.tif").arg(folder).arg(i))));
    }
    return scan;
}

/// Leaves a store alone that is there already.
void fillStore(const QString& folder, const Sizes& sizes)
{
    if (QDir(folder).exists(QStringLiteral("patients"))) {
        return;
    }
    checkDone(DataIOManager::openStore(folder));
    for (int i = 0; i < sizes.patients; ++i) {
        const DataPointer<Patient> patient(new Patient);
        patient->setLastName(QStringLiteral("Patient"));
        patient->setName(QStringLiteral("Patient %1").arg(i));
        patient->setBirthDate(QDate(1940, 1, 1).addDays(i));
        auto* const study = new Study;
        study->setId(QStringLiteral("Study"));
        checkDone(patient->addStudy(study, false));
        const QString imported = QStringLiteral("%1/binary/HRA_XML_%2").arg(folder).arg(i);
        checkDone(study->addData(makeScan(imported, sizes), QStringLiteral("Scan"), false));
        checkDone(DataIOManager::storePatient(patient));
    }
    DataIOManager::closeStore();
}

void showAsTab(QWidget& widget)
{
    constexpr QSize tab(1280, 720);
    widget.resize(tab);
    widget.show();
    check(QTest::qWaitForWindowExposed(&widget, longestWaitMs), place,
          "The window does not come up.");
    QCoreApplication::processEvents();
}

double millisecondsOf(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

} // namespace

Figure measureStore(const QString& folder, const Sizes& sizes)
{
    Figure figure{QStringLiteral("opening a store and showing its %1 patients").arg(sizes.patients),
                  2000.0};
    fillStore(folder, sizes);
    QElapsedTimer timer;
    timer.start();
    checkDone(DataIOManager::openStore(folder));
    {
        QtPMModule module;
        QWidget* const widget = module.getMainWidget();
        module.activate();
        showAsTab(*widget);
        figure.milliseconds.append(millisecondsOf(timer));
        int largest = 0;
        for (const QTreeView* const view : widget->findChildren<QTreeView*>()) {
            largest = std::max(largest, view->model() ? view->model()->rowCount() : 0);
        }
        check(largest == sizes.patients, place, "The list does not hold all patients.");
        module.deactivate();
    }
    DataIOManager::closeStore();
    return figure;
}

Figure measureBatchTab(const QString& folder, const Sizes& sizes)
{
    // Reading a study and making the five cells of a row, with a wait cursor over it.
    constexpr double perScan = 0.5;
    Figure figure{QStringLiteral("entering the batch tab with %1 scans").arg(sizes.patients),
                  std::max(100.0, perScan * sizes.patients)};
    fillStore(folder, sizes);
    checkDone(DataIOManager::openStore(folder));
    {
        oct::OCTBatchProcessModule module(QStringLiteral("OCT Batch Processing"));
        constexpr int visits = 3;
        for (int visit = 0; visit < visits; ++visit) {
            QElapsedTimer timer;
            timer.start();
            module.activate();
            showAsTab(*module.getMainWidget());
            figure.milliseconds.append(millisecondsOf(timer));
            module.deactivate();
            module.getMainWidget()->hide();
        }
        const auto* const table = module.getMainWidget()->findChild<QTableWidget*>();
        check(table && table->rowCount() == sizes.patients, place,
              "The table does not hold all scans.");
    }
    DataIOManager::closeStore();
    return figure;
}

} // namespace kelp::bench
