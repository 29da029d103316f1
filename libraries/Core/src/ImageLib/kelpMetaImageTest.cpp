#include "ImageTestSupport.h"

#include "kelpException.h"
#include "kelpImageTools.h"

#include <QFileInfo>

#include <cmath>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

namespace {

using imagetest::makeImage;

/// A reader of the format made after its description, with nothing of the writer in it.
struct MetaFile
{
    std::map<std::string, std::string> header;
    std::vector<std::string> order;
    std::vector<unsigned char> bytes;

    explicit MetaFile(const QString& path)
    {
        std::ifstream file(path.toStdString(), std::ios::binary);
        std::string line;
        while (std::getline(file, line)) {
            const std::size_t equals = line.find(" = ");
            const std::string key = line.substr(0, equals);
            header[key] = line.substr(equals + 3);
            order.push_back(key);
            if (key == "ElementDataFile") {
                break;
            }
        }
        bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    template <typename T>
    std::vector<T> numbers(const std::string& key) const
    {
        std::istringstream text(header.at(key));
        std::vector<T> values;
        for (T value; text >> value;) {
            values.push_back(value);
        }
        return values;
    }
};

TEST(MetaImage, HasTheHeaderThatReadersExpectAndThePixelsBehindIt)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("oct.mha");
    const kelp::ImagePtr image = makeImage<std::uint8_t>(kelp::MonoUInt8, {3, 2, 2},
                                                         {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 255});
    kelp::ImageTools::storeMetaImage(image, path);
    const MetaFile file(path);
    EXPECT_EQ(file.order.front(), "ObjectType");
    EXPECT_EQ(file.order.back(), "ElementDataFile");
    EXPECT_EQ(file.header.at("ObjectType"), "Image");
    EXPECT_EQ(file.header.at("NDims"), "3");
    EXPECT_EQ(file.header.at("BinaryData"), "True");
    EXPECT_EQ(file.header.at("BinaryDataByteOrderMSB"), "False");
    EXPECT_EQ(file.header.at("CompressedData"), "False");
    EXPECT_EQ(file.header.at("ElementType"), "MET_UCHAR");
    EXPECT_EQ(file.header.at("ElementDataFile"), "LOCAL");
    EXPECT_EQ(file.header.count("ElementNumberOfChannels"), 0u);
    EXPECT_EQ(file.numbers<int>("DimSize"), (std::vector<int>{3, 2, 2}));
    EXPECT_EQ(file.bytes, imagetest::valuesOf<unsigned char>(*image));
}

TEST(MetaImage, NamesEveryPixelTypeAndWritesItLittleEndian)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("a.mha");
    const std::map<int, std::string> names{
        {kelp::MonoUInt8, "MET_UCHAR"}, {kelp::MonoInt8, "MET_CHAR"},
        {kelp::MonoUInt32, "MET_UINT"}, {kelp::MonoInt32, "MET_INT"},
        {kelp::MonoFloat, "MET_FLOAT"}, {kelp::MonoUInt16, "MET_USHORT"}};
    for (const auto& [pixelTypeId, name] : names) {
        const kelp::ImagePtr image =
            makeImage<std::uint8_t>(kelp::MonoUInt8, {2, 1, 1}, {1, 2})->convertTo(pixelTypeId);
        kelp::ImageTools::storeMetaImage(image, path);
        const MetaFile file(path);
        EXPECT_EQ(file.header.at("ElementType"), name);
        EXPECT_EQ(file.bytes.size(), 2 * kelp::bytesPerPixel(pixelTypeId));
    }
    kelp::ImageTools::storeMetaImage(
        makeImage<std::uint16_t>(kelp::MonoUInt16, {2, 1, 1}, {0x1234, 0xfffe}), path);
    EXPECT_EQ(MetaFile(path).bytes, (std::vector<unsigned char>{0x34, 0x12, 0xfe, 0xff}));
    kelp::ImageTools::storeMetaImage(makeImage<float>(kelp::MonoFloat, {1, 1, 1}, {1.0f}), path);
    EXPECT_EQ(MetaFile(path).bytes, (std::vector<unsigned char>{0, 0, 0x80, 0x3f}));
}

TEST(MetaImage, ColorHasFourChannels)
{
    const QTemporaryDir directory;
    const kelp::ImagePtr image = kelp::Image::create(kelp::ColorRGBA8, {1, 1, 1});
    const std::vector<unsigned char> channels{1, 2, 3, 4};
    std::copy(channels.begin(), channels.end(), image->pixels<unsigned char>());
    kelp::ImageTools::storeMetaImage(image, directory.filePath("a.mha"));
    const MetaFile file(directory.filePath("a.mha"));
    EXPECT_EQ(file.header.at("ElementNumberOfChannels"), "4");
    EXPECT_EQ(file.header.at("ElementType"), "MET_UCHAR");
    EXPECT_EQ(file.bytes, channels);
}

TEST(MetaImage, SpacingReadsBackToTheLastBit)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("a.mha");
    for (const double spacing : {0.1, 1.0 / 3.0, 0.003872, 5.86e-3, 1e-300, 123456789.125}) {
        kelp::ImageTools::storeMetaImage(
            kelp::Image::create(kelp::MonoUInt8, {1, 1, 1}, {spacing, spacing * 3.0, 1.0}), path);
        EXPECT_EQ(MetaFile(path).numbers<double>("ElementSpacing"),
                  (std::vector<double>{spacing, spacing * 3.0, 1.0}));
    }
}

TEST(MetaImage, AnEmptyVolumeHasAHeaderOnly)
{
    const QTemporaryDir directory;
    kelp::ImageTools::storeMetaImage(kelp::Image::create(kelp::MonoUInt8, {4, 0, 1}),
                                     directory.filePath("a.mha"));
    const MetaFile file(directory.filePath("a.mha"));
    EXPECT_EQ(file.numbers<int>("DimSize"), (std::vector<int>{4, 0, 1}));
    EXPECT_TRUE(file.bytes.empty());
}

TEST(MetaImage, FailuresNameTheFileAndLeaveNothing)
{
    const QTemporaryDir directory;
    imagetest::writeFile(directory.filePath("file"), "x");
    const QString path = directory.filePath("file/oct.mha");
    const kelp::ImagePtr image = kelp::Image::create(kelp::MonoUInt8, {1, 1, 1});
    try {
        kelp::ImageTools::storeMetaImage(image, path);
        FAIL() << "no exception";
    } catch (const kelp::IOFailure& failure) {
        EXPECT_TRUE(failure.getMessage().contains(path));
        EXPECT_TRUE(failure.getMessage().contains("Not a directory"));
    }
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"file"});
    EXPECT_THROW(kelp::ImageTools::storeMetaImage({}, directory.filePath("a.mha")),
                 kelp::Assertion);
}

} // namespace
