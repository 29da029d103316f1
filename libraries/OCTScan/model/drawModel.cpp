// Draws the trained model of the macula into the PNG file that is named as the only argument.

#include "MacularModel.h"
#include "ModelPicture.h"

#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QImageWriter>

#include <algorithm>
#include <cstdio>

namespace {

/// With a table of the most frequent colours, which makes a third of the file.
QImage withColourTable(const QImage& picture)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            ++counts[picture.pixel(x, y)];
        }
    }
    QVector<QRgb> colours = counts.keys().toVector();
    std::sort(colours.begin(), colours.end(), [&counts](QRgb a, QRgb b) {
        return counts[a] != counts[b] ? counts[a] > counts[b] : a < b;
    });
    constexpr int largestTable = 256;
    colours.resize(std::min(colours.size(), largestTable));
    return picture.convertToFormat(QImage::Format_Indexed8, colours, Qt::ThresholdDither);
}

} // namespace

int main(int argc, char* argv[])
{
    const QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("usage: tessera-draw-model FILE.png\n", stderr);
        return 2;
    }
    QImageWriter writer(QFile::decodeName(argv[1]), "png");
    writer.setCompression(100);
    if (!writer.write(withColourTable(macula::drawModel(macula::MacularModel())))) {
        std::fprintf(stderr, "%s: %s\n", argv[1], qPrintable(writer.errorString()));
        return 1;
    }
    return 0;
}
