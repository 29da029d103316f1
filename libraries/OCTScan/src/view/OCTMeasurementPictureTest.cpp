#include "OCTMeasurementViewer.h"

#include "DialogDriver.h"
#include "MeasurementTestTools.h"
#include "Waiting.h"
#include "kelpSettings.h"

#include <QFileDialog>
#include <QTemporaryDir>

#include <gmock/gmock.h>

using namespace kelp::oct;
using namespace kelp::oct::test;
using testing::HasSubstr;

namespace {

constexpr char withoutGrid[] = "Save image without ETDRS";
constexpr char withGrid[] = "Save image with ETDRS";

class MeasurementPicture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_measured.addLayers();
        m_measured.segmentation->setFoveaPosition({CoordOnLocalizer(4.0, 4.0), true});
        m_viewer.resize(400, 400);
        m_viewer.show();
        ASSERT_TRUE(waiting::untilExposed(m_viewer));
        m_viewer.setOCT(m_measured.scan);
        m_viewer.setSegmentation(m_measured.segmentation);
        m_viewer.setTopLayerName(LayerNameILM::create());
        m_viewer.setBottomLayerName(LayerNameBM::create());
    }

    QString path(const char* name) const { return m_folder.filePath(QString::fromUtf8(name)); }

    void rightClick()
    {
        m_dialogs.rightClick(*m_viewer.viewport(), m_viewer.mapFromScene(4.0, 4.0));
    }

    void save(const char* entry, const QString& file)
    {
        m_dialogs.expectMenu(QString::fromUtf8(entry));
        m_dialogs.expectFileDialog(file);
        rightClick();
    }

    static bool hasBlue(const QImage& picture)
    {
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                const QColor color = picture.pixelColor(x, y);
                if (color.blue() > 200 && color.red() < 60 && color.green() < 60) {
                    return true;
                }
            }
        }
        return false;
    }

    QTemporaryDir m_folder;
    MeasuredScan m_measured;
    OCTMeasurementViewer m_viewer;
    DialogDriver m_dialogs;
};

TEST_F(MeasurementPicture, ShowsTheGridWhenItIsWanted)
{
    const kelp::oct::test::TraceCapture trace;
    save(withGrid, path("with.png"));
    const QImage picture(path("with.png"));
    ASSERT_FALSE(picture.isNull());
    EXPECT_TRUE(hasBlue(picture));
    EXPECT_EQ(picture.size(), QSize(768, 768));
    EXPECT_THAT(trace.text(), HasSubstr("with ETDRS\n"));
}

TEST_F(MeasurementPicture, LeavesTheGridOutAndOnTheScreenAllTheSame)
{
    m_viewer.setTransferFunction(kelp::ColorMaps::Gray);
    const kelp::oct::test::TraceCapture trace;
    save(withoutGrid, path("without.png"));
    const QImage picture(path("without.png"));
    ASSERT_FALSE(picture.isNull());
    EXPECT_FALSE(hasBlue(picture));
    EXPECT_EQ(picture.size(), QSize(768, 768));
    EXPECT_EQ(ellipsesOf(m_viewer, Qt::blue).size(), 3);
    EXPECT_EQ(visibleItems<QGraphicsLineItem>(m_viewer).size(), 4);
    EXPECT_THAT(trace.text(), HasSubstr("without ETDRS\n"));
}

TEST_F(MeasurementPicture, HasTheMapInBothForms)
{
    m_viewer.setTransferAlpha(1.0);
    m_viewer.setTransferFunction(kelp::ColorMaps::Temperature);
    for (const char* const entry : {withoutGrid, withGrid}) {
        save(entry, path("map.png"));
        const QImage picture(path("map.png"));
        ASSERT_FALSE(picture.isNull());
        // Millimetres to pixels: 96 a millimetre, the corner at -0.05 mm. The localizer is black.
        const auto at = [&picture](double x, double y) {
            return picture.pixelColor(static_cast<int>((x + 0.05) * 96.0),
                                      static_cast<int>((y + 0.05) * 96.0));
        };
        EXPECT_EQ(at(0.5, 0.5), QColor(Qt::black));
        EXPECT_GT(at(1.5, 1.5).lightness(), 20);
        QFile::remove(path("map.png"));
    }
}

