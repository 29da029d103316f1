#include "OCTModule.h"

#include "AppBase.h"
#include "HintOverlay.h"
#include "OCTScanControlWidget.h"
#include "SegmentationNames.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <QLabel>

#include <algorithm>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "src/OCTModule";
constexpr Place createNewSegmentationPlace{sourcePath,
                                           "kelp::oct::OCTModule::createNewSegmentation"};
constexpr Place deleteSegmentPlace{sourcePath, "kelp::oct::OCTModule::deleteSegment"};

constexpr const char* clearingFailed = "Clearing the OCT failed:\n";
constexpr const char* clearingPanelFailed =
    "Clearing the OCT from the OCTScan control widget failed:\n";
constexpr const char* settingPanelFailed = "Setting the OCT in the controll widget failed:\n";
constexpr const char* creatingTitle = "Error Creating a New Segmentation";

QString guidOf(const DataPointer<Study>& study)
{
    return study ? study->getGUID() : QString();
}

void checkDone(const CaError& error, const Place& place)
{
    check(error == CaError::nullError, place, error.toString());
}

/// What the list has of this item's GUID: the item, or the one that an import put in its place.
/// Null if it was deleted meanwhile.
template <typename T>
DataPointer<T> listedAs(const DataPointer<T>& item, const QList<Data*>& list)
{
    const auto found = std::find_if(list.begin(), list.end(), [&item](const Data* other) {
        return item && other->getGUID() == item->getGUID();
    });
    return found == list.end() ? DataPointer<T>() : DataPointer<T>(dynamic_cast<T*>(*found));
}

OCTScanPtr scanOfStudy(const OCTScanPtr& scan, const DataPointer<Study>& study)
{
    QList<Data*> items;
    if (study) {
        study->getAllData(items);
    }
    return listedAs(scan, items);
}

/// Also null for a segmentation whose scan is gone.
OCTScanSegPtr segmentationOfStudy(const OCTScanSegPtr& segmentation,
                                  const DataPointer<Study>& study)
{
    QList<Data*> items;
    if (study) {
        study->getAllProcessData(items);
    }
    const OCTScanSegPtr listed = listedAs(segmentation, items);
    return listed && scanOfStudy(listed->getOCT(), study) ? listed : OCTScanSegPtr();
}

/// Passes on the failure of loading with what the decoder tells of it.
void loadWithReason(OCTScan& scan)
{
    try {
        scan.ensureLoaded();
    } catch (const Exception& exception) {
        const QString& reason = scan.getLoadProblem();
        if (reason.isEmpty()) {
            throw;
        }
        throw IOFailure(exception.getMessage(), reason);
    }
}

} // namespace

OCTModule::OCTModule(const QString& name, ActiveDataItems* activeDataItems)
    : QtAppModule(name, false), m_activeDataItems(activeDataItems)
{
    guarded(getMainWidget(), QStringLiteral("Creating the OCTScan control widget failed:\n"),
            QStringLiteral("Error Creating the OCTScan Control Widget"),
            [this] { m_controlWidget = new OCTScanControlWidget; });
    const auto* const panel = m_controlWidget.data();
    KELP_CONNECT(sourcePath, connect(panel, SIGNAL(newOCTScanLoaded(OCTScanPtr)), this,
                                     SLOT(setOCTScanPrivate(OCTScanPtr))));
    KELP_CONNECT(sourcePath,
                 connect(panel, SIGNAL(OCTScanDeselected()), this, SLOT(deselectOCT())));
    KELP_CONNECT(sourcePath, connect(panel, SIGNAL(segmentationSelected(OCTScanSegPtr)), this,
                                     SLOT(setOCTScanSegmentationPrivate(OCTScanSegPtr))));
    KELP_CONNECT(sourcePath, connect(panel, SIGNAL(btnNewSegmentationPressed()), this,
                                     SLOT(createNewSegmentation())));
    KELP_CONNECT(sourcePath, connect(panel, SIGNAL(deleteSegment(OCTScanSegPtr)), this,
                                     SLOT(deleteSegment(OCTScanSegPtr))));
    KELP_CONNECT(sourcePath, connect(panel, SIGNAL(maskChanged()), this, SLOT(maskChanged())));
}

OCTModule::~OCTModule()
{
    delete m_controlWidget;
}

void OCTModule::activate()
{
    Trace() << "OCTModule: activate";
    DataPointer<Study> study;
    step("Could not get the current study:\n", "Error Getting the Current Study",
         [&study] { study = AppBase::getCurrentStudy(); });
    if (m_currentStudy && m_currentStudy->getGUID() != guidOf(study)) {
        Trace() << "study changed: " << guidOf(m_currentStudy) << " -vs- " << guidOf(study)
                << " --> removing all active data items";
        // Not what another tab has chosen from the new study before this one was entered.
        if (guidOf(m_activeDataItems->getStudy()) != guidOf(study)) {
            m_activeDataItems->clear();
        }
        clearViews(clearingPanelFailed, "Error clearing the OCT");
    }
    if (!m_currentStudy) {
        Trace() << "m_currentStudy is null";
        clearViews(clearingPanelFailed, "Error clearing the OCT");
    }
    m_currentStudy = study;
    restoreSelection();
    tellSelection();
}

