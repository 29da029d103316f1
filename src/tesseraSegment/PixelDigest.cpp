#include "PixelDigest.h"

#include "ParallelFor.h"
#include "kelpImage.h"

#include <QCryptographicHash>

#include <vector>

namespace kelp::command {

namespace {

constexpr auto algorithm = QCryptographicHash::Sha1;

QByteArray sizeLine(int columns, int rows, int pixelTypeId)
{
    return QString("%1 %2 %3\n").arg(columns).arg(rows).arg(pixelTypeId).toLatin1();
}

QByteArray digestOf(const kelp::Image& image)
{
    QCryptographicHash hash(algorithm);
    hash.addData(sizeLine(image.getColumns(), image.getRows(), image.getPixelTypeId()));
    const std::size_t rowBytes =
        static_cast<std::size_t>(image.getColumns()) * kelp::bytesPerPixel(image.getPixelTypeId());
    const char* row = image.pixels<char>();
    for (int i = 0; i < image.getRows(); ++i, row += rowBytes) {
        hash.addData(row, static_cast<int>(rowBytes));
    }
    return hash.result();
}

} // namespace

QString pixelDigest(const OCTScan& scan)
{
    const QList<kelp::ConstImagePtr> images = scan.getBScanImagesConst();
    std::vector<QByteArray> digests(static_cast<std::size_t>(images.size()));
    kelp::parallelFor(images.size(), [&](int i) {
        digests[static_cast<std::size_t>(i)] = digestOf(*images.at(i));
    });
    QCryptographicHash hash(algorithm);
    for (const QByteArray& digest : digests) {
        hash.addData(digest);
    }
    return "sha1:" + QString::fromLatin1(hash.result().toHex());
}

} // namespace kelp::command
