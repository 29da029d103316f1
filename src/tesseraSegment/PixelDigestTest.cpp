#include "PixelDigest.h"

#include "CommandFixture.h"
#include "HeidelbergExport.h"
#include "OCTDecoderHeidelbergXML.h"
#include "kelpImage.h"

#include <functional>

using kelp::command::pixelDigest;

namespace {

class PixelDigest : public kelp::command::test::CommandFixture
{
protected:
    OCTScanPtr load(const QString& folder, const kelp::phantom::Options& options) const
    {
        createOCTDecoderHeidelbergXMLFactory();
        const auto written = kelp::phantom::writeExport(path(folder), options);
        OCTScanPtr scan = kelp::oct::makeScan(written.xmlPath, written.seriesId, {});
        scan->ensureLoaded();
        return scan;
    }
};

TEST_F(PixelDigest, IsTheSameWhereverAndInWhateverFormatTheFilesAre)
{
    auto options = smallScan();
    const QString digest = pixelDigest(*load("tif", options));
    EXPECT_TRUE(digest.startsWith("sha1:"));
    EXPECT_EQ(digest.size(), 5 + 40);
    options.imageFormat = "png";
    EXPECT_EQ(pixelDigest(*load("elsewhere/png", options)), digest);
}

TEST_F(PixelDigest, IsAnotherForAnotherAcquisition)
{
    const QString digest = pixelDigest(*load("one", smallScan()));
    const std::function<void(kelp::phantom::Options&)> changes[] = {
        [](auto& options) { options.seed = 2; },
        [](auto& options) { options.bScans = 4; },
        [](auto& options) { options.aScans = 63; },
        [](auto& options) { options.rightEye = false; },
    };
    int number = 0;
    for (const auto& change : changes) {
        auto options = smallScan();
        change(options);
        EXPECT_NE(pixelDigest(*load(QString::number(number), options)), digest) << number;
        ++number;
    }
}

TEST_F(PixelDigest, SeesEveryPixelAndTheOrderOfTheBScans)
{
    const OCTScanPtr scan = load("one", smallScan());
    const QString digest = pixelDigest(*scan);
    const auto images = scan->getBScanImages();
    const int last = images[4]->getColumns() * images[4]->getRows() - 1;
    for (const int pixel : {0, last}) {
        images[4]->pixels<unsigned char>()[pixel] ^= 1U;
        EXPECT_NE(pixelDigest(*scan), digest) << pixel;
        images[4]->pixels<unsigned char>()[pixel] ^= 1U;
    }
    EXPECT_EQ(pixelDigest(*scan), digest);
    std::swap_ranges(images[0]->pixels<unsigned char>(),
                     images[0]->pixels<unsigned char>() + last + 1,
                     images[1]->pixels<unsigned char>());
    EXPECT_NE(pixelDigest(*scan), digest);
}

} // namespace
