#include "Pictures.h"
#include "CommandFixture.h"
#include "HeidelbergExport.h"
#include "OCTDecoderHeidelbergXML.h"
#include "kelpException.h"

#include <QDir>
#include <QGuiApplication>

#include <cmath>
#include <memory>

using namespace kelp::command;
using kelp::oct::LayerNameBM;
using kelp::oct::LayerNameILM;
using kelp::oct::LayerNamePtr;

namespace {

constexpr int ilmRow = 60;
constexpr int bmRow = 140;

bool isNear(const QColor& a, const QColor& b)
{
    constexpr int tolerance = 40;
    return std::abs(a.red() - b.red()) < tolerance && std::abs(a.green() - b.green()) < tolerance &&
           std::abs(a.blue() - b.blue()) < tolerance;
}

int pixelsNear(const QImage& picture, const QColor& color)
{
    int pixels = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            pixels += isNear(picture.pixelColor(x, y), color) ? 1 : 0;
        }
    }
    return pixels;
}

class Pictures : public kelp::command::test::CommandFixture
{
protected:
    static void SetUpTestSuite()
    {
        // Without an application there are no fonts.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "PicturesTest";
        static char* argv[] = {name, nullptr};
        m_application = std::make_unique<QGuiApplication>(argc, argv);
    }
    static void TearDownTestSuite() { m_application.reset(); }

    /// Two flat surfaces on a small phantom.
    OCTScanSegPtr segmentation(const kelp::phantom::Options& options = smallScan())
    {
        createOCTDecoderHeidelbergXMLFactory();
        const auto phantom = kelp::phantom::writeExport(path("in"), options);
        const OCTScanPtr scan = kelp::oct::makeScan(phantom.xmlPath, phantom.seriesId, {});
        scan->doBinLoad();
        OCTScanSegPtr result(new kelp::oct::OCTScanSegmentation(scan));
        setSurface(result, LayerNameILM::create(), ilmRow);
        setSurface(result, LayerNameBM::create(), bmRow);
        return result;
    }

    static void setSurface(const OCTScanSegPtr& target, const LayerNamePtr& name, int row)
    {
        const auto size = target->getOCT()->getVolumeSize();
        const auto layer = kelp::oct::VolumeLayerPtr::create(static_cast<unsigned>(size.z),
                                                             static_cast<unsigned>(size.x));
        std::fill(layer->begin(), layer->end(), static_cast<unsigned short>(row));
        target->setVolumeLayer(layer, name);
    }

    static QList<LayerNamePtr> layers() { return {LayerNameILM::create(), LayerNameBM::create()}; }

private:
    static inline std::unique_ptr<QGuiApplication> m_application;
};

TEST_F(Pictures, ShowBScansAtTrueProportionsWithoutLosingPixels)
{
    const auto seg = segmentation();
    const QImage picture = renderBScan(seg, 2, layers());
    const Vector2d spacing = seg->getOCT()->getSliceSpacing();
    ASSERT_GT(spacing.x, spacing.y);
    EXPECT_EQ(picture.height(), 200);
    EXPECT_EQ(picture.width(), std::lround(64 * spacing.x / spacing.y));
}

TEST_F(Pictures, DrawSurfacesInTheirColours)
{
    const auto seg = segmentation();
    const QImage picture = renderBScan(seg, 2, layers());
    for (int x = 5; x < picture.width(); x += 17) {
        EXPECT_TRUE(isNear(picture.pixelColor(x, ilmRow), LayerNameILM::create()->getColor())) << x;
        EXPECT_TRUE(isNear(picture.pixelColor(x, bmRow), LayerNameBM::create()->getColor())) << x;
        EXPECT_FALSE(isNear(picture.pixelColor(x, bmRow + 4), LayerNameBM::create()->getColor()));
    }
}

TEST_F(Pictures, NameSurfacesThatWereNotFoundInsteadOfDrawingThem)
{
    const auto seg = segmentation();
    const QImage all = renderBScan(seg, 2, layers());
    const QImage picture = renderBScan(seg, 2, layers(), {"BM"});
    const QColor ilm = LayerNameILM::create()->getColor();
    const QColor bm = LayerNameBM::create()->getColor();
    for (int x = 5; x < picture.width(); x += 17) {
        EXPECT_TRUE(isNear(picture.pixelColor(x, ilmRow), ilm)) << x;
        EXPECT_FALSE(isNear(picture.pixelColor(x, bmRow), bm)) << x;
    }
    // The legend says more than before, in the same colour.
    EXPECT_GT(pixelsNear(picture.copy(0, 0, picture.width(), 24), bm),
              2 * pixelsNear(all.copy(0, 0, all.width(), 24), bm));
}

