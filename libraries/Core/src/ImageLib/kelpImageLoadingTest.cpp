#include "ImageTestSupport.h"

#include "kelpImageTools.h"

#include <QImage>
#include <QImageWriter>
#include <QtEndian>

#include <random>

namespace {

using imagetest::makeTiff;
using imagetest::readFile;
using imagetest::valuesOf;
using imagetest::writeFile;

QImage greyPicture(int width, int height)
{
    QImage picture(width, height, QImage::Format_Grayscale8);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            picture.scanLine(y)[x] = static_cast<uchar>((x * 7 + y * 13) % 256);
        }
    }
    return picture;
}

class ImageLoading : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return m_directory.filePath(name); }

    QString save(const QImage& picture, const QString& name, const char* format) const
    {
        QImageWriter writer(path(name), format);
        EXPECT_TRUE(writer.write(picture)) << writer.errorString().toStdString();
        return path(name);
    }

    QTemporaryDir m_directory;
};

void expectGrey(const kelp::ImagePtr& image, const QImage& picture, int tolerance)
{
    ASSERT_FALSE(image.isNull());
    ASSERT_EQ(image->getPixelTypeId(), kelp::MonoUInt8);
    ASSERT_EQ(image->getDimensions(), (kelp::Vector3<int>{picture.width(), picture.height(), 1}));
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            ASSERT_NEAR(image->pixels<std::uint8_t>()[y * picture.width() + x],
                        picture.constScanLine(y)[x], tolerance)
                << x << ' ' << y;
        }
    }
}

TEST_F(ImageLoading, GreyOfEightBitsComesThroughEveryFormat)
{
    // An odd width, since rows of pictures are padded.
    const QImage picture = greyPicture(37, 21);
    expectGrey(kelp::ImageTools::loadImage(save(picture, "a.tif", "tiff")), picture, 0);
    expectGrey(kelp::ImageTools::loadImage(save(picture, "a.bmp", "bmp")), picture, 0);
    expectGrey(kelp::ImageTools::loadImage(save(picture, "a.png", "png")), picture, 0);
}

TEST_F(ImageLoading, JpegKeepsASmoothPictureWithinAFewLevels)
{
    QImage picture(64, 48, QImage::Format_Grayscale8);
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            picture.scanLine(y)[x] = static_cast<uchar>(2 * x + y);
        }
    }
    expectGrey(kelp::ImageTools::loadImage(save(picture, "a.jpg", "jpeg")), picture, 6);
}

TEST_F(ImageLoading, TheContentDecidesNotTheName)
{
    const QImage picture = greyPicture(9, 5);
    expectGrey(kelp::ImageTools::loadImage(save(picture, "picture.bmp", "png")), picture, 0);
}

TEST_F(ImageLoading, GreyTiffOfSixteenBitsKeepsThemAll)
{
    QByteArray pixels;
    for (const quint16 value : {0, 1, 255, 256, 4660, 65535}) {
        const quint16 littleEndian = qToLittleEndian(value);
        pixels.append(reinterpret_cast<const char*>(&littleEndian), 2);
    }
    writeFile(path("deep.tif"), makeTiff(3, 2, 16, pixels));
    const kelp::ImagePtr image = kelp::ImageTools::loadImage(path("deep.tif"));
    ASSERT_FALSE(image.isNull());
    ASSERT_EQ(image->getPixelTypeId(), kelp::MonoUInt16);
    EXPECT_EQ(valuesOf<std::uint16_t>(*image),
              (std::vector<std::uint16_t>{0, 1, 255, 256, 4660, 65535}));
}

TEST_F(ImageLoading, GreyPngOfSixteenBitsKeepsThemAll)
{
    QImage picture(2, 1, QImage::Format_Grayscale16);
    reinterpret_cast<quint16*>(picture.scanLine(0))[0] = 4660;
    reinterpret_cast<quint16*>(picture.scanLine(0))[1] = 65535;
    const kelp::ImagePtr image = kelp::ImageTools::loadImage(save(picture, "deep.png", "png"));
    ASSERT_FALSE(image.isNull());
    ASSERT_EQ(image->getPixelTypeId(), kelp::MonoUInt16);
    EXPECT_EQ(valuesOf<std::uint16_t>(*image), (std::vector<std::uint16_t>{4660, 65535}));
}

TEST_F(ImageLoading, GreyTiffOfEightBitsWrittenByHandIsGrey)
{
    writeFile(path("a.tif"), makeTiff(3, 2, 8, QByteArray("\x00\x01\x02\xfd\xfe\xff", 6)));
    const kelp::ImagePtr image = kelp::ImageTools::loadImage(path("a.tif"));
    ASSERT_FALSE(image.isNull());
    ASSERT_EQ(image->getPixelTypeId(), kelp::MonoUInt8);
    EXPECT_EQ(valuesOf<std::uint8_t>(*image), (std::vector<std::uint8_t>{0, 1, 2, 253, 254, 255}));
}

TEST_F(ImageLoading, AGreyColorTableIsResolvedEvenOutOfOrder)
{
    QImage picture(3, 1, QImage::Format_Indexed8);
    picture.setColorTable(
        {qRgb(200, 200, 200), qRgb(10, 10, 10), qRgb(90, 90, 90), qRgb(255, 0, 0)});
    for (int x = 0; x < 3; ++x) {
        picture.scanLine(0)[x] = static_cast<uchar>(x);
    }
    for (const char* const format : {"bmp", "png", "tiff"}) {
        const kelp::ImagePtr image = kelp::ImageTools::loadImage(save(picture, "indexed", format));
        ASSERT_FALSE(image.isNull()) << format;
        ASSERT_EQ(image->getPixelTypeId(), kelp::MonoUInt8) << format;
        EXPECT_EQ(valuesOf<std::uint8_t>(*image), (std::vector<std::uint8_t>{200, 10, 90}))
            << format;
    }
}

