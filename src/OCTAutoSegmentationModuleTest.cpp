#include "OCTAutoSegmentationModule.h"

#include "DialogDriver.h"
#include "LayerName.h"
#include "OCTModuleTestSupport.h"
#include "TraceCapture.h"
#include "kelpSettings.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QRegularExpression>

#include <gmock/gmock.h>

namespace moduletest {
namespace {

using kelp::oct::OCTAutoSegmentationModule;

const QStringList segmentButtons{QStringLiteral("Segment Normal"), QStringLiteral("Segment Drusen"),
                                 QStringLiteral("Segment Mouse")};
const QStringList formats{QStringLiteral("MetaImage"), QStringLiteral("Layer Positions as CSV"),
                          QStringLiteral("Layer Thickness as CSV"),
                          QStringLiteral("Layers as Raw (16bit uint)")};

class AutoTab : public ModuleApplication
{
protected:
    void makeTab()
    {
        m_tab = std::make_unique<OCTAutoSegmentationModule>(
            &m_items, QStringLiteral("OCT Auto-Segmentation"));
        m_tab->getMainWidget()->resize(1260, 760);
        m_tab->getMainWidget()->show();
        m_tab->activate();
    }
    void TearDown() override
    {
        m_tab.reset();
        kelp::Settings::set(QStringLiteral("testSegmentationEnabled"), QVariant(false));
        ModuleApplication::TearDown();
    }
    QWidget& widget() { return *m_tab->getMainWidget(); }
    QCheckBox* box(const QString& text)
    {
        for (auto* const candidate : widget().findChildren<QCheckBox*>()) {
            if (candidate->text() == text) {
                return candidate;
            }
        }
        return nullptr;
    }
    void tick(const QString& text, bool checked = true)
    {
        QCheckBox* const candidate = box(text);
        ASSERT_TRUE(candidate) << text.toStdString();
        if (candidate->isChecked() != checked) {
            QTest::keyClick(candidate, Qt::Key_Space);
        }
        ASSERT_EQ(candidate->isChecked(), checked) << text.toStdString();
    }
    void tickFormatsOnly(const QStringList& wanted)
    {
        for (const QString& format : formats) {
            tick(format, wanted.contains(format));
        }
    }
    /// "SSS" for the three buttons, "E" for the export, "B" for each of its boxes; '-' if disabled.
    std::string enabled()
    {
        std::string states;
        for (const QString& text : segmentButtons) {
            states += findButton(widget(), text)->isEnabled() ? 'S' : '-';
        }
        states += findButton(widget(), QStringLiteral("Export"))->isEnabled() ? 'E' : '-';
        for (const QString& text : formats) {
            states += box(text)->isEnabled() ? 'B' : '-';
        }
        return states;
    }
    std::string nextStep()
    {
        return widget().findChild<QLabel*>(QStringLiteral("nextStep"))->text().toStdString();
    }
    QGroupBox* group(const QString& title)
    {
        for (auto* const candidate : widget().findChildren<QGroupBox*>()) {
            if (candidate->title() == title) {
                return candidate;
            }
        }
        return nullptr;
    }
    /// "row column rowSpan columnSpan" in the view's grid.
    std::string cell(QWidget* item)
    {
        auto* const grid = qobject_cast<QGridLayout*>(item->parentWidget()->layout());
        int row = 0;
        int column = 0;
        int rows = 0;
        int columns = 0;
        grid->getItemPosition(grid->indexOf(item), &row, &column, &rows, &columns);
        return QStringLiteral("%1 %2 %3 %4")
            .arg(row)
            .arg(column)
            .arg(rows)
            .arg(columns)
            .toStdString();
    }
    /// A segmentation with ILM and BM 40 rows apart, shown in the tab.
    OCTScanSegPtr showSegmentedScan()
    {
        const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
        const OCTScanSegPtr segmentation = addSegmentation(QStringLiteral("seg1"), scan);
        segmentation->setVolumeLayer(kelp::oct::test::constantSurface(segmentation, 50),
                                     kelp::oct::LayerNameILM::create());
        segmentation->setVolumeLayer(kelp::oct::test::constantSurface(segmentation, 90),
                                     kelp::oct::LayerNameBM::create());
        makeTab();
        doubleClickScan(widget(), QStringLiteral("scan1"));
        clickSegmentation(widget(), QStringLiteral("seg1"));
        return segmentation;
    }
    QStringList exportedFiles(const QString& folder) const
    {
        return QDir(folder).entryList(QDir::Files, QDir::Name);
    }