void OCTModule::restoreSelection()
{
    // The patient manager may have deleted them since another tab showed them.
    const OCTScanPtr scan = scanOfStudy(m_activeDataItems->getScan(), m_currentStudy);
    const OCTScanSegPtr segmentation =
        segmentationOfStudy(m_activeDataItems->getSegmentation(), m_currentStudy);
    showScan(scan);
    showSegmentation(segmentation);
    if (m_octScan && !segmentation) {
        // Without a segmentation the views were cleared and only the panel has its scan back.
        step("Setting the OCT failed:\n", "Error Setting the OCT",
             [this] { setOCTScan(m_octScan); });
    }
    showBScan(m_activeDataItems->getBScan());
}

void OCTModule::deactivate()
{
    Trace() << "OCTModule::deactivate";
    m_activeDataItems->set(m_octScan, m_octScanSegmentation, m_currentStudy);
    m_activeDataItems->setBScan(m_controlWidget->getActiveBScan());
    clearViews(clearingFailed, "Error clearing the OCT");
}

void OCTModule::setOCTScanPrivate(OCTScanPtr scan)
{
    // What the views do not show must not be segmented, exported or carried to another tab.
    m_octScanSegmentation = nullptr;
    showScan(scan);
    tellSelection();
}

void OCTModule::setOCTScanSegmentationPrivate(OCTScanSegPtr segmentation)
{
    // Another segmentation of the same scan is looked at on the same B-scan.
    const bool sameScan = segmentation && segmentation->getOCT() == m_controlWidget->getOCT();
    const int bScan = sameScan ? m_controlWidget->getActiveBScan() : -1;
    showSegmentation(segmentation);
    showBScan(bScan);
    tellSelection();
}

void OCTModule::showBScan(int index)
{
    // The panel has no scan if something failed before.
    const OCTScanPtr scan = m_controlWidget->getOCT();
    const bool valid = scan && index >= 0 && index < scan->getBScanCount();
    if (!valid || index == m_controlWidget->getActiveBScan()) {
        return;
    }
    step(settingPanelFailed, "Error Setting the OCT", [this, index] {
        m_controlWidget->setActiveBScan(index);
        emit m_controlWidget->bScanSelected(index);
    });
}

void OCTModule::showScan(const OCTScanPtr& scan)
{
    Trace() << "OCTModule::setOCTScanPrivate";
    if (scan == m_octScan) {
        Trace() << "OCTModule::setOCTScanPrivate: oct has not changed";
    }
    clearViews(clearingFailed, "Error clearing the OCT");
    m_octScan = scan;
    if (!scan) {
        Trace() << "OCTModule::setOCTScanPrivate: oct is null";
        clearViews(clearingFailed, "Error Clearing the OCT");
        return;
    }
    step("Loading the OCT failed:\n", "Error Loading the OCT",
         [this] { loadWithReason(*m_octScan); });
    step("Setting the OCT failed:\n", "Error Setting the OCT", [this] { setOCTScan(m_octScan); });
    step(settingPanelFailed, "Error Setting the OCT",
         [this] { m_controlWidget->setOCT(m_octScan); });
}

void OCTModule::showSegmentation(const OCTScanSegPtr& segmentation)
{
    Trace() << "OCTModule::setOCTScanSegmentationPrivate";
    clearViews(clearingFailed, "Error setting the OCT");
    m_octScanSegmentation = segmentation;
    if (segmentation) {
        step("Setting the OCT in the OCT module failed:\n", "Error setting the OCT", [this] {
            m_octScanSegmentation->ensureDecoded();
            showScan(m_octScanSegmentation->getOCT());
            setOCTScanSegmentation(m_octScanSegmentation);
            m_controlWidget->setOCTScanSegmentation(m_octScanSegmentation);
            m_controlWidget->refresh();
        });
    } else if (m_octScan) {
        Trace() << "OCTModule::setOCTScanSegmentationPrivate oct seg is null: setting oct";
        step(settingPanelFailed, "Error setting the OCT", [this] {
            m_controlWidget->setOCT(m_octScan);
            m_controlWidget->refresh();
        });
    } else {
        Trace() << "OCTModule::setOCTScanSegmentationPrivate oct seg and oct are null";
        clearViews(clearingPanelFailed, "Error clearing the OCT");
    }
}

void OCTModule::deselectOCT()
{
    m_octScan = nullptr;
    m_octScanSegmentation = nullptr;
    clearViews(clearingPanelFailed, "Error clearing the OCT");
    tellSelection();
}