TEST_F(ImageLoading, ThreeEqualChannelsAreGrey)
{
    const QImage picture = greyPicture(8, 8);
    for (const char* const format : {"bmp", "png", "tiff"}) {
        expectGrey(kelp::ImageTools::loadImage(
                       save(picture.convertToFormat(QImage::Format_RGB32), "rgb", format)),
                   picture, 0);
    }
}

TEST_F(ImageLoading, RealColorBecomesColor)
{
    QImage picture(2, 1, QImage::Format_RGB32);
    picture.setPixel(0, 0, qRgb(1, 2, 3));
    picture.setPixel(1, 0, qRgb(250, 128, 7));
    for (const char* const format : {"bmp", "png", "tiff"}) {
        const kelp::ImagePtr image = kelp::ImageTools::loadImage(save(picture, "color", format));
        ASSERT_FALSE(image.isNull()) << format;
        ASSERT_EQ(image->getPixelTypeId(), kelp::ColorRGBA8) << format;
        const unsigned char* const channels = image->pixels<unsigned char>();
        EXPECT_EQ(std::vector<int>(channels, channels + 8),
                  (std::vector<int>{1, 2, 3, 255, 250, 128, 7, 255}))
            << format;
    }
}

TEST_F(ImageLoading, BlackAndWhiteBecomesGrey)
{
    QImage picture(9, 2, QImage::Format_Mono);
    picture.fill(0);
    picture.setPixel(8, 1, 1);
    const kelp::ImagePtr image = kelp::ImageTools::loadImage(save(picture, "bits.png", "png"));
    ASSERT_FALSE(image.isNull());
    ASSERT_EQ(image->getPixelTypeId(), kelp::MonoUInt8);
    std::vector<std::uint8_t> expected(18, 0);
    expected[17] = 255;
    EXPECT_EQ(valuesOf<std::uint8_t>(*image), expected);
}

TEST_F(ImageLoading, WhatIsNoImageGivesNull)
{
    EXPECT_TRUE(kelp::ImageTools::loadImage(QString()).isNull());
    EXPECT_TRUE(kelp::ImageTools::loadImage(path("missing.tif")).isNull());
    EXPECT_TRUE(kelp::ImageTools::loadImage(m_directory.path()).isNull());
    writeFile(path("empty.tif"), QByteArray());
    EXPECT_TRUE(kelp::ImageTools::loadImage(path("empty.tif")).isNull());
    writeFile(path("text.tif"), "<html>404</html>");
    EXPECT_TRUE(kelp::ImageTools::loadImage(path("text.tif")).isNull());
}

TEST_F(ImageLoading, AFileCutAnywhereGivesNullOrTheWholePicture)
{
    const QImage picture = greyPicture(40, 30);
    for (const char* const format : {"tiff", "bmp", "png", "jpeg"}) {
        const QString whole = save(picture, "whole", format);
        const QByteArray content = readFile(whole);
        const kelp::ImagePtr expected = kelp::ImageTools::loadImage(whole);
        ASSERT_FALSE(expected.isNull());
        int refused = 0;
        for (int length = 0; length < content.size(); length += 11) {
            writeFile(path("cut"), content.left(length));
            const kelp::ImagePtr image = kelp::ImageTools::loadImage(path("cut"));
            if (image.isNull()) {
                ++refused;
                continue;
            }
            // Closing bytes that carry no pixel may be missing.
            ASSERT_EQ(valuesOf<std::uint8_t>(*image), valuesOf<std::uint8_t>(*expected))
                << format << " cut to " << length << " of " << content.size();
        }
        EXPECT_GT(refused, content.size() / 11 * 9 / 10) << format;
    }
}

TEST_F(ImageLoading, DamagedBytesNeverCrash)
{
    const QImage picture = greyPicture(24, 16);
    std::mt19937 random(7);
    for (const char* const format : {"tiff", "bmp", "png", "jpeg"}) {
        const QByteArray content = readFile(save(picture, "whole", format));
        std::uniform_int_distribution<int> anyPosition(0, content.size() - 1);
        std::uniform_int_distribution<int> anyByte(0, 255);
        for (int round = 0; round < 150; ++round) {
            QByteArray damaged = content;
            for (int k = 0; k < 1 + round % 4; ++k) {
                damaged[anyPosition(random)] = static_cast<char>(anyByte(random));
            }
            writeFile(path("damaged"), damaged);
            const kelp::ImagePtr image = kelp::ImageTools::loadImage(path("damaged"));
            if (!image.isNull()) {
                ASSERT_LE(image->getNumberOfPixels(), 64u * 1024u * 1024u);
            }
        }
    }
}

TEST_F(ImageLoading, AHeaderThatAsksForAllMemoryGivesNull)
{
    writeFile(path("huge.tif"), makeTiff(60000, 60000, 8, QByteArray(100, 'x')));
    EXPECT_TRUE(kelp::ImageTools::loadImage(path("huge.tif")).isNull());
    QByteArray bitmap = readFile(save(greyPicture(4, 4), "small.bmp", "bmp"));
    const QByteArray fiftyThousand("\x50\xc3\0\0", 4);
    bitmap.replace(18, 4, fiftyThousand).replace(22, 4, fiftyThousand);
    writeFile(path("huge.bmp"), bitmap);
    EXPECT_TRUE(kelp::ImageTools::loadImage(path("huge.bmp")).isNull());
}

} // namespace
