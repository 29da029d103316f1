#include "OCTScanLoadingWidget.h"

#include "DataIOManager.h"
#include "DataTreeIO.h"
#include "DialogDriver.h"
#include "LoadingInteraction.h"
#include "OCTDecoderHeidelbergXML.h"
#include "StorePlugins.h"
#include "TestExport.h"
#include "TraceCapture.h"
#include "Waiting.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QStringListModel>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

namespace kelp::oct {

namespace {

using test::TestExportOptions;
using test::TraceCapture;

/// A scan that writes down how often it is held.
class CountedScan : public OCTScan
{
public:
    void ref() const override
    {
        ++m_held;
        OCTScan::ref();
    }
    void unref() const override
    {
        --m_held;
        ++m_released;
        OCTScan::unref();
    }
    int held() const { return m_held; }
    int released() const { return m_released; }

private:
    mutable int m_held = 0;
    mutable int m_released = 0;
};

/// A series of an export as XML, with another time, type and id.
struct SeriesText
{
    QString id = QStringLiteral("1");
    QString type = QStringLiteral("Volume");
    QString second = QStringLiteral("12.5");
    QString modality = QStringLiteral("OCT");
};

class ScanLoading : public testing::Test
{
protected:
    void SetUp() override
    {
        createFileIOFactory();
        createXMLDataTreeIOFactory();
        createOCTDecoderHeidelbergXMLFactory();
        ASSERT_EQ(DataIOManager::openStore(m_store.path()).toString(), QString());
        m_scan = DataPointer<OCTScan>(new CountedScan);
        show(m_scan.data());
    }
    void TearDown() override
    {
        m_widget.reset();
        DataIOManager::closeStore();
    }

    void show(Data* item)
    {
        m_widget = std::make_unique<OCTScanLoadingWidget>(item, QStringLiteral("scan"), nullptr,
                                                          Qt::WindowFlags());
        m_widget->show();
        ASSERT_TRUE(waiting::untilExposed(*m_widget));
    }
    /// The XML file of an export with these series, with their images beside it.
    QString writeExport(const QList<SeriesText>& allSeries) const
    {
        TestExportOptions options;
        const QString path = test::writeTestExport(m_source.path(), options);
        QString xml = test::testExportXml(options);
        const int begin = xml.indexOf(QStringLiteral("<Series>"));
        const int end = xml.indexOf(QStringLiteral("</Series>")) + 9;
        const QString model = xml.mid(begin, end - begin);
        QString all;
        for (const SeriesText& series : allSeries) {
            QString text = model;
            text.replace(text.indexOf("<ID>1</ID>"), 10, "<ID>" + series.id + "</ID>");
            text.replace("<Type>Volume</Type>", "<Type>" + series.type + "</Type>");
            text.replace("<Modality>OCT</Modality>",
                         "<Modality>" + series.modality + "</Modality>");
            text.replace("<Second>12.5</Second>", "<Second>" + series.second + "</Second>");
            all += text;
        }
        xml.replace(begin, end - begin, all);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(xml.toLatin1());
        return path;
    }
    void choose(const QString& path)
    {
        DialogDriver dialogs;
        dialogs.expectFileDialog(path);
        QTest::mouseClick(m_widget->findChild<QToolButton*>(QStringLiteral("addFileButton")),
                          Qt::LeftButton);
    }
    /// Notes the choices of the series dialog, takes the row, and clicks the button.
    DialogDriver::Answer answer(int row, QDialogButtonBox::StandardButton button)
    {
        return [this, row, button](QDialog& dialog) {
            auto* const list = dialog.findChild<QListWidget*>(QStringLiteral("seriesList"));
            ASSERT_TRUE(list);
            m_selectedAtFirst = list->currentRow();
            m_choices.clear();
            for (int i = 0; i < list->count(); ++i) {
                m_choices.append(list->item(i)->text());
            }
            if (row >= 0) {
                QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                                  list->visualItemRect(list->item(row)).center());
            }
            auto* const buttons = dialog.findChild<QDialogButtonBox*>();
            QTest::mouseClick(buttons->button(button), Qt::LeftButton);
        };
    }
    bool applyWith(int row, QDialogButtonBox::StandardButton button = QDialogButtonBox::Ok)
    {
        DialogDriver dialogs;
        dialogs.expect(answer(row, button));
        return m_widget->apply();
    }
    QStringList importFolders() const
    {
        return QDir(DataTreeIO::binaryDataDirUri().path())
            .entryList({QStringLiteral("HRA_XML_*")}, QDir::Dirs);
    }
    QString message() const
    {
        const auto* const label = m_widget->findChild<QLabel*>(QStringLiteral("loadingMessage"));
        return label->isVisible() ? label->text() : QString();
    }

