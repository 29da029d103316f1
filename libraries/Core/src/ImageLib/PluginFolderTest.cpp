#include "ImageTestSupport.h"

#include "kelpImageTools.h"

#include <QCoreApplication>
#include <QImage>

namespace {

// The application looks for Qt's plug-ins in the folder beside its executable only.
TEST(PluginFolder, HoldsWhatReadsTiffAndJpeg)
{
    const QTemporaryDir directory;
    const QString tiff = directory.filePath("a.tif");
    const QString jpeg = directory.filePath("a.jpg");
    imagetest::writeFile(tiff, imagetest::makeTiff(2, 1, 8, QByteArray("\x05\x06", 2)));

    QCoreApplication::setLibraryPaths({directory.path()});
    EXPECT_TRUE(kelp::ImageTools::loadImage(tiff).isNull()) << "read without its plug-in";

    QCoreApplication::setLibraryPaths({QStringLiteral(TESSERA_PLUGIN_FOLDER)});
    const kelp::ImagePtr fromTiff = kelp::ImageTools::loadImage(tiff);
    ASSERT_FALSE(fromTiff.isNull());
    EXPECT_EQ(imagetest::valuesOf<std::uint8_t>(*fromTiff), (std::vector<std::uint8_t>{5, 6}));

    QImage picture(16, 8, QImage::Format_Grayscale8);
    picture.fill(77);
    ASSERT_TRUE(picture.save(jpeg, "JPEG"));
    const kelp::ImagePtr fromJpeg = kelp::ImageTools::loadImage(jpeg);
    ASSERT_FALSE(fromJpeg.isNull());
    EXPECT_EQ(fromJpeg->getDimensions(), (kelp::Vector3<int>{16, 8, 1}));
    EXPECT_NEAR(fromJpeg->pixels<std::uint8_t>()[0], 77, 1);
}

} // namespace
