#include "BatchModuleFixture.h"
#include "HintOverlay.h"
#include "TraceCapture.h"

#include <QAction>
#include <QFileDialog>
#include <QGroupBox>
#include <QHeaderView>
#include <QRadioButton>

namespace kelp::oct {

namespace {

using test::ProgressCanceller;
using test::TestExportOptions;

class BatchTab : public test::BatchModuleFixture
{
protected:
    void writeSmallExports(int count) const
    {
        for (int i = 1; i <= count; ++i) {
            TestExportOptions options;
            options.seriesId = QString::number(i);
            writeSmallExport(QStringLiteral("%1").arg(i, 3, 10, QLatin1Char('0')), {}, options);
        }
    }
    QList<bool> checks() const
    {
        QList<bool> found;
        for (int row = 0; row < table().rowCount(); ++row) {
            found.append(box(row)->isChecked());
        }
        return found;
    }
    void clickRow(int row, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseClick(table().viewport(), Qt::LeftButton, modifiers,
                          table().visualRect(table().model()->index(row, 3)).center());
    }
    template <typename Button>
    Button& button(const char* caption) const
    {
        auto* const found =
            qobject_cast<Button*>(DialogDriver::findButton(window(), QLatin1String(caption)));
        EXPECT_TRUE(found) << caption;
        return *found;
    }
};

TEST_F(BatchTab, HasTheTableTheOptionsAndTheLogSideBySide)
{
    QStringList headers;
    QList<int> widths;
    for (int column = 0; column < table().columnCount(); ++column) {
        headers.append(table().horizontalHeaderItem(column)->text());
        widths.append(table().columnWidth(column));
    }
    EXPECT_EQ(headers, QStringList({"", "Patient Name", "Patient Birth Date", "Study",
                                    "Series Identifier"}));
    EXPECT_EQ(widths, QList<int>({20, 150, 150, 100, 100}));
    EXPECT_FALSE(table().isSortingEnabled());
    EXPECT_TRUE(log().isReadOnly());
    QStringList groups;
    for (const auto* const group : window().findChildren<QGroupBox*>()) {
        groups.append(group->title());
    }
    EXPECT_EQ(groups, QStringList({"Import", "Segment", "Segmentation Type"}));
    EXPECT_LT(table().geometry().right(),
              button<QPushButton>("Import OCTs").mapTo(&window(), {}).x());
    EXPECT_LT(button<QPushButton>("Import OCTs").mapTo(&window(), {}).x(), log().x());
}

TEST_F(BatchTab, StartsWithTheDefaultsAtTheFirstStart)
{
    EXPECT_EQ(child<QLineEdit>("studyName").text(), QStringLiteral("DefaultStudy"));
    EXPECT_EQ(child<QLineEdit>("studyName").width(), 100);
    EXPECT_TRUE(button<QRadioButton>("Healthy").isChecked());
    EXPECT_FALSE(button<QRadioButton>("Drusen").isChecked());
    EXPECT_FALSE(button<QRadioButton>("Mouse").isChecked());
    EXPECT_TRUE(button<QCheckBox>("Use ETDRS Mask").isChecked());
    EXPECT_FALSE(button<QCheckBox>("Use Center Mask (ONH)").isChecked());
}

TEST_F(BatchTab, RemembersTheCheckedOptions)
{
    clickOption("Mouse");
    clickOption("Use ETDRS Mask");
    clickOption("Use Center Mask (ONH)");
    makeModule();
    EXPECT_TRUE(button<QRadioButton>("Mouse").isChecked());
    EXPECT_FALSE(button<QRadioButton>("Healthy").isChecked());
    EXPECT_FALSE(button<QCheckBox>("Use ETDRS Mask").isChecked());
    EXPECT_TRUE(button<QCheckBox>("Use Center Mask (ONH)").isChecked());
}

TEST_F(BatchTab, ImportsEveryExportBelowTheFolderAndListsTheScans)
{
    writeSmallExports(2);
    importFolder(m_exports.path());
    EXPECT_EQ(logTexts(),
              QStringList({"Selected folder: " + m_exports.path(), "Found 2 XMLs to import",
                           "OCT with id 1 added to patient Eva Maria Muster.",
                           "OCT with id 2 added to patient Eva Maria Muster.",
                           "Finished importing OCTs."}));
    EXPECT_EQ(colorInLog("Found 2 XMLs to import"), QColor(Qt::black));
    EXPECT_EQ(colorInLog("OCT with id 1 added to patient Eva Maria Muster."),
              QColor(Qt::darkGreen));
    EXPECT_EQ(colorInLog("Finished importing OCTs."), QColor(Qt::black));
    ASSERT_EQ(table().rowCount(), 2);
    EXPECT_TRUE(box(0));
    EXPECT_EQ(cell(0, 1), QStringLiteral("Eva Maria Muster"));
    EXPECT_EQ(cell(0, 2), QDate(1950, 6, 15).toString(Qt::TextDate));
    EXPECT_EQ(cell(0, 3), QStringLiteral("DefaultStudy"));
    EXPECT_EQ(cell(0, 4), QStringLiteral("1"));
    EXPECT_EQ(cell(1, 4), QStringLiteral("2"));
    EXPECT_FALSE(progress());
}

TEST_F(BatchTab, ImportingAgainReportsWhatIsThereInRed)
{
    writeSmallExports(1);
    importFolder(m_exports.path());
    importFolder(m_exports.path());
    EXPECT_EQ(colorInLog("OCT with id 1 already exists for patient Eva Maria Muster."),
              QColor(Qt::red));
    EXPECT_EQ(table().rowCount(), 1);
    EXPECT_EQ(importFolders().size(), 2);
}

TEST_F(BatchTab, OneFileThatIsNoExportDoesNotKeepTheOthersOut)
{
    writeSmallExports(2);
    QFile file(m_exports.filePath("0.xml"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    importFolder(m_exports.path());
    EXPECT_EQ(countInLog("Could not get patient information from XML file " + file.fileName()), 1);
    EXPECT_EQ(countInLog("added to patient"), 2);
    EXPECT_EQ(table().rowCount(), 2);
}

TEST_F(BatchTab, WithoutAStudyNameTakesTheDefaultOneAndWritesItIntoTheField)
{
    writeSmallExports(1);
    auto& edit = child<QLineEdit>("studyName");
    edit.selectAll();
    QTest::keyClick(&edit, Qt::Key_Delete);
    ASSERT_TRUE(edit.text().isEmpty());
    importFolder(m_exports.path());
    EXPECT_EQ(edit.text(), QStringLiteral("DefaultStudy"));
    EXPECT_EQ(logTexts().at(1), QStringLiteral("No study name set, so using default study name."));
    EXPECT_EQ(cell(0, 3), QStringLiteral("DefaultStudy"));
}

TEST_F(BatchTab, ImportsIntoTheStudyThatIsNamed)
{
    writeSmallExports(1);
    auto& edit = child<QLineEdit>("studyName");
    edit.selectAll();
    QTest::keyClicks(&edit, QStringLiteral("Cohort 7"));
    importFolder(m_exports.path());
    EXPECT_EQ(cell(0, 3), QStringLiteral("Cohort 7"));
}

TEST_F(BatchTab, ACancelledFolderDialogSearchesTheCurrentFolder)
{
    writeSmallExports(1);
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_exports.path()));
    importFolder(QString());
    QDir::setCurrent(before);
    EXPECT_EQ(logTexts().at(0), QStringLiteral("Selected folder: "));
    EXPECT_EQ(countInLog("Found 1 XMLs to import"), 1);
    EXPECT_EQ(table().rowCount(), 1);
}

TEST_F(BatchTab, TheFolderDialogOpensWhereItWasLast)
{
    importFolder(m_exports.path());
    m_dialogs->expect([this](QDialog& dialog) {
        const auto* const folders = qobject_cast<QFileDialog*>(&dialog);
        ASSERT_TRUE(folders);
        EXPECT_EQ(folders->windowTitle(),
                  QStringLiteral("Please select a directory containing the OCT's to import"));
        EXPECT_EQ(folders->directory().absolutePath(), m_exports.path());
        EXPECT_TRUE(folders->testOption(QFileDialog::ShowDirsOnly));
        dialog.reject();
    });
    const QString before = QDir::currentPath();
    const QTemporaryDir nothing;
    ASSERT_TRUE(QDir::setCurrent(nothing.path()));
    click("Import OCTs");
    QDir::setCurrent(before);
}

TEST_F(BatchTab, AnImportCanBeCancelledAndKeepsWhatItHas)
{
    constexpr int count = 30;
    writeSmallExports(count);
    const ProgressCanceller canceller(window(), [](QProgressDialog& dialog) {
        return dialog.labelText() == QStringLiteral("Importing OCT from export XMLs...") &&
               dialog.value() >= 3;
    });
    importFolder(m_exports.path());
    EXPECT_TRUE(canceller.hasCancelled());
    EXPECT_EQ(logTexts().last(), QStringLiteral("User aborted importing."));
    EXPECT_EQ(colorInLog("User aborted importing."), QColor(Qt::black));
    EXPECT_EQ(countInLog("Finished importing OCTs."), 0);
    EXPECT_GE(table().rowCount(), 3);
    EXPECT_LT(table().rowCount(), count);
    EXPECT_EQ(table().rowCount(), countInLog("added to patient"));
    reopenStore();
    ASSERT_EQ(patients().size(), 1);
    EXPECT_EQ(scansOf(*patients().first()).size(), table().rowCount());
}

TEST_F(BatchTab, CollectingTheFilesCanBeCancelledToo)
{
    for (int i = 0; i < 500; ++i) {
        ASSERT_TRUE(QDir().mkpath(m_exports.filePath(QString::number(i))));
    }
    const ProgressCanceller canceller(window(), [](QProgressDialog& dialog) {
        return dialog.labelText() == QStringLiteral("Collecting OCT Export XMLs...");
    });
    importFolder(m_exports.path());
    EXPECT_TRUE(canceller.hasCancelled());
    EXPECT_EQ(logTexts().last(), QStringLiteral("User aborted importing."));
    EXPECT_EQ(countInLog("XMLs to import"), 0);
}

TEST_F(BatchTab, AStoreThatHasBecomeEmptyLeavesRowsWithoutCellsAndSegmentsNothing)
{
    writeSmallExports(2);
    importFolder(m_exports.path());
    ASSERT_EQ(DataIOManager::removePatient(DataPointer<Patient>(patients().first())).toString(),
              QString());
    m_module->activate();
    EXPECT_EQ(table().rowCount(), 2);
    EXPECT_FALSE(table().cellWidget(0, 0));
    EXPECT_FALSE(table().cellWidget(1, 4));
    const test::TraceCapture trace;
    click("Start Segmentation");
    EXPECT_FALSE(progress());
    EXPECT_TRUE(trace.lines().contains(
        QStringLiteral("ERROR, did not get check box widget in oct table!")));
    EXPECT_TRUE(logTexts().isEmpty());
}

TEST_F(BatchTab, HasOneRowForEachScanWhenTheStoreHasLostSome)
{
    writeSmallExports(3);
    importFolder(m_exports.path());
    patients().first()->getStudy("DefaultStudy")->removeData(QStringLiteral("2"));
    m_module->activate();
    ASSERT_EQ(table().rowCount(), 2);
    EXPECT_EQ(cell(0, 4), QStringLiteral("1"));
    EXPECT_EQ(cell(1, 4), QStringLiteral("3"));
}

TEST_F(BatchTab, ShowsAtEachVisitWhatTheStoreHolds)
{
    writeSmallExports(3);
    importFolder(m_exports.path());
    const QPointer<QWidget> firstName = table().cellWidget(0, 1);
    clickRow(1);
    patients().first()->setName(QStringLiteral("Renamed"));
    m_module->deactivate();
    m_module->activate();
    EXPECT_TRUE(firstName) << "thousands of cells take long to make";
    EXPECT_EQ(cell(2, 1), QStringLiteral("Renamed"));
    EXPECT_EQ(table().cellWidget(2, 1)->toolTip(), QStringLiteral("Renamed"));
    EXPECT_TRUE(table().selectionModel()->selectedRows().isEmpty());
    EXPECT_FALSE(QApplication::overrideCursor());
}

TEST_F(BatchTab, SaysWhatToDoWhileThereAreNoScans)
{
    const auto* const hint = window().findChild<HintOverlay*>();
    EXPECT_TRUE(hint->isVisible());
    EXPECT_TRUE(hint->text().contains("Import a folder of exports"));
    writeSmallExports(1);
    importFolder(m_exports.path());
    EXPECT_FALSE(hint->isVisible());
}

TEST_F(BatchTab, KeepsTheChecksWhileTheUserLooksAtOtherTabs)
{
    writeSmallExports(3);
    importFolder(m_exports.path());
    check(1);
    m_module->deactivate();
    m_module->activate();
    EXPECT_EQ(checks(), QList<bool>({false, true, false}));
}

TEST_F(BatchTab, ChecksManyRowsAtOnceByKeys)
{
    writeSmallExports(4);
    importFolder(m_exports.path());
    checkAll();
    EXPECT_EQ(checks(), QList<bool>({true, true, true, true}));
    press(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(checks(), QList<bool>({false, false, false, false}));
    clickRow(1);
    clickRow(2, Qt::ShiftModifier);
    press(Qt::Key_Plus);
    EXPECT_EQ(checks(), QList<bool>({false, true, true, false}));
    clickRow(2);
    press(Qt::Key_Minus);
    EXPECT_EQ(checks(), QList<bool>({false, true, false, false}));
    press(Qt::Key_Space);
    EXPECT_EQ(checks(), QList<bool>({false, true, true, false}));
    press(Qt::Key_Space);
    EXPECT_EQ(checks(), QList<bool>({false, true, false, false}));
}

TEST_F(BatchTab, OffersTheSameInItsContextMenu)
{
    QStringList texts;
    for (const QAction* const action : table().actions()) {
        texts.append(action->text());
    }
    EXPECT_EQ(table().contextMenuPolicy(), Qt::ActionsContextMenu);
    EXPECT_EQ(texts, QStringList({"Check All", "Uncheck All", "Check Selected Rows",
                                  "Uncheck Selected Rows", "Toggle Selected Rows"}));
}

} // namespace

} // namespace kelp::oct