    QTemporaryDir m_store;
    QTemporaryDir m_source;
    LoadingInteraction m_interaction;
    DataPointer<OCTScan> m_scan;
    std::unique_ptr<OCTScanLoadingWidget> m_widget;
    QStringList m_choices;
    int m_selectedAtFirst = -1;
};

TEST_F(ScanLoading, CopiesTheExportAndTheScanLoadsFromTheCopy)
{
    choose(writeExport({{}}));
    ASSERT_TRUE(applyWith(-1));
    EXPECT_EQ(m_selectedAtFirst, 0);
    EXPECT_EQ(m_choices, QStringList{"Volume taken at 10:5:12"});
    ASSERT_EQ(importFolders().size(), 1);
    const QString folder =
        DataTreeIO::binaryDataDirUri().path() + "/" + importFolders().first() + "/";
    EXPECT_EQ(m_scan->getUri("OCTScanURI").toString(),
              "file++hra:" + folder + "export.xml?seriesId=1");
    ASSERT_TRUE(QDir(m_source.path()).removeRecursively());
    m_scan->ensureLoaded();
    EXPECT_EQ(m_scan->getBScanCount(), 3);
}

TEST_F(ScanLoading, ListsTheImageFilesWithBackslashesInFileOrder)
{
    choose(writeExport({{}}));
    ASSERT_TRUE(applyWith(-1));
    QString folder = DataTreeIO::binaryDataDirUri().path() + "/" + importFolders().first() + "/";
    folder.replace('/', '\\');
    EXPECT_EQ(m_scan->getUri("SliceImage0").toString(), "file++dummy:" + folder + "localizer.png");
    EXPECT_EQ(m_scan->getUri("SliceImage3").toString(), "file++dummy:" + folder + "b2.png");
    EXPECT_EQ(m_scan->getUriKeys().size(), 5);
}

TEST_F(ScanLoading, TheSameExportTwiceGivesTwoFolders)
{
    const QString path = writeExport({{}});
    choose(path);
    ASSERT_TRUE(applyWith(-1));
    const QString first = m_scan->getUri("OCTScanURI").path();
    ASSERT_TRUE(applyWith(-1));
    EXPECT_NE(m_scan->getUri("OCTScanURI").path(), first);
    EXPECT_EQ(importFolders().size(), 2);
    EXPECT_TRUE(QFile::exists(first));
}

TEST_F(ScanLoading, OfSeveralSeriesTheOneThatIsSelectedCounts)
{
    choose(writeExport({{"1", "Volume", "7"}, {"2", "Section", "8.9"}}));
    ASSERT_TRUE(applyWith(1));
    EXPECT_EQ(m_choices, QStringList({"Volume taken at 10:5:7", "Section taken at 10:5:8."}));
    EXPECT_EQ(m_scan->getUri("OCTScanURI").queryItem("seriesId"), "2");
    // The files of both series, of which the second time names what is there already.
    EXPECT_EQ(m_scan->getUriKeys().size(), 9);
}

TEST_F(ScanLoading, AFileNameThatComesTwiceIsCopiedOnceAndListedTwice)
{
    const TraceCapture trace;
    choose(writeExport({{"1"}, {"2"}}));
    ASSERT_TRUE(applyWith(0));
    EXPECT_EQ(trace.lines().filter("file exists: ").size(), 4);
    EXPECT_EQ(m_scan->getUri("SliceImage0"), m_scan->getUri("SliceImage4"));
}

TEST_F(ScanLoading, OfTwoSeriesWithOneLabelTheLaterIdStandsBehindBothLines)
{
    choose(writeExport({{"1"}, {"2"}}));
    ASSERT_TRUE(applyWith(0));
    EXPECT_EQ(m_choices, QStringList({"Volume taken at 10:5:12", "Volume taken at 10:5:12"}));
    EXPECT_EQ(m_scan->getUri("OCTScanURI").queryItem("seriesId"), "2");
}

TEST_F(ScanLoading, WithoutASupportedSeriesTheListIsEmptyAndOkGivesNothing)
{
    choose(writeExport(
        {{"1", "Fast Volume"}, {"2", "Circle"}, {"3", "Star"}, {"4", "Volume", "12.5", "OP"}}));
    EXPECT_FALSE(applyWith(-1));
    EXPECT_EQ(m_choices, QStringList());
    EXPECT_TRUE(importFolders().isEmpty());
    EXPECT_TRUE(m_scan->getUriKeys().isEmpty());
    EXPECT_TRUE(message().contains("no volume and no section"));
}

TEST_F(ScanLoading, RejectingTheSeriesDialogGivesNothing)
{
    choose(writeExport({{}}));
    EXPECT_FALSE(applyWith(-1, QDialogButtonBox::Cancel));
    EXPECT_TRUE(importFolders().isEmpty());
    EXPECT_TRUE(m_scan->getUriKeys().isEmpty());
}

TEST_F(ScanLoading, ADoubleClickOnASeriesTakesIt)
{
    choose(writeExport({{"1", "Volume", "7"}, {"2", "Volume", "8"}}));
    DialogDriver dialogs;
    dialogs.expect([](QDialog& dialog) {
        auto* const list = dialog.findChild<QListWidget*>(QStringLiteral("seriesList"));
        const QPoint place = list->visualItemRect(list->item(1)).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
    });
    ASSERT_TRUE(m_widget->apply());
    EXPECT_EQ(m_scan->getUri("OCTScanURI").queryItem("seriesId"), "2");
}

TEST_F(ScanLoading, ASeriesWithAnEmptyIdIsNotAdded)
{
    choose(writeExport({{QString()}}));
    const TraceCapture trace;
    EXPECT_FALSE(applyWith(-1));
    EXPECT_TRUE(trace.lines().contains("series id not found from key \"Volume taken at 10:5:12\""));
    EXPECT_TRUE(importFolders().isEmpty());
}

TEST_F(ScanLoading, AFileThatCannotBeReadOrIsNoXmlShowsTheEmptyDialog)
{
    const QString path = writeExport({{}});
    choose(path);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no xml at all");
    file.close();
    EXPECT_FALSE(applyWith(-1));
    EXPECT_EQ(m_choices, QStringList());
    ASSERT_TRUE(file.remove());
    EXPECT_FALSE(applyWith(-1));
    EXPECT_EQ(m_choices, QStringList());
}

TEST_F(ScanLoading, WithoutExactlyOneFileItLogsAndSaysWhatIsMissing)
{
    testing::internal::CaptureStderr();
    EXPECT_FALSE(m_widget->apply());
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("ERROR"), std::string::npos) << log;
    EXPECT_NE(log.find(": Selected items in file list != 1"), std::string::npos) << log;
    EXPECT_TRUE(message().contains("+ button"));
}

