#include "DifferencePicture.h"

#include "AxisTicks.h"
#include "Chart.h"
#include "DivergingColors.h"
#include "MapLayout.h"
#include "Units.h"

#include <algorithm>
#include <cmath>

namespace kelp::compare {

namespace {

constexpr double longestSide = 800.0;
constexpr double shortestSide = 60.0;
/// Height to width where nothing tells how far apart the B-scans are.
constexpr double assumedProportion = 0.5;
constexpr QSize curveSize(800, 360);
const QColor curveColor(40, 40, 40);
/// A few strays must not bleach the rest.
constexpr double shownPart = 0.98;

/// A - B of one surface in the unit that is shown.
class Differences
{
public:
    Differences(const ScanComparison& scan, const QString& identifier)
        : m_a(scan.a.surfaces[identifier]), m_b(scan.b.surfaces[identifier]),
          m_unit(scan.axialMicrometres ? micrometreSign : QString("rows")),
          m_factor(scan.axialMicrometres.value_or(1.0))
    {
    }

    int nrBScans() const { return m_a.getNrBScans(); }
    int nrAScans() const { return std::max(m_a.getNrAScans(), m_b.getNrAScans()); }
    const QString& unit() const { return m_unit; }
    /// One row in the unit.
    double row() const { return m_factor; }

    /// Not-a-number where nothing is compared.
    double at(int bScan, int aScan) const
    {
        if (aScan >= m_a.getNrAScans() || aScan >= m_b.getNrAScans()) {
            return std::numeric_limits<double>::quiet_NaN();
        }
        return (m_a.at(bScan, aScan) - m_b.at(bScan, aScan)) * m_factor;
    }

    std::vector<double> absolute() const
    {
        std::vector<double> values;
        for (int bScan = 0; bScan < nrBScans(); ++bScan) {
            for (int aScan = 0; aScan < nrAScans(); ++aScan) {
                if (!std::isnan(at(bScan, aScan))) {
                    values.push_back(std::abs(at(bScan, aScan)));
                }
            }
        }
        return values;
    }

