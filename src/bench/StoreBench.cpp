#include "GuiBench.h"

#include "DataIOManager.h"
#include "Patient.h"
#include "QtPMModule.h"
#include "Study.h"
#include "kelpCheck.h"

#include <QAbstractItemModel>
#include <QElapsedTimer>
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

void fillStore(const QString& folder, int patients)
{
    checkDone(DataIOManager::openStore(folder));
    for (int i = 0; i < patients; ++i) {
        const DataPointer<Patient> patient(new Patient);
        patient->setLastName(QStringLiteral("Patient"));
        patient->setName(QStringLiteral("Patient %1").arg(i));
        patient->setBirthDate(QDate(1940, 1, 1).addDays(i));
        auto* const study = new Study;
        study->setId(QStringLiteral("Study"));
        checkDone(patient->addStudy(study, false));
        checkDone(DataIOManager::storePatient(patient));
    }
    DataIOManager::closeStore();
}

} // namespace

Figure measureStore(const QString& folder, const Sizes& sizes)
{
    Figure figure{QStringLiteral("opening a store and showing its %1 patients").arg(sizes.patients),
                  2000.0};
    fillStore(folder, sizes.patients);
    QElapsedTimer timer;
    timer.start();
    checkDone(DataIOManager::openStore(folder));
    {
        QtPMModule module;
        QWidget* const widget = module.getMainWidget();
        widget->resize(1280, 720);
        module.activate();
        widget->show();
        check(QTest::qWaitForWindowExposed(widget), place, "The window does not come up.");
        QCoreApplication::processEvents();
        figure.milliseconds.append(static_cast<double>(timer.nsecsElapsed()) / 1e6);
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

} // namespace kelp::bench