TEST_F(ScanLoading, WithoutAnItemItLogsAndGivesNothing)
{
    show(nullptr);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(m_widget->apply());
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find(": cdata is not defined."), std::string::npos) << log;
}

/// Shows its files in another kind of model.
class OtherModelWidget : public OCTScanLoadingWidget
{
public:
    using OCTScanLoadingWidget::OCTScanLoadingWidget;

protected:
    QAbstractItemModel* createModel() override { return new QStringListModel(this); }
};

TEST_F(ScanLoading, WithAnotherModelItLogsAndGivesNothing)
{
    OtherModelWidget widget(m_scan.data(), QString(), nullptr, {});
    testing::internal::CaptureStderr();
    EXPECT_FALSE(widget.apply());
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find(": Cannot cast model to QtDataPathModel."), std::string::npos) << log;
}

TEST_F(ScanLoading, HoldsTheItemWhileItWorksAndReleasesItOnEveryExit)
{
    const auto& scan = static_cast<const CountedScan&>(*m_scan);
    const int held = scan.held();
    int released = scan.released();
    EXPECT_FALSE(m_widget->apply());
    EXPECT_EQ(scan.held(), held);
    EXPECT_GT(scan.released(), released);
    choose(writeExport({{}}));
    released = scan.released();
    EXPECT_FALSE(applyWith(-1, QDialogButtonBox::Cancel));
    EXPECT_EQ(scan.held(), held);
    EXPECT_GT(scan.released(), released);
    EXPECT_TRUE(applyWith(-1));
    EXPECT_EQ(scan.held(), held);
}