    std::unique_ptr<OCTAutoSegmentationModule> m_tab;
};

TEST_F(AutoTab, WithoutTestOptionsTheViewerSpansTwoColumns)
{
    kelp::Settings::set(QStringLiteral("testSegmentationEnabled"), QVariant(false));
    makeTab();
    EXPECT_FALSE(group(QStringLiteral("Segmentation Test Options")));
    EXPECT_TRUE(widget()
                    .findChildren<QLineEdit*>(QRegularExpression(QStringLiteral("testField.*")))
                    .isEmpty());
    QGroupBox* const options = group(QStringLiteral("Segmentation Options"));
    ASSERT_TRUE(options);
    EXPECT_EQ(cell(options), "1 0 1 1");
    EXPECT_EQ(cell(group(QStringLiteral("Export Segmentation"))), "1 1 1 1");
    auto* const grid = qobject_cast<QGridLayout*>(options->parentWidget()->layout());
    EXPECT_EQ(cell(grid->itemAtPosition(0, 0)->widget()), "0 0 1 2");
    for (const QString& text : segmentButtons) {
        EXPECT_EQ(findButton(widget(), text)->minimumWidth(), 180);
        EXPECT_EQ(findButton(widget(), text)->maximumWidth(), 180);
    }
}

TEST_F(AutoTab, TheTestOptionsStandInAThirdColumnWithTheirDefaults)
{
    kelp::Settings::set(QStringLiteral("testSegmentationEnabled"), QVariant(true));
    makeTab();
    QGroupBox* const options = group(QStringLiteral("Segmentation Test Options"));
    ASSERT_TRUE(options);
    EXPECT_EQ(cell(options), "1 2 1 1");
    auto* const viewGrid = qobject_cast<QGridLayout*>(options->parentWidget()->layout());
    EXPECT_EQ(cell(viewGrid->itemAtPosition(0, 0)->widget()), "0 0 1 3");

    auto* const grid = qobject_cast<QGridLayout*>(options->layout());
    const std::vector<std::pair<std::string, std::string>> expected{
        {"Min dist top-middle:", "100"},
        {"Max dist top-middle:", "400"},
        {"Expected distance top-middle:", "250"},
        {"Regularization distance top-middle:", "0.1"},
        {"Min dist middle-bottom:", "55"},
        {"Max dist middle-bottom:", "80"},
        {"Expected distance middle-bottom:", "65"},
        {"Regularization distance middle-bottom:", "0.1"}};
    for (int row = 0; row < 8; ++row) {
        const auto* const label = qobject_cast<QLabel*>(grid->itemAtPosition(row, 0)->widget());
        const auto* const edit = qobject_cast<QLineEdit*>(grid->itemAtPosition(row, 1)->widget());
        ASSERT_TRUE(label && edit) << row;
        EXPECT_EQ(label->text().toStdString(), expected[row].first);
        EXPECT_EQ(edit->text().toStdString(), expected[row].second);
        EXPECT_FALSE(edit->validator());
    }
    EXPECT_EQ(cell(findButton(*options, QStringLiteral("Start Segmentation Test"))), "8 0 1 2");
}

TEST_F(AutoTab, NothingCanBePressedWithoutASegmentation)
{
    addScan(QStringLiteral("scan1"));
    makeTab();
    EXPECT_EQ(enabled(), "--------");
    doubleClickScan(widget(), QStringLiteral("scan1"));
    EXPECT_EQ(enabled(), "--------");
    EXPECT_EQ(nextStep(), "Press \"New Segmentation\", or select a segmentation of this scan.");
}

TEST_F(AutoTab, AFreshSegmentationCanBeSegmentedButNotExported)
{
    for (const char* const pattern : {"Volume", "Single BScan", "Circular BScan"}) {
        addScan(QString::fromUtf8(pattern), QString::fromUtf8(pattern));
    }
    makeTab();
    for (const char* const pattern : {"Volume", "Single BScan", "Circular BScan"}) {
        doubleClickScan(widget(), QString::fromUtf8(pattern));
        EXPECT_EQ(enabled(), "--------") << pattern;
        press(widget(), QStringLiteral("New Segmentation"));
        EXPECT_EQ(enabled(), "SSS-----") << pattern;
        EXPECT_EQ(nextStep(), "") << pattern;
    }
}

TEST_F(AutoTab, AStarScanCannotBeSegmentedAndTheTabSaysWhy)
{
    const OCTScanPtr scan = addScan(QStringLiteral("star"), QStringLiteral("Star"));
    addSegmentation(QStringLiteral("seg1"), scan);
    makeTab();
    doubleClickScan(widget(), QStringLiteral("star"));
    EXPECT_TRUE(nextStep().find("A star scan cannot be segmented") == 0) << nextStep();
    EXPECT_FALSE(findButton(widget(), QStringLiteral("New Segmentation"))->isEnabled());
    clickSegmentation(widget(), QStringLiteral("seg1"));
    EXPECT_EQ(enabled(), "--------");
}

TEST_F(AutoTab, ASegmentationWithALayerCanBeExported)
{
    showSegmentedScan();
    EXPECT_EQ(enabled(), "SSSEBBBB");
}

TEST_F(AutoTab, TheMaskBoxesStartAsInTheBatchAndComeBackAsTheyWereLeft)
{
    kelp::Settings::set(QStringLiteral("Gui/autoSegmentation/useETDRSMask"), QVariant());
    kelp::Settings::set(QStringLiteral("Gui/autoSegmentation/useCenterMask"), QVariant());
    makeTab();
    tick(QStringLiteral("Use ETDRS Mask"), false);
    tick(QStringLiteral("Use Center Mask (ONH)"), true);
    m_tab.reset();
    makeTab();
    EXPECT_FALSE(box(QStringLiteral("Use ETDRS Mask"))->isChecked());
    EXPECT_TRUE(box(QStringLiteral("Use Center Mask (ONH)"))->isChecked());
    tick(QStringLiteral("Use ETDRS Mask"), true);
    tick(QStringLiteral("Use Center Mask (ONH)"), false);
}

TEST_F(AutoTab, AnExportWithoutAFormatIsRefused)
{
    showSegmentedScan();
    tickFormatsOnly({});
    DialogDriver dialogs;
    dialogs.expectMessage(
        QStringLiteral("Export Requirements"),
        QStringLiteral("Please select at least one of the export options above."));
    press(widget(), QStringLiteral("Export"));
}

TEST_F(AutoTab, ExportsAllFormatsIntoTheChosenFolder)
{
    showSegmentedScan();
    tickFormatsOnly(formats);
    const QString folder = path(QStringLiteral("exported"));
    ASSERT_TRUE(QDir().mkpath(folder));
    DialogDriver dialogs;
    dialogs.expectFileDialog(folder);
    press(widget(), QStringLiteral("Export"));
    EXPECT_EQ(exportedFiles(folder).join(' ').toStdString(),
              "layer_BM.csv layer_BM.raw layer_ILM.csv layer_ILM.raw oct.mha segmentation.mha "
              "thickness_ILM_BM.csv");
    // Read, but never written.
    EXPECT_EQ(kelp::Settings::get(QStringLiteral("lastExportPath"), QVariant()), QVariant());
}

TEST_F(AutoTab, AScanThatCannotBeWrittenEndsTheExport)
{
    showSegmentedScan();
    tickFormatsOnly(formats);
    const QString folder = path(QStringLiteral("blocked"));
    ASSERT_TRUE(QDir().mkpath(folder + QStringLiteral("/oct.mha")));
    DialogDriver dialogs;
    dialogs.expectFileDialog(folder);
    dialogs.expectMessageContaining(QStringLiteral("Export Error"),
                                    QStringLiteral("Exporting the OCT failed:\n"));
    press(widget(), QStringLiteral("Export"));
    EXPECT_EQ(exportedFiles(folder).join(' ').toStdString(), "");
}

TEST_F(AutoTab, ALayerThatCannotBeWrittenIsNamedAndEndsTheExport)
{
    showSegmentedScan();
    tickFormatsOnly(formats);
    const QString folder = path(QStringLiteral("blocked"));
    ASSERT_TRUE(QDir().mkpath(folder + QStringLiteral("/layer_ILM.csv")));
    DialogDriver dialogs;
    dialogs.expectFileDialog(folder);
    dialogs.expectMessageContaining(QStringLiteral("Export Error"),
                                    QStringLiteral("Exporting the OCT segmentation failed:\n"));
    press(widget(), QStringLiteral("Export"));
    EXPECT_TRUE(dialogs.messages().last().contains(QStringLiteral("layer_ILM.csv")));
    EXPECT_EQ(exportedFiles(folder).join(' ').toStdString(),
              "layer_BM.csv oct.mha segmentation.mha");
}

TEST_F(AutoTab, ACancelledFolderQuestionExportsIntoTheCurrentDirectory)
{
    showSegmentedScan();
    tickFormatsOnly({QStringLiteral("Layer Positions as CSV")});
    const QString before = QDir::currentPath();
    const QString folder = path(QStringLiteral("current"));
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(QDir::setCurrent(folder));
    DialogDriver dialogs;
    dialogs.expectFileDialog(QString());
    press(widget(), QStringLiteral("Export"));
    EXPECT_TRUE(QDir::setCurrent(before));
    EXPECT_EQ(exportedFiles(folder).join(' ').toStdString(), "layer_BM.csv layer_ILM.csv");
}

TEST_F(AutoTab, TracesWhatItsViewsAreTold)
{
    const kelp::oct::test::TraceCapture traces;
    showSegmentedScan();
    const QStringList lines = traces.lines();
    EXPECT_TRUE(lines.contains(QStringLiteral("OCTAutoSegmentationModule::setOCTScan()")));
    EXPECT_TRUE(lines.contains(QStringLiteral("OCTAutoSegmentationModule::setOCTScan() done")));
    EXPECT_TRUE(
        lines.contains(QStringLiteral("OCTAutoSegmentationModule::setOCTScanSegmentation()")));
    EXPECT_TRUE(lines.contains(QStringLiteral("OCTAutoSegmentationModule::clearOCT()")));
}

TEST_F(AutoTab, AScanThatTheViewerRefusesIsTold)
{
    m_items.set(addDamagedScan(QStringLiteral("damaged")), nullptr, m_study);
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Error Loading the OCT"),
                                    QStringLiteral("Loading the OCT failed:\n"));
    for (int i = 0; i < 2; ++i) {
        dialogs.expectMessageContaining(QStringLiteral("Error Setting the OCT"),
                                        QStringLiteral("Setting the OCT failed:\n"));
    }
    const kelp::oct::test::TraceCapture traces;
    makeTab();
    EXPECT_TRUE(traces.lines().contains(QStringLiteral(
        "OCTAutoSegmentationModule::setOCTScan: error setting the OCT in the viewer")));
    EXPECT_EQ(enabled(), "--------");
}

} // namespace
} // namespace moduletest
