#include "NoticeBar.h"
#include "OCTAutoSegmentationModule.h"
#include "OCTScanControlWidget.h"
#include "OCTSegmentationViewerWidget.h"
#include "SavedState.h"
#include "SegInterface.h"
#include "SegUpdateDialog.h"
#include "kelpCheck.h"
#include "kelpSettings.h"
#include "kelpTrace.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

// How the tab is built; what it does stands in OCTAutoSegmentationModule.cpp.

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = R"(..\src\OCTAutoSegmentationModule)";

constexpr int narrow = 4;

struct TestField
{
    const char* label;
    const char* defaultText;
};

constexpr std::array<TestField, 8> testFields{{
    {"Min dist top-middle:", "100"},
    {"Max dist top-middle:", "400"},
    {"Expected distance top-middle:", "250"},
    {"Regularization distance top-middle:", "0.1"},
    {"Min dist middle-bottom:", "55"},
    {"Max dist middle-bottom:", "80"},
    {"Expected distance middle-bottom:", "65"},
    {"Regularization distance middle-bottom:", "0.1"},
}};

QCheckBox* makeCheckBox(const QString& text, const QString& name, bool checked,
                        const QString& toolTip)
{
    auto* const box = new QCheckBox(text);
    box->setObjectName(name);
    box->setChecked(checked);
    box->setToolTip(toolTip);
    rememberChecked(box, QStringLiteral("autoSegmentation/") + name);
    return box;
}

} // namespace

OCTAutoSegmentationModule::OCTAutoSegmentationModule(ActiveDataItems* activeDataItems,
                                                     const QString& name)
    : OCTModule(name, activeDataItems), m_mainWidget(new QWidget)
{
    // Tight, so that the form with its menu and tabs keeps below 800 pixels of height.
    auto* const columns = new QHBoxLayout(m_mainWidget);
    columns->setContentsMargins(narrow, narrow, narrow, narrow);
    auto* const view = new QWidget;
    auto* const grid = new QGridLayout(view);
    grid->setContentsMargins(0, 0, 0, 0);
    columns->addWidget(m_controlWidget);
    columns->addWidget(view, 1);

    makeViewer(view);
    KELP_CONNECT(sourcePath, connect(m_controlWidget.data(), SIGNAL(bScanSelected(int)),
                                     m_segmentationViewer.data(), SIGNAL(setActiveSlice(int))));
    KELP_CONNECT(sourcePath, connect(m_controlWidget.data(), SIGNAL(aScanSelected(int)),
                                     m_segmentationViewer.data(), SIGNAL(setYHintLine(int))));
    KELP_CONNECT(sourcePath, connect(m_segmentationViewer.data(), SIGNAL(activeSliceChanged(int)),
                                     this, SLOT(followActiveSlice(int))));
    QGroupBox* const options = makeOptions();
    const bool testEnabled =
        Settings::get(QStringLiteral("testSegmentationEnabled"), QVariant(false)).toBool();
    if (testEnabled) {
        grid->addWidget(makeTestOptions(), 1, 2);
    }
    QGroupBox* const exportOptions = makeExportOptions();
    grid->addWidget(m_segmentationViewer, 0, 0, 1, testEnabled ? 3 : 2);
    grid->addWidget(options, 1, 0);
    grid->addWidget(exportOptions, 1, 1);
    grid->addWidget(makeNextStepLabel(), 2, 0, 1, -1);
    grid->setRowStretch(0, 1);

    connectRun();
    updateButtons();
    setHintTarget(m_segmentationViewer);
}

OCTAutoSegmentationModule::~OCTAutoSegmentationModule()
{
    delete m_mainWidget;
    delete m_segmentationViewer;
    delete m_controlWidget;
}

void OCTAutoSegmentationModule::makeViewer(QWidget* parent)
{
    m_notice = new NoticeBar(parent);
    const bool done =
        step("Initializing the viewer failed:\n", "Error Initializing the viewer", [&] {
            m_segmentationViewer = new OCTSegmentationViewerWidget(parent);
            m_segmentationViewer->initViewer();
            m_segmentationViewer->layout()->setContentsMargins(0, 0, 0, 0);
            m_segmentationViewer->setTopWidget(m_notice);
        });
    if (!done) {
        Trace() << "OCTAutoSegmentationModule constructor: "
                << "error initializing the viewer";
    }
}

QPushButton* OCTAutoSegmentationModule::makeSegmentButton(const char* text, const char* toolTip,
                                                          const char* slot)
{
    constexpr int buttonWidth = 180;
    auto* const button = new QPushButton(QString::fromUtf8(text));
    button->setFixedWidth(buttonWidth);
    button->setToolTip(QString::fromUtf8(toolTip));
    KELP_CONNECT(sourcePath, connect(button, SIGNAL(clicked()), this, slot));
    return button;
}

