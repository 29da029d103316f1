// Writes the trained model of the macula to the file that is named as the only argument. Runs
// while the system is built.

#include "MacularModel.h"

#include <QFile>
#include <QSaveFile>
#include <QXmlStreamWriter>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

/// Values are written with four decimals. Layers are rounded before they are added, so that the sum
/// of the printed layers is the printed pair to the last digit.
using FixedMap = std::vector<std::int64_t>;
constexpr std::int64_t perMicrometre = 10000;
constexpr int decimals = 4;

FixedMap rounded(const macula::Map& map)
{
    FixedMap result;
    result.reserve(map.size());
    for (const double value : map) {
        result.push_back(std::llround(value * perMicrometre));
    }
    return result;
}

QString rowText(const FixedMap& map, int row)
{
    QString text;
    for (int column = 0; column < macula::columns; ++column) {
        const std::int64_t value =
            map[static_cast<std::size_t>(row) * macula::columns + static_cast<std::size_t>(column)];
        if (column > 0) {
            text += ' ';
        }
        text += QString::number(value / perMicrometre) + '.' +
                QString::number(value % perMicrometre).rightJustified(decimals, '0');
    }
    return text;
}

void writePair(QXmlStreamWriter& xml, const QString& x, const QString& y)
{
    xml.writeTextElement("x", x);
    xml.writeTextElement("y", y);
    xml.writeEndElement();
}

void writeMatrix(QXmlStreamWriter& xml, const QString& name, const QString& description,
                 const FixedMap& map)
{
    xml.writeStartElement(name);
    xml.writeAttribute("Description", description);
    for (int row = 0; row < macula::rows; ++row) {
        xml.writeTextElement("row", rowText(map, row));
    }
    xml.writeEndElement();
}

void writeDistribution(QXmlStreamWriter& xml, const macula::MacularModel& model,
                       const std::array<FixedMap, macula::layerCount>& layers, std::size_t upper,
                       std::size_t lower)
{
    const QString upperName = macula::surfaceNames[upper];
    const QString lowerName = macula::surfaceNames[lower];
    FixedMap means(layers[upper].size());
    for (std::size_t layer = upper; layer < lower; ++layer) {
        for (std::size_t i = 0; i < means.size(); ++i) {
            means[i] += layers[layer][i];
        }
    }
    xml.writeStartElement("Distribution");
    xml.writeAttribute("Description", "Distance from " + upperName + " to " + lowerName);
    xml.writeTextElement("Top_Layer_Name", upperName);
    xml.writeTextElement("Bottom_Layer_Name", lowerName);
    xml.writeStartElement("Spacing");
    xml.writeAttribute("Description", "Micrometres per step of the matrices");
    writePair(xml, QString::number(macula::stepX), QString::number(macula::stepY));
    xml.writeStartElement("Dimension");
    xml.writeAttribute("Description", "Columns and rows of the matrices");
    writePair(xml, QString::number(macula::columns), QString::number(macula::rows));
    writeMatrix(xml, "Mean_matrix", "Mean distance in micrometres", means);
    writeMatrix(xml, "Variance_matrix", "Three standard deviations in micrometres",
                rounded(model.threeDeviations(upper, lower)));
    xml.writeEndElement();
}

void writeModel(QIODevice& device)
{
    const macula::MacularModel model;
    std::array<FixedMap, macula::layerCount> layers;
    for (std::size_t layer = 0; layer < macula::layerCount; ++layer) {
        layers[layer] = rounded(model.layerMean(layer));
    }
    QXmlStreamWriter xml(&device);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(1);
    xml.writeStartDocument();
    xml.writeStartElement("Model");
    xml.writeAttribute("Description", "Distances between the surfaces of the healthy macula");
    xml.writeStartElement("Fovea_position");
    writePair(xml, QString::number(macula::foveaColumn), QString::number(macula::foveaRow));
    xml.writeStartElement("Optic_disc_direction");
    writePair(xml, "1", "0");
    xml.writeTextElement("Laterality", "OD");
    xml.writeStartElement("Distributions");
    xml.writeAttribute("Description", "One entry for each pair of surfaces, all on one grid");
    for (std::size_t distance = 1; distance <= macula::layerCount; ++distance) {
        for (std::size_t upper = 0; upper + distance < macula::surfaceCount; ++upper) {
            writeDistribution(xml, model, layers, upper, upper + distance);
        }
    }
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndDocument();
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::fputs("usage: tessera-make-model FILE\n", stderr);
        return 2;
    }
    QSaveFile file(QFile::decodeName(argv[1]));
    if (!file.open(QIODevice::WriteOnly)) {
        std::fprintf(stderr, "%s: %s\n", argv[1], qPrintable(file.errorString()));
        return 1;
    }
    writeModel(file);
    if (!file.commit()) {
        std::fprintf(stderr, "%s: %s\n", argv[1], qPrintable(file.errorString()));
        return 1;
    }
    return 0;
}