void OCTModule::createNewSegmentation()
{
    if (!m_octScan) {
        showFailure(getMainWidget(), QString::fromUtf8(creatingTitle),
                    QStringLiteral("Creating a new segmentation failed because the current OCT is "
                                   "null"));
    }
    OCTScanSegPtr segmentation;
    step("Creating a new segmentation object failed:\n", creatingTitle,
         [&] { segmentation = new OCTScanSegmentation(m_octScan); });
    addToCurrentStudy(segmentation);
    step("Setting the OCT segmentation failed:\n", "Error setting the segmentation",
         [&] { setOCTScanSegmentationPrivate(segmentation); });
    step("Updating the OCTScan control widget failed:\n", creatingTitle,
         [this] { m_controlWidget->refresh(); });
    step("Setting the segmentation in the control widget failed:\n",
         "Error Setting the Segmentation",
         [&] { m_controlWidget->setOCTScanSegmentation(segmentation); });
}

void OCTModule::addToCurrentStudy(const OCTScanSegPtr& segmentation)
{
    const DataPointer<Study> study = AppBase::getCurrentStudy();
    if (!study) {
        showFailure(getMainWidget(), QString::fromUtf8(creatingTitle),
                    QStringLiteral("Getting the current study failed."));
        return;
    }
    const bool added = step("Adding a new segmentation failed:\n", creatingTitle, [&] {
        checkDone(study->addProcessData(segmentation.data(), newSegmentationId(*study), true),
                  createNewSegmentationPlace);
    });
    if (added) {
        AppBase::markCurrentChanged();
    }
}

void OCTModule::deleteSegment(OCTScanSegPtr segmentation)
{
    if (!segmentation) {
        return;
    }
    const bool removed =
        step("Removing the segmentation from to study failed:\n", "Error Removing the Segmentation",
             [&segmentation] {
                 const QString id = segmentation->getId();
                 const DataPointer<Study> study = AppBase::getCurrentStudy();
                 check(!study.isNull(), deleteSegmentPlace, "There is no current study.");
                 checkDone(study->removeProcessData(id), deleteSegmentPlace);
             });
    if (removed) {
        AppBase::markCurrentChanged();
    }
    step(clearingFailed, "Error Clearing the OCT", [&segmentation] { segmentation = nullptr; });
    step("Setting the OCT segmentation failed:\n", "Error setting the OCT segmentation", [this] {
        setOCTScanSegmentationPrivate(nullptr);
        setOCTScan(m_octScan);
    });
    step("Updating the segmentation list in the control widget failed:\n",
         "Error Updating the Segmentation List", [this] { m_controlWidget->refresh(); });
}

void OCTModule::segmentationChanged()
{
    AppBase::markCurrentChanged();
}

void OCTModule::maskChanged()
{
    AppBase::markCurrentChanged();
    if (m_octScanSegmentation) {
        step("Setting the segmentation failed:\n", "Error Setting the Segmentation",
             [this] { setOCTScanSegmentation(m_octScanSegmentation); });
    }
}

void OCTModule::followActiveSlice(int index)
{
    // The views also tell of -1 while they are cleared, when the panel has no scan any more.
    if (index < 0 || m_controlWidget->getOCT().isNull() ||
        m_controlWidget->getActiveBScan() == index) {
        return;
    }
    step(settingPanelFailed, "Error Setting the OCT",
         [this, index] { m_controlWidget->setActiveBScan(index); });
}

void OCTModule::clearViews(const char* firstLine, const char* title)
{
    step(firstLine, title, [this] { clearOCT(); });
    step(firstLine, title, [this] { m_controlWidget->clearOCT(); });
}

void OCTModule::setHintTarget(QWidget* view)
{
    m_hint = new HintOverlay(view);
    // The ground of the viewers is light in dark palettes as well, unlike the hint's text.
    m_hint->setAutoFillBackground(true);
    tellSelection();
}

QString OCTModule::hint() const
{
    if (AppBase::getCurrentStudy().isNull()) {
        return QStringLiteral("Select a patient and a study in the Patient Manager.");
    }
    if (!m_octScan) {
        return QStringLiteral("Double-click a scan in the list.");
    }
    if (!m_octScan->isLoaded()) {
        return QStringLiteral("The images of this scan could not be read.");
    }
    return {};
}

QLabel* OCTModule::makeNextStepLabel()
{
    m_nextStep = new QLabel;
    m_nextStep->setObjectName(QStringLiteral("nextStep"));
    m_nextStep->setWordWrap(true);
    m_nextStep->hide();
    return m_nextStep;
}

QString OCTModule::nextStep() const
{
    return {};
}

void OCTModule::tellSelection()
{
    if (m_hint) {
        m_hint->setHint(hint());
    }
    if (m_nextStep) {
        const QString text = hint().isEmpty() ? nextStep() : QString();
        m_nextStep->setText(text);
        m_nextStep->setVisible(!text.isEmpty());
    }
    AppBase::setScanDescription(m_octScan ? m_octScan->getId() : QString());
    tellRunWarnings();
}

void OCTModule::tellRunWarnings()
{
    runWarnings().keepFor(m_octScanSegmentation);
    AppBase::setStatusNotice(runWarnings().asStatusText());
}

} // namespace kelp::oct

#include "moc_OCTModule.cpp"