QGroupBox* OCTAutoSegmentationModule::makeOptions()
{
    m_btnAutoSegmentNormal = makeSegmentButton(
        "Segment Normal", "Healthy human retina. Replaces the layers of the current segmentation.",
        SLOT(segmentAllNormalHuman()));
    m_btnAutoSegmentDrusen = makeSegmentButton(
        "Segment Drusen",
        "Human retina with drusen (dry AMD). Replaces the layers of the current segmentation.",
        SLOT(segmentAllDrusenHuman()));
    m_btnAutoSegmentMouse = makeSegmentButton(
        "Segment Mouse", "Mouse retina. Replaces the layers of the current segmentation.",
        SLOT(segmentAllMouse()));
    m_useETDRSMask = makeCheckBox(
        QStringLiteral("Use ETDRS Mask"), QStringLiteral("useETDRSMask"), true,
        QStringLiteral("Leave out what lies outside of the ETDRS grid around the fovea."));
    m_useCenterMask = makeCheckBox(
        QStringLiteral("Use Center Mask (ONH)"), QStringLiteral("useCenterMask"), false,
        QStringLiteral("Leave out a disc of 1 mm diameter around the deepest point near the "
                       "centre of the scan."));

    auto* const group = new QGroupBox(QStringLiteral("Segmentation Options"));
    auto* const box = new QVBoxLayout(group);
    box->setSpacing(narrow);
    box->addWidget(m_useETDRSMask);
    box->addWidget(m_useCenterMask);
    box->addWidget(new QLabel(QStringLiteral("Start Segmentation:")));
    box->addWidget(m_btnAutoSegmentNormal);
    box->addWidget(m_btnAutoSegmentDrusen);
    box->addWidget(m_btnAutoSegmentMouse);
    box->addStretch();
    return group;
}

QGroupBox* OCTAutoSegmentationModule::makeTestOptions()
{
    auto* const group = new QGroupBox(QStringLiteral("Segmentation Test Options"));
    auto* const grid = new QGridLayout(group);
    constexpr int rows = testFields.size();
    for (int row = 0; row < rows; ++row) {
        auto* const edit = new QLineEdit(QString::fromUtf8(testFields[row].defaultText));
        edit->setObjectName(QStringLiteral("testField%1").arg(row));
        auto* const label = new QLabel(QString::fromUtf8(testFields[row].label));
        label->setBuddy(edit);
        grid->addWidget(label, row, 0);
        grid->addWidget(edit, row, 1);
        m_testFields[row] = edit;
    }
    auto* const start = new QPushButton(QStringLiteral("Start Segmentation Test"));
    KELP_CONNECT(sourcePath, connect(start, SIGNAL(clicked()), this, SLOT(startSegmentTest())));
    grid->addWidget(start, rows, 0, 1, 2);
    return group;
}

QGroupBox* OCTAutoSegmentationModule::makeExportOptions()
{
    m_exportMetaImage = makeCheckBox(
        QStringLiteral("MetaImage"), QStringLiteral("exportMetaImage"), false,
        QStringLiteral("The scan as oct.mha and the labelled layers as segmentation.mha."));
    m_exportPositions =
        makeCheckBox(QStringLiteral("Layer Positions as CSV"), QStringLiteral("exportPositions"),
                     false, QStringLiteral("Image rows per layer; -1 where masked."));
    m_exportThickness = makeCheckBox(
        QStringLiteral("Layer Thickness as CSV"), QStringLiteral("exportThickness"), false,
        QStringLiteral("Micrometres between neighbouring layers; -1 where masked."));
    m_exportRaw = makeCheckBox(QStringLiteral("Layers as Raw (16bit uint)"),
                               QStringLiteral("exportRaw"), false,
                               QStringLiteral("One byte per position, its low 8 bits; 255 where "
                                              "masked."));
    m_btnExport = new QPushButton(QStringLiteral("Export"));
    KELP_CONNECT(sourcePath, connect(m_btnExport, SIGNAL(clicked()), this, SLOT(exportOCT())));

    auto* const group = new QGroupBox(QStringLiteral("Export Segmentation"));
    auto* const box = new QVBoxLayout(group);
    box->setSpacing(narrow);
    box->addWidget(m_exportMetaImage);
    box->addWidget(m_exportPositions);
    box->addWidget(m_exportThickness);
    box->addWidget(m_exportRaw);
    box->addWidget(m_btnExport);
    box->addStretch();
    return group;
}

void OCTAutoSegmentationModule::connectRun()
{
    m_segInterface = QSharedPointer<SegInterface>::create();
    m_updateDialog = new SegUpdateDialog(m_segInterface, m_mainWidget);
    KELP_CONNECT(sourcePath, connect(m_segInterface.data(), SIGNAL(segmentationSuccess()), this,
                                     SLOT(segmentationSuccess())));
    // Queued, since an abort tells its failure before it sets the flag: a box inside that call
    // would let the run go on for as long as it is open.
    KELP_CONNECT(sourcePath,
                 connect(m_segInterface.data(), SIGNAL(segmentationFailure(QString)), this,
                         SLOT(segmentationFailure(QString)), Qt::QueuedConnection));
}

} // namespace kelp::oct