TEST_F(Pictures, DarkenMaskedAScansAndDrawNothingThere)
{
    const auto seg = segmentation();
    const QImage before = renderBScan(seg, 2, {});
    const auto scan = seg->getOCT();
    const Vector2d from = scan->getBScan(2)->getAScanPosition(20);
    const Vector2d to = scan->getBScan(2)->getAScanPosition(40);
    seg->getMask()->addPolygon(QRectF(from.x, from.y - 9.0, to.x - from.x, 18.0));
    const QImage after = renderBScan(seg, 2, layers());
    const double stretch = static_cast<double>(after.width()) / 64.0;
    const int masked = static_cast<int>(30 * stretch);
    EXPECT_FALSE(isNear(after.pixelColor(masked, ilmRow), LayerNameILM::create()->getColor()));
    const int bright = 100;
    EXPECT_LT(after.pixelColor(masked, bright).lightness(),
              before.pixelColor(masked, bright).lightness());
    EXPECT_TRUE(isNear(after.pixelColor(static_cast<int>(5 * stretch), ilmRow),
                       LayerNameILM::create()->getColor()));
}

TEST_F(Pictures, PutTheThicknessMapWhereTheScanIs)
{
    const auto seg = segmentation();
    const auto scan = seg->getOCT();
    const QImage picture = renderEnface(seg);
    const auto localizer = scan->getLocalizer();
    const double scale =
        picture.width() / (localizer->getImage()->getColumns() * localizer->getSpacing().x);
    const auto colourAt = [&](const Vector2d& position) {
        return picture.pixelColor(static_cast<int>(position.x * scale),
                                  static_cast<int>(position.y * scale));
    };
    // Away from the lines of scans and grid the ground is grey outside the map and coloured inside.
    const Vector2d inside =
        0.5 * (scan->getBScan(0)->getAScanPosition(8) + scan->getBScan(1)->getAScanPosition(8));
    EXPECT_GT(colourAt(inside).hsvSaturation(), 60);
    const Vector2d first = scan->getBScan(0)->getAScanPosition(8);
    // The map ends half a distance of B-scans beyond the first.
    const Vector2d outwards = first - scan->getBScan(1)->getAScanPosition(8);
    EXPECT_GT(colourAt(first + 0.3 * outwards).hsvSaturation(), 60);
    EXPECT_LT(colourAt(first + 0.7 * outwards).hsvSaturation(), 10);
}

TEST_F(Pictures, ShowANoteInsteadOfAMapOfSurfacesThatWereNotFound)
{
    const auto seg = segmentation();
    const auto scan = seg->getOCT();
    const QImage whole = renderEnface(seg, {"GCL"});
    const auto localizer = scan->getLocalizer();
    const double scale =
        whole.width() / (localizer->getImage()->getColumns() * localizer->getSpacing().x);
    const Vector2d inside =
        0.5 * (scan->getBScan(0)->getAScanPosition(8) + scan->getBScan(1)->getAScanPosition(8));
    const QPoint place(static_cast<int>(inside.x * scale), static_cast<int>(inside.y * scale));
    EXPECT_GT(whole.pixelColor(place).hsvSaturation(), 60) << "the map needs ILM and BM only";
    // The line above the one that explains the star.
    const QPoint note(100, whole.height() - 46);
    EXPECT_GT(whole.pixelColor(note).lightness(), 80);
    for (const char* surface : {"ILM", "BM"}) {
        const QImage picture = renderEnface(seg, {"GCL", surface});
        EXPECT_LT(picture.pixelColor(place).hsvSaturation(), 10) << surface;
        EXPECT_LT(picture.pixelColor(note).lightness(), 80) << surface;
    }
}

TEST_F(Pictures, DrawTheGridAroundTheFovea)
{
    const auto seg = segmentation();
    const Vector2d center = seg->getOCT()->getCenter();
    const QImage picture = renderEnface(seg);
    const auto localizer = seg->getOCT()->getLocalizer();
    const double scale =
        picture.width() / (localizer->getImage()->getColumns() * localizer->getSpacing().x);
    const QPoint onCircle(static_cast<int>((center.x + 0.5) * scale),
                          static_cast<int>(center.y * scale));
    EXPECT_GT(picture.pixelColor(onCircle).blue(), picture.pixelColor(onCircle).red() + 100);
}

TEST_F(Pictures, ShowTheLineOfASectionAndNoMap)
{
    auto options = smallScan();
    options.pattern = kelp::phantom::Pattern::Section;
    const auto seg = segmentation(options);
    const QImage picture = renderEnface(seg);
    const auto localizer = seg->getOCT()->getLocalizer();
    const double scale =
        picture.width() / (localizer->getImage()->getColumns() * localizer->getSpacing().x);
    const Vector2d middle = seg->getOCT()->getBScan(0)->getAScanPosition(32);
    const QColor line =
        picture.pixelColor(static_cast<int>(middle.x * scale), static_cast<int>(middle.y * scale));
    EXPECT_GT(line.green(), line.red() + 60);
    const QColor beside = picture.pixelColor(static_cast<int>(middle.x * scale),
                                             static_cast<int>(middle.y * scale) + 20);
    EXPECT_LT(beside.hsvSaturation(), 10);
}

TEST_F(Pictures, SayWhichFileCouldNotBeWritten)
{
    const auto seg = segmentation();
    write("pictures", "a file in the way");
    try {
        writePictures(seg, {}, path("."), [](int, int) {});
        FAIL();
    } catch (const kelp::IOFailure& failure) {
        EXPECT_TRUE(QString(failure.what()).contains("pictures")) << failure.what();
    }
}

} // namespace
