#include "AgreementPicture.h"

#include "Chart.h"
#include "TextTable.h"
#include "Units.h"

#include <algorithm>
#include <cmath>

namespace kelp::compare {

namespace {

using kelp::oct::EtdrsTable;

constexpr QSize plotSize(760, 480);
/// Cells across the plot, of at least 4 pixels.
constexpr int cellsAtMost = 120;

/// Thicknesses in whole rows have differences of whole rows and means of half ones. In rows, the
/// cells' edges keep this far off both, so that no rounding decides on which side one falls.
constexpr double differenceOffset = 0.5;
constexpr double meanOffset = 0.25;

/// Shown to both sides of nothing, so that where all agree the plot does not blow rounding up.
constexpr double leastRows = 5.0;
constexpr double leastMicrometres = 5.0;

constexpr QSize panelSize(310, 230);
constexpr int panelsBesideEachOther = 3;
constexpr double footerLeft = 84.0;
constexpr double footerHeight = 56.0;
constexpr double dotRadius = 4.0;

const QColor meanColor(0xB2, 0x18, 0x2B);
const QColor fewColor(0xC6, 0xDB, 0xEF);
const QColor manyColor(0x08, 0x30, 0x6B);
const QColor dotColor(0x21, 0x66, 0xAC);

struct Range
{
    double low = 0.0;
    double high = 0.0;
};

template <typename Measure>
Range rangeOf(const std::vector<ThicknessPair>& pairs, const Measure& measure)
{
    Range range{measure(pairs.front()), measure(pairs.front())};
    for (const ThicknessPair& pair : pairs) {
        range.low = std::min(range.low, measure(pair));
        range.high = std::max(range.high, measure(pair));
    }
    return range;
}

Range meanRange(const std::vector<ThicknessPair>& pairs)
{
    return rangeOf(pairs, [](const ThicknessPair& pair) { return pair.mean(); });
}

Range differenceRange(const std::vector<ThicknessPair>& pairs)
{
    return rangeOf(pairs, [](const ThicknessPair& pair) { return pair.difference(); });
}

Range rangeOf(const Tally<double>& values)
{
    return {values.entries().front().value, values.entries().back().value};
}

Tally<double> differencesOf(const Tally<ThicknessPair>& pairs)
{
    return pairs.measured([](const ThicknessPair& pair) { return pair.difference(); });
}

/// At least so long, with the same middle.
Range widened(const Range& range, double least)
{
    const double missing = std::max(0.0, least - (range.high - range.low));
    return {range.low - missing / 2.0, range.high + missing / 2.0};
}

/// With room for the lines of the limits.
Range shownDifferences(const Range& differences, const DifferenceStatistics& statistics,
                       double least)
{
    return {
        std::min({-least, differences.low, statistics.lowerLimit().value_or(differences.low)}),
        std::max({least, differences.high, statistics.upperLimit().value_or(differences.high)})};
}

Axis meanAxis(const Range& range)
{
    return paddedAxis("mean of A and B in " + micrometreSign, range.low, range.high);
}

Axis differenceAxis(const Range& range)
{
    return paddedAxis("A - B in " + micrometreSign, range.low, range.high);
}

/// whose: what the limits are of, in a line of its own.
void drawLevels(Chart& chart, const DifferenceStatistics& statistics, const QString& whose = {})
{
    const auto textOf = [&](const QString& name, const std::optional<double>& value) {
        return name + '\n' + (whose.isEmpty() ? whose : whose + '\n') + decimalText(value) + ' ' +
               micrometreSign;
    };
    chart.drawLevel(0.0, QColor(120, 120, 120), Qt::DotLine);
    chart.drawLevel(*statistics.mean, meanColor, Qt::SolidLine);
    const QPair<double, QString> mean{*statistics.mean, textOf("mean", statistics.mean)};
    if (!statistics.standardDeviation) {
        chart.drawLevelTexts({mean});
        return;
    }
    const double upper = *statistics.upperLimit();
    const double lower = *statistics.lowerLimit();
    chart.drawLevel(upper, meanColor, Qt::DashLine);
    chart.drawLevel(lower, meanColor, Qt::DashLine);
    chart.drawLevelTexts(
        {{upper, textOf("mean + 1.96 SD", upper)}, mean, {lower, textOf("mean - 1.96 SD", lower)}});
}

/// On a scale of logarithms: one A-scan is as visible beside thousands.
QColor densityColor(int count, int highest)
{
    const double part = highest > 1 ? std::log(count) / std::log(highest) : 1.0;
    const auto mix = [part](int from, int to) {
        return static_cast<int>(std::lround(from + part * (to - from)));
    };
    return {mix(fewColor.red(), manyColor.red()), mix(fewColor.green(), manyColor.green()),
            mix(fewColor.blue(), manyColor.blue())};
}

void drawDensity(Chart& chart, const AgreementDensity& density)
{
    const int highest = *std::max_element(density.counts.begin(), density.counts.end());
    QPainter& painter = chart.painter();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setClipRect(chart.plot());
    for (int row = 0; row < density.nrRows; ++row) {
        for (int column = 0; column < density.nrColumns; ++column) {
            if (density.at(column, row) > 0) {
                const double x = density.left + column * density.cell;
                const double y = density.bottom + row * density.cell;
                painter.fillRect(
                    QRectF(chart.at(x, y + density.cell), chart.at(x + density.cell, y)),
                    densityColor(density.at(column, row), highest));
            }
        }
    }
    painter.setClipping(false);
    painter.setRenderHint(QPainter::Antialiasing);
}

void drawMeans(Chart& chart, const std::vector<ThicknessPair>& means)
{
    // A light rim keeps dots apart that lie on each other.
    chart.painter().setPen(Qt::white);
    chart.painter().setBrush(dotColor);
    for (const ThicknessPair& pair : means) {
        chart.painter().drawEllipse(chart.at(pair.mean(), pair.difference()), dotRadius, dotRadius);
    }
}

/// What all panels show.
Axis sharedDifferenceAxis(const QList<SectorMeans>& layers)
{
    Range shown{-leastMicrometres, leastMicrometres};
    for (const SectorMeans& layer : layers) {
        const Range range = shownDifferences(differenceRange(layer.means),
                                             differencesOf(layer.means), leastMicrometres);
        shown = {std::min(shown.low, range.low), std::max(shown.high, range.high)};
    }
    return differenceAxis(shown);
}

QString panelTitle(const SectorMeans& layer)
{
    return QString("%1 (%2 to %3), n = %4")
        .arg(EtdrsTable::rowLabel(layer.row), EtdrsTable::topLayer(layer.row)->getIdentifier(),
             EtdrsTable::bottomLayer(layer.row)->getIdentifier())
        .arg(layer.means.size());
}

QImage sectorPanel(const SectorMeans& layer, const Axis& differences)
{
    const Range means = widened(meanRange(layer.means), 2.0 * leastMicrometres);
    Chart chart(panelSize, {panelTitle(layer)}, meanAxis(means), differences, Chart::Footer::None);
    drawLevels(chart, differencesOf(layer.means));
    drawMeans(chart, layer.means);
    return chart.finish();
}

QString sectorFooter(const QList<SectorMeans>& layers)
{
    QString text = QString::fromUtf8(
        "A dot is the mean thickness of a layer in one ETDRS sector of one scan; n counts them. "
        "Dashed: 95 % limits of agreement of this layer, mean \u00b1 1.96 SD of its dots; sectors "
        "of "
        "one eye are not independent of each other. All panels have the same scale of A - B.");
    constexpr int wholeRetina = EtdrsTable::nrRows - 1;
    if (layers.size() > 1 && layers.last().row == wholeRetina) {
        text += " Complete Retina is the sum of the other layers.";
    }
    return text;
}

/// Row after row, with the title above and the footer below.
QImage panelPicture(const QStringList& title, const QList<QImage>& panels, const QString& footer)
{
    const QSize panel = panels.first().size();
    const int nrColumns = std::min(panelsBesideEachOther, panels.size());
    const int nrRows = (panels.size() + nrColumns - 1) / nrColumns;
    const int top = static_cast<int>(titleHeight(title));
    const int bottom = top + nrRows * panel.height();
    // One panel alone is too narrow for the footer.
    const int width = panel.width() * std::max(2, nrColumns);
    QImage picture(width, bottom + static_cast<int>(footerHeight), QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    drawTitle(painter, title, width);
    for (int i = 0; i < panels.size(); ++i) {
        painter.drawImage(i % nrColumns * panel.width(), top + i / nrColumns * panel.height(),
                          panels[i]);
    }
    drawPictureText(painter, QRectF(footerLeft, bottom, width - 1.5 * footerLeft, footerHeight),
                    Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, footer);
    return picture;
}

} // namespace

AgreementDensity AgreementDensity::of(const Tally<ThicknessPair>& pairs, double axialMicrometres)
{
    const Range means = rangeOf(pairs.measured([](const ThicknessPair& p) { return p.mean(); }));
    const Range differences = rangeOf(differencesOf(pairs));
    const double longest = std::max(means.high - means.low, differences.high - differences.low);
    const double rowsPerCell = std::max(1.0, std::ceil(longest / axialMicrometres / cellsAtMost));
    const auto columnOf = [&](double mean) {
        return static_cast<int>(std::floor((mean / axialMicrometres + meanOffset) / rowsPerCell));
    };
    const auto rowOf = [&](double difference) {
        return static_cast<int>(
            std::floor((difference / axialMicrometres + differenceOffset) / rowsPerCell));
    };
    const int firstColumn = columnOf(means.low);
    const int firstRow = rowOf(differences.low);
    AgreementDensity density;
    density.cell = axialMicrometres * rowsPerCell;
    density.nrColumns = columnOf(means.high) - firstColumn + 1;
    density.nrRows = rowOf(differences.high) - firstRow + 1;
    density.left = firstColumn * density.cell - meanOffset * axialMicrometres;
    density.bottom = firstRow * density.cell - differenceOffset * axialMicrometres;
    density.counts.resize(static_cast<std::size_t>(density.nrColumns) *
                          static_cast<std::size_t>(density.nrRows));
    for (const auto& [pair, count] : pairs.entries()) {
        const auto column = static_cast<std::size_t>(columnOf(pair.mean()) - firstColumn);
        const auto row = static_cast<std::size_t>(rowOf(pair.difference()) - firstRow);
        density.counts[row * static_cast<std::size_t>(density.nrColumns) + column] +=
            static_cast<int>(count);
    }
    return density;
}

QImage agreementOfAScans(const QStringList& title, const Tally<ThicknessPair>& pairs,
                         double axialMicrometres)
{
    const auto statistics = DifferenceStatistics::ofTally(differencesOf(pairs));
    const AgreementDensity density = AgreementDensity::of(pairs, axialMicrometres);
    const double least = leastRows * axialMicrometres;
    const Range means{density.left, density.left + density.nrColumns * density.cell};
    const Range differences{density.bottom, density.bottom + density.nrRows * density.cell};
    Chart chart(plotSize, title, meanAxis(widened(means, 2.0 * least)),
                differenceAxis(shownDifferences(differences, statistics, least)));
    drawDensity(chart, density);
    drawLevels(chart, statistics, "of the A-scans");
    chart.drawFooter(
        QString("n = %1 A-scans; cells of %2 %3, the darker the more A-scans (1 to %4, "
                "logarithmic).\nThe limits are those of single A-scans, not of sector means or "
                "eyes; neighbouring A-scans are not independent.")
            .arg(pairs.total())
            .arg(density.cell)
            .arg(micrometreSign)
            .arg(*std::max_element(density.counts.begin(), density.counts.end())));
    return chart.finish();
}

QImage agreementOfSectors(const QStringList& title, const QList<SectorMeans>& layers)
{
    const Axis differences = sharedDifferenceAxis(layers);
    QList<QImage> panels;
    for (const SectorMeans& layer : layers) {
        panels.append(sectorPanel(layer, differences));
    }
    return panelPicture(title, panels, sectorFooter(layers));
}

} // namespace kelp::compare
