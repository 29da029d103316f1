#include "ApplicationAssembly.h"

#include "AppBase.h"
#include "DataFactory.h"
#include "DataPointer.h"
#include "DataTreeIO.h"
#include "FileIO.h"
#include "OCTDecoder.h"
#include "OCTScan.h"
#include "OCTScanLoadingWidget.h"
#include "kelpTrace.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QTabWidget>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sstream>

namespace {

/// A creator that nobody should ever get to.
class Impostor : public CaFactory<Data>::Factory
{
public:
    Data* createInstance() const override { return nullptr; }
};

TEST(StaticInitialisation, ScansAndSegmentationsCanBeMadeBeforeTheEntryRuns)
{
    for (const char* const name : {"OCTScan", "OCTScanSegmentation"}) {
        const DataPointer<Data> made(Data::getFactory().create(QString::fromLatin1(name)));
        ASSERT_TRUE(made) << name;
        EXPECT_TRUE(made->isA(name));
    }
    EXPECT_EQ(QMetaType::type("OCTScanPtr"), qMetaTypeId<OCTScanPtr>());
}

TEST(StaticInitialisation, LeavesTheEntryNoScanFactoryToMake)
{
    EXPECT_EQ(createOCTScanFactory(), 1);
    EXPECT_FALSE(Data::getFactory().registerFactory(QStringLiteral("OCTScan"),
                                                    std::make_shared<const Impostor>()));
    kelp::oct::registerFactories();
    const DataPointer<Data> made(Data::getFactory().create(QStringLiteral("OCTScan")));
    EXPECT_TRUE(made);
}

TEST(RegisterFactories, MakesDecoderFilesAndStoredTreesKnown)
{
    kelp::oct::registerFactories();
    const std::unique_ptr<OCTDecoder> decoder(OCTDecoder::getOCTDecoder(QStringLiteral("hra")));
    EXPECT_TRUE(decoder);
    const std::unique_ptr<DataTreeIO> tree(DataTreeIO::getFactory().create(QStringLiteral("xml")));
    EXPECT_TRUE(tree);
    const std::unique_ptr<FileIO> files(FileIO::getFactory().create(QStringLiteral("file")));
    EXPECT_TRUE(files);
}

TEST(RegisterFactories, OffersScansAsOCTImagesHoweverOftenItRuns)
{
    kelp::oct::registerFactories();
    kelp::oct::registerFactories();
    ASSERT_EQ(DataFactory::links().size(), 1);
    const DataFactory::Link& link = DataFactory::links().first();
    EXPECT_EQ(link.className, QStringLiteral("OCTScan"));
    EXPECT_EQ(link.widgetName, QStringLiteral("OCTScanLoadingWidget"));
    EXPECT_EQ(link.label, QStringLiteral("OCT Image"));
    EXPECT_EQ(link.flags, 2);
    EXPECT_EQ(link.extra, QString());

    QWidget dialog;
    const DataPointer<OCTScan> scan(new OCTScan);
    EXPECT_TRUE(qobject_cast<OCTScanLoadingWidget*>(
        DataFactory::makeWidget(link, scan.data(), QStringLiteral("scan"), &dialog)));
}

class Assembly : public ::testing::Test
{
protected:
    void SetUp() override
    {
        kelp::oct::registerFactories();
        m_app = std::make_unique<AppBase>(m_argumentCount, nullptr, nullptr, false, false);
        kelp::Trace::redirect(&m_traced);
        kelp::oct::assembleApplication(*m_app);
        kelp::Trace::redirect(nullptr);
    }

    static QStringList tabs()
    {
        QStringList names;
        const auto* const widget = AppBase::getMainForm()->findChild<QTabWidget*>();
        for (int index = 0; index < widget->count(); ++index) {
            names.append(widget->tabText(index));
        }
        return names;
    }

    int m_argumentCount = 0;
    std::ostringstream m_traced;
    std::unique_ptr<AppBase> m_app;
};

TEST_F(Assembly, TheOnlyLibraryPathIsBesideTheProgramEvenWhereItIsMissingAndIsPrinted)
{
    const QString path = QCoreApplication::applicationDirPath() + QStringLiteral("/plugins");
    ASSERT_FALSE(QFileInfo::exists(path));
    EXPECT_EQ(QCoreApplication::libraryPaths(), QStringList{path});
    const std::string expected =
        "====================configured plugin lib paths:==========================\n" +
        path.toStdString() +
        "\n==========================================================================\n"
        "done setting icon\n";
    EXPECT_EQ(m_traced.str().substr(0, expected.size()), expected);
}

TEST_F(Assembly, TheApplicationHasItsNameAndIcon)
{
    EXPECT_EQ(QApplication::applicationName(), QStringLiteral("Tessera App"));
    EXPECT_EQ(QApplication::applicationDisplayName(), QStringLiteral("Tessera App"));
    EXPECT_EQ(AppBase::getMainForm()->windowTitle(), QStringLiteral("Tessera App[*]"));
    EXPECT_EQ(QApplication::windowIcon().availableSizes(), QList<QSize>{QSize(48, 48)});
    EXPECT_TRUE(QFile::exists(QStringLiteral(":/icon/tessera.ico")));
}

TEST_F(Assembly, TheTabsStandInTheirOrder)
{
    EXPECT_EQ(
        tabs(),
        (QStringList{QStringLiteral("Patient Manager"), QStringLiteral("OCT Auto-Segmentation"),
                     QStringLiteral("OCT Manual Segmentation"), QStringLiteral("OCT Measurement"),
                     QStringLiteral("OCT Batch Processing"), QStringLiteral("OCT Help")}));
}

TEST_F(Assembly, HelpCanBeCalledWithItsKey)
{
    const auto* const help =
        AppBase::getMainForm()->findChild<QAction*>(QStringLiteral("helpAction"));
    ASSERT_TRUE(help);
    EXPECT_TRUE(help->isEnabled());
    EXPECT_EQ(help->shortcut(), QKeySequence(Qt::Key_F1));
}

} // namespace