TEST_F(ScanLoading, AFailedCopyIsShownAndTheScanPointsAtTheSource)
{
    const QString path = writeExport({{}});
    choose(path);
    ASSERT_TRUE(QFile::remove(m_source.filePath("b1.png")));
    DialogDriver dialogs;
    dialogs.expect(answer(-1, QDialogButtonBox::Ok));
    dialogs.expectMessageContaining(QStringLiteral("Copying File Error"),
                                    "Could not copy file " + m_source.filePath("b1.png") +
                                        " to new location ");
    EXPECT_TRUE(m_widget->apply());
    EXPECT_EQ(m_scan->getUri("OCTScanURI").path(), path);
}

TEST_F(ScanLoading, AStoreThatIsClosedIsShownAndTheScanPointsAtTheSource)
{
    const QString path = writeExport({{}});
    choose(path);
    DataIOManager::closeStore();
    DialogDriver dialogs;
    dialogs.expect(answer(-1, QDialogButtonBox::Ok));
    dialogs.expectMessageContaining(QStringLiteral("Error copying files"),
                                    QStringLiteral("Could not copy files. Reason: "));
    EXPECT_TRUE(m_widget->apply());
    EXPECT_EQ(m_scan->getUri("OCTScanURI").path(), path);
}

TEST_F(ScanLoading, PrintsWhatItDoes)
{
    choose(writeExport({{"1"}, {"2", "Section"}}));
    const TraceCapture trace;
    ASSERT_TRUE(applyWith(1));
    const QStringList lines = trace.lines();
    const QString xmlPath = m_scan->getUri("OCTScanURI").path();
    // One list for the whole file.
    EXPECT_EQ(lines.at(0), "got file list with 4");
    EXPECT_EQ(lines.at(1), "got file list with 8");
    EXPECT_EQ(lines.at(2), "binary file folder: " + m_source.path() + "/");
    EXPECT_TRUE(lines.contains("new xml file location: " + xmlPath));
    EXPECT_TRUE(
        lines.contains("calling setURI with: OCTScanURI - file++hra:" + xmlPath + "?seriesId=2"));
    EXPECT_EQ(lines.filter("calling setURI with: SliceImage").size(), 8);
}

TEST(ScanLoadingRegistration, GivesAWidgetForOCTScansUnderItsName)
{
    EXPECT_EQ(createOCTScanLoadingWidgetFactory(), 1);
    EXPECT_EQ(createOCTScanLoadingWidgetFactory(), 1);
    const DataFactory::Link link{QStringLiteral("OCTScan"), QStringLiteral("OCTScanLoadingWidget"),
                                 QStringLiteral("OCT Image"), 2, QString()};
    const DataPointer<OCTScan> scan(new OCTScan);
    QWidget parent;
    const QtDataConfigurationWidget* const widget =
        DataFactory::makeWidget(link, scan.data(), QStringLiteral("name"), &parent);
    ASSERT_TRUE(qobject_cast<const OCTScanLoadingWidget*>(widget));
    EXPECT_EQ(widget->parent(), &parent);
    EXPECT_EQ(widget->windowFlags() & Qt::WindowType_Mask, Qt::Widget);
}

TEST_F(ScanLoading, OffersXmlFilesOnly)
{
    DialogDriver dialogs;
    dialogs.expect([](QDialog& dialog) {
        const auto* const fileDialog = qobject_cast<QFileDialog*>(&dialog);
        ASSERT_TRUE(fileDialog);
        EXPECT_EQ(fileDialog->nameFilters(), QStringList{QStringLiteral("XML files (*.xml)")});
        EXPECT_EQ(fileDialog->fileMode(), QFileDialog::ExistingFile);
        dialog.reject();
    });
    QTest::mouseClick(m_widget->findChild<QToolButton*>(QStringLiteral("addFileButton")),
                      Qt::LeftButton);
}

} // namespace

} // namespace kelp::oct