    /// At least one row.
    double limit() const
    {
        return roundUp(std::max(m_factor, quantile(absolute(), shownPart).value_or(0.0)));
    }

private:
    SurfaceRows m_a;
    SurfaceRows m_b;
    QString m_unit;
    double m_factor;
};

QStringList titleFor(const ScanComparison& scan, const QString& identifier, const QString& unit)
{
    return {QString("%1: A - B in %2, positive where A lies deeper").arg(identifier, unit),
            QString("A: %1").arg(scan.a.path), QString("B: %1").arg(scan.b.path)};
}

QSizeF millimetresOf(const ScanFacts& facts, const Differences& differences,
                     const MapLayout& layout)
{
    const QSizeF size(facts.aScanMillimetres * differences.nrAScans(),
                      facts.bScanMillimetres * differences.nrBScans());
    return layout.isUpright() ? size.transposed() : size;
}

QSize mapSize(const QSizeF& proportions)
{
    const double scale = longestSide / std::max(proportions.width(), proportions.height());
    return {static_cast<int>(std::max(shortestSide, std::round(proportions.width() * scale))),
            static_cast<int>(std::max(shortestSide, std::round(proportions.height() * scale)))};
}

QImage mapImage(const Differences& differences, const DivergingColors& colors,
                const MapLayout& layout)
{
    QImage image(layout.size(), QImage::Format_RGB32);
    for (int bScan = 0; bScan < differences.nrBScans(); ++bScan) {
        for (int aScan = 0; aScan < differences.nrAScans(); ++aScan) {
            const double value = differences.at(bScan, aScan);
            image.setPixelColor(layout.placeOf(bScan, aScan),
                                std::isnan(value) ? DivergingColors::none() : colors.of(value));
        }
    }
    return image;
}

/// Number n lies in the middle of A-scan or B-scan n.
Axis countAxis(const QString& label, int first, int count, bool backward)
{
    const double low = first - 0.5;
    const double high = first + count - 0.5;
    return {label, backward ? high : low, backward ? low : high, true};
}

/// A-scans count from 0, as the columns of an image do; B-scans from 1, as everywhere for people.
Chart mapChart(const QSize& size, const QStringList& title, const Differences& differences,
               const MapLayout& layout)
{
    // The low end of a chart's y axis is at the bottom.
    const auto aScans = [&](bool backward) {
        return countAxis("A-scan", 0, differences.nrAScans(), backward);
    };
    const auto bScans = [&](bool backward) {
        return countAxis("B-scan", 1, differences.nrBScans(), backward);
    };
    return layout.isUpright() ? Chart(size, title, bScans(layout.areBScansBackward()),
                                      aScans(!layout.areAScansBackward()))
                              : Chart(size, title, aScans(layout.areAScansBackward()),
                                      bScans(!layout.areBScansBackward()));
}

void drawColorBar(Chart& chart, const DivergingColors& colors, const QString& unit)
{
    const QRectF& plot = chart.plot();
    const QRectF bar(plot.right() + 24.0, plot.top(), 16.0, plot.height());
    QPainter& painter = chart.painter();
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (int y = 0; y < static_cast<int>(bar.height()); ++y) {
        const double value = colors.getLimit() * (1.0 - 2.0 * (y + 0.5) / bar.height());
        painter.fillRect(QRectF(bar.x(), bar.y() + y, bar.width(), 1.0), colors.of(value));
    }
    painter.setPen(Qt::black);
    painter.drawRect(bar);
    painter.setRenderHint(QPainter::Antialiasing);
    const double limit = colors.getLimit();
    const double step = plot.height() < 120.0 ? limit : limit / 2.0;
    for (double value = -limit; value <= limit * 1.001; value += step) {
        const double y = bar.center().y() - value / limit * bar.height() / 2.0;
        const QString sign = value > 0.0 ? "+" : "";
        chart.drawText(QRectF(bar.right() + 6.0, y - 10.0, 90.0, 20.0),
                       Qt::AlignLeft | Qt::AlignVCenter,
                       sign + QString::number(value) + " " + unit);
    }
}

/// A length that is about a fifth of the map, below its right corner.
void drawScaleBar(Chart& chart, double millimetresWide)
{
    const double length = roundUp(millimetresWide / 10.0);
    const QRectF& plot = chart.plot();
    const double pixels = length / millimetresWide * plot.width();
    const double y = plot.bottom() + 44.0;
    chart.painter().setPen(QPen(Qt::black, 3.0));
    chart.painter().drawLine(QPointF(plot.right() - pixels, y), QPointF(plot.right(), y));
    chart.drawText(QRectF(plot.right() + 8.0, y - 10.0, 80.0, 20.0),
                   Qt::AlignLeft | Qt::AlignVCenter, QString("%1 mm").arg(length));
}

double shareBeyond(const Differences& differences, double limit)
{
    const std::vector<double> values = differences.absolute();
    const auto nrBeyond =
        std::count_if(values.begin(), values.end(), [&](double value) { return value > limit; });
    return values.empty() ? 0.0
                          : static_cast<double>(nrBeyond) / static_cast<double>(values.size());
}

QString mapFooter(const ScanComparison& scan, const Differences& differences,
                  const MapLayout& layout, double limit)
{
    QString text = QString("Grey: not compared. %1 % of the A-scans lie beyond the colours.\n")
                       .arg(100.0 * shareBeyond(differences, limit), 0, 'f', 1);
    text += layout.isKnown() ? "Laid as on the localizer." : "The first B-scan is on top.";
    if (scan.facts() == nullptr) {
        text += " The distance of the B-scans is not known.";
    }
    return text;
}

QImage differenceMap(const ScanComparison& scan, const QString& identifier,
                     const Differences& differences)
{
    const DivergingColors colors(differences.limit());
    const ScanFacts* facts = scan.facts();
    const MapLayout layout(facts ? facts->places : std::nullopt, differences.nrBScans(),
                           differences.nrAScans());
    const QSizeF proportions =
        facts ? millimetresOf(*facts, differences, layout) : QSizeF(1.0, assumedProportion);
    Chart chart = mapChart(mapSize(proportions), titleFor(scan, identifier, differences.unit()),
                           differences, layout);
    chart.painter().drawImage(chart.plot(), mapImage(differences, colors, layout));
    drawColorBar(chart, colors, differences.unit());
    if (facts) {
        drawScaleBar(chart, proportions.width());
    }
    chart.drawFooter(mapFooter(scan, differences, layout, colors.getLimit()));
    return chart.finish();
}

/// The curve and the area to nothing, in the colours of a map's ends.
void drawRun(Chart& chart, const QPolygonF& run)
{
    if (run.isEmpty()) {
        return;
    }
    QPainter& painter = chart.painter();
    const double nothing = chart.at(0.0, 0.0).y();
    QPolygonF area = run;
    area.append({run.last().x(), nothing});
    area.append({run.first().x(), nothing});
    const DivergingColors colors(1.0);
    QRectF above = chart.plot();
    QRectF below = chart.plot();
    above.setBottom(nothing);
    below.setTop(nothing);
    painter.setPen(Qt::NoPen);
    for (const auto& [side, sign] : {std::pair(above, 1.0), std::pair(below, -1.0)}) {
        painter.setClipRect(side);
        painter.setBrush(colors.of(sign));
        painter.drawPolygon(area);
    }
    painter.setClipping(false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(curveColor, 1.2));
    if (run.size() == 1) {
        painter.drawPoint(run.first());
    }
    painter.drawPolyline(run);
}

void drawCurve(Chart& chart, const Differences& differences)
{
    QPolygonF run;
    for (int aScan = 0; aScan < differences.nrAScans(); ++aScan) {
        const double value = differences.at(0, aScan);
        if (std::isnan(value)) {
            drawRun(chart, run);
            run.clear();
        } else {
            run.append(chart.at(aScan, value));
        }
    }
    drawRun(chart, run);
}

QImage differenceCurve(const ScanComparison& scan, const QString& identifier,
                       const Differences& differences)
{
    // At least a row to both sides: where all agree, nothing is blown up.
    double low = -differences.row();
    double high = differences.row();
    for (int aScan = 0; aScan < differences.nrAScans(); ++aScan) {
        const double value = differences.at(0, aScan);
        low = std::isnan(value) ? low : std::min(low, value);
        high = std::isnan(value) ? high : std::max(high, value);
    }
    Chart chart(curveSize, titleFor(scan, identifier, differences.unit()),
                {"A-scan", 0.0, std::max(1.0, differences.nrAScans() - 1.0), true},
                paddedAxis("A - B in " + differences.unit(), low, high));
    drawCurve(chart, differences);
    chart.drawLevel(0.0, QColor(120, 120, 120), Qt::DashLine);
    chart.drawFooter(QString("n = %1 A-scans compared. Red: A lies deeper, blue: B lies deeper.")
                         .arg(differences.absolute().size()));
    return chart.finish();
}

} // namespace

QImage differencePicture(const ScanComparison& scan, const QString& identifier)
{
    const Differences differences(scan, identifier);
    return differences.nrBScans() > 1 ? differenceMap(scan, identifier, differences)
                                      : differenceCurve(scan, identifier, differences);
}

} // namespace kelp::compare