TEST_F(MeasurementPicture, DoesNotShowTheHandle)
{
    const ViewerMouse mouse{m_viewer};
    mouse.move({4.0, 4.0});
    ASSERT_EQ(ellipsesOf(m_viewer, Qt::green).size(), 1);
    m_viewer.setTransferFunction(kelp::ColorMaps::Gray);
    save(withGrid, path("handle.png"));
    const QImage picture(path("handle.png"));
    ASSERT_FALSE(picture.isNull());
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QColor color = picture.pixelColor(x, y);
            ASSERT_FALSE(color.green() > 200 && color.red() < 100 && color.blue() < 100);
        }
    }
}

TEST_F(MeasurementPicture, IsWrittenInEachFormatOfferedAndAsPngWithoutAnEnding)
{
    for (const char* const name : {"a.png", "a.tif", "a.jpg", "a.jpeg", "plain"}) {
        save(withGrid, path(name));
        const QImage picture(path(name));
        EXPECT_EQ(picture.size(), QSize(768, 768)) << name;
    }
}

TEST_F(MeasurementPicture, AsksWithItsTitleFilterAndTheLastPath)
{
    kelp::Settings::set(QStringLiteral("lastScreenshotExportPath"), path("last.png"));
    m_dialogs.expectMenu(QString::fromUtf8(withGrid));
    m_dialogs.expect([this](QDialog& dialog) {
        auto* const files = qobject_cast<QFileDialog*>(&dialog);
        ASSERT_TRUE(files);
        EXPECT_EQ(files->windowTitle(), QStringLiteral("Save Image"));
        EXPECT_EQ(files->nameFilters(),
                  QStringList(QStringLiteral("Images (*.png *.tif *.jpg *.jpeg)")));
        EXPECT_EQ(files->selectedFiles(), QStringList(path("last.png")));
        files->reject();
    });
    rightClick();
    EXPECT_FALSE(QFile::exists(path("last.png")));
    EXPECT_EQ(kelp::Settings::get(QStringLiteral("lastScreenshotExportPath"), QString()),
              path("last.png"));
    save(withGrid, path("next.png"));
    EXPECT_EQ(kelp::Settings::get(QStringLiteral("lastScreenshotExportPath"), QString()),
              path("next.png"));
}

TEST_F(MeasurementPicture, TellsWhenItCannotBeWritten)
{
    for (const char* const name : {"picture.unknown", "picture.pdf"}) {
        m_dialogs.expectMenu(QString::fromUtf8(withoutGrid));
        m_dialogs.expectFileDialog(path(name));
        m_dialogs.expectMessage(QStringLiteral("Error saving the screenshot"),
                                QStringLiteral("The screenshot could not be saved!"));
        rightClick();
        EXPECT_FALSE(QFile::exists(path(name)));
        EXPECT_EQ(ellipsesOf(m_viewer, Qt::blue).size(), 3);
    }
}

TEST_F(MeasurementPicture, AsksBeforeItReplacesAFileAndLeavesAloneWhatIsNone)
{
    const QString device = path("device.png");
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/null"), device));
    m_dialogs.expectMenu(QString::fromUtf8(withGrid));
    m_dialogs.expectFileDialog(device);
    m_dialogs.expectMessageContaining(QStringLiteral("Save Image"),
                                      QStringLiteral("already exists"), QStringLiteral("Yes"));
    m_dialogs.expectMessage(QStringLiteral("Error saving the screenshot"),
                            QStringLiteral("The screenshot could not be saved!"));
    rightClick();
    EXPECT_EQ(QFileInfo(device).symLinkTarget(), QStringLiteral("/dev/null"));
}

} // namespace
