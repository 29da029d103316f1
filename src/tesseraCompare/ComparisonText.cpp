#include "ComparisonText.h"

#include "TextTable.h"
#include "Units.h"

#include <algorithm>

namespace kelp::compare {

namespace {

using kelp::oct::EtdrsTable;

QStringList statisticsHeader(const QString& first)
{
    return {first,  "A-scans", "only A", "only B",  "mean |d|",
            "mean", "SD",      "median", "P95 |d|", "about mean"};
}

QStringList statisticsCells(const QString& first, int onlyA, int onlyB,
                            const DifferenceStatistics& statistics)
{
    return {first,
            QString::number(statistics.count),
            QString::number(onlyA),
            QString::number(onlyB),
            decimalText(statistics.meanAbsolute),
            decimalText(statistics.mean),
            decimalText(statistics.standardDeviation),
            decimalText(statistics.median),
            decimalText(statistics.percentile95),
            decimalText(statistics.meanAbsoluteAboutMean)};
}

QString surfaceTables(const QList<SurfaceSummary>& surfaces)
{
    TextTable rows(statisticsHeader("rows"), 1);
    TextTable lengths(statisticsHeader(micrometreSign), 1);
    bool hasLengths = false;
    for (const SurfaceSummary& surface : surfaces) {
        rows.addRow(
            statisticsCells(surface.identifier, surface.onlyA, surface.onlyB, surface.rows));
        lengths.addRow(
            statisticsCells(surface.identifier, surface.onlyA, surface.onlyB, surface.micrometres));
        hasLengths = hasLengths || surface.micrometres.count > 0;
    }
    if (surfaces.isEmpty()) {
        return {};
    }
    return "Surfaces, d = A - B, positive where A lies deeper\n" + rows.text() +
           (hasLengths ? '\n' + lengths.text() : QString());
}

constexpr int widestLine = 100;

TextTable bScanTable(const ScanComparison& scan, const QList<ComparedSurface>& surfaces)
{
    QStringList header{"B-scan"};
    for (const ComparedSurface& surface : surfaces) {
        header += {surface.identifier + " |d|", "mean"};
    }
    TextTable table(header, 0);
    for (int bScan = 0; bScan < scan.a.nrBScans; ++bScan) {
        QStringList cells{QString::number(bScan + 1)};
        for (const ComparedSurface& surface : surfaces) {
            const auto statistics = surface.bScans[static_cast<std::size_t>(bScan)].statistics(1.0);
            cells += {decimalText(statistics.meanAbsolute), decimalText(statistics.mean)};
        }
        table.addRow(cells);
    }
    return table;
}

/// As many surfaces side by side as fit a line.
QString bScanTables(const ScanComparison& scan)
{
    QStringList tables;
    QList<ComparedSurface> left = scan.surfaces;
    while (!left.isEmpty()) {
        int count = left.size();
        while (count > 1 && bScanTable(scan, left.mid(0, count)).width() > widestLine) {
            --count;
        }
        tables.append(bScanTable(scan, left.mid(0, count)).text());
        left = left.mid(count);
    }
    return "B-scans, counted from 1: mean |d| and mean of A - B in rows\n" + tables.join('\n');
}

/// Where both stand on the same A-scans their number stands once.
QStringList sectorHeader(bool isPaired)
{
    QStringList header{"layer", "sector"};
    header += isPaired ? QStringList{"A-scans"} : QStringList{"A-scans A", "A-scans B"};
    header += {"A", "B", "A - B"};
    return header +
           (isPaired ? QStringList{"SD of A-scans", "lower limit", "upper limit"} : QStringList());
}

QStringList sectorCells(const SectorComparison& sector)
{
    const QString star = sector.cutA || sector.cutB ? " *" : "";
    QStringList cells{EtdrsTable::rowLabel(sector.row),
                      EtdrsTable::columnLabel(sector.column) + star, QString::number(sector.nrA)};
    if (!sector.aScans) {
        cells.append(QString::number(sector.nrB));
    }
    cells += {decimalText(sector.thickness.a), decimalText(sector.thickness.b),
              decimalText(sector.thickness.difference())};
    if (sector.aScans) {
        cells +=
            {decimalText(sector.aScans->standardDeviation),
             decimalText(sector.aScans->lowerLimit()), decimalText(sector.aScans->upperLimit())};
    }
    return cells;
}

QString sectorTitle(bool isPaired)
{
    const QString mean = QString("Mean thickness in the ETDRS sectors in %1").arg(micrometreSign);
    return isPaired ? mean + " over the A-scans that both have;\nthe standard deviation and the "
                             "limits of agreement are those of the A-scans, not of the means\n"
                    : mean + ", each over its own A-scans\n";
}

QString cutLegend(const ScanComparison& scan)
{
    const bool anyCut =
        std::any_of(scan.sectors.begin(), scan.sectors.end(),
                    [](const SectorComparison& sector) { return sector.cutA || sector.cutB; });
    return anyCut ? "* the border of the scan cuts this sector in A or in B, so that the means are "
                    "not "
                    "those\n  of the whole sector; the column \"cut in\" of sectors.csv tells in "
                    "which\n"
                  : "";
}

QString sectorTable(const ScanComparison& scan)
{
    const bool isPaired = scan.sectors.first().aScans.has_value();
    TextTable table(sectorHeader(isPaired), 2);
    int row = scan.sectors.first().row;
    for (const SectorComparison& sector : scan.sectors) {
        if (sector.row != row) {
            table.addGap();
            row = sector.row;
        }
        table.addRow(sectorCells(sector));
    }
    return sectorTitle(isPaired) + table.text() + cutLegend(scan);
}

QString agreementTable(const QList<Agreement>& agreements)
{
    TextTable table({"layer", "sector", "means", "A - B", "SD", "lower limit", "upper limit"}, 2);
    int row = agreements.first().row;
    for (const Agreement& agreement : agreements) {
        if (agreement.row != row) {
            table.addGap();
            row = agreement.row;
        }
        const DifferenceStatistics& statistics = agreement.statistics;
        table.addRow(
            {EtdrsTable::rowLabel(agreement.row),
             agreement.column ? EtdrsTable::columnLabel(*agreement.column) : QString("all"),
             QString::number(statistics.count), decimalText(statistics.mean),
             decimalText(statistics.standardDeviation), decimalText(statistics.lowerLimit()),
             decimalText(statistics.upperLimit())});
    }
    return QString("Mean thickness in the ETDRS sectors over the scans, in %1;\nthe standard "
                   "deviation and the limits of agreement are those of the sector means\n")
               .arg(micrometreSign) +
           table.text();
}

QString scanHeading(const ScanComparison& scan)
{
    const bool isOneSize = sizeText(scan.a) == sizeText(scan.b);
    QString text = QString("Scan %1: ").arg(scan.name);
    text += isOneSize ? sizeText(scan.a)
                      : QString("A has %1, B %2").arg(sizeText(scan.a), sizeText(scan.b));
    if (scan.axialMicrometres) {
        text += QString(", a row is %1 %2").arg(*scan.axialMicrometres).arg(micrometreSign);
    }
    return text + '\n';
}

/// All tables of a scan.
QString wholeScan(const ScanComparison& scan)
{
    QStringList parts{scanHeading(scan)};
    if (!scan.surfaces.isEmpty()) {
        parts += {surfaceTables(surfacesOf(scan)), bScanTables(scan)};
    }
    if (!scan.sectors.isEmpty()) {
        parts.append(sectorTable(scan));
    }
    return parts.join('\n');
}

/// One scan among several.
QString shortScan(const ScanComparison& scan)
{
    const QString tables = surfaceTables(surfacesOf(scan));
    return scanHeading(scan) + (tables.isEmpty() ? tables : '\n' + tables);
}

QString inputs(const QString& a, const QString& b)
{
    return QString("A: %1\nB: %2\n\n").arg(a, b);
}

} // namespace

void ComparisonText::add(const ScanComparison& scan)
{
    if (m_scans.isEmpty()) {
        m_first = inputs(scan.a.path, scan.b.path) + wholeScan(scan);
    }
    m_scans.append(shortScan(scan));
}

QString ComparisonText::text(const ComparisonPool& pool) const
{
    if (m_scans.size() == 1) {
        return m_first;
    }
    QStringList parts{QString("%1 scans together\n").arg(m_scans.size())};
    const QString tables = surfaceTables(pool.surfaces());
    if (!tables.isEmpty()) {
        parts.append(tables);
    }
    const QList<Agreement> agreements = pool.agreements();
    if (!agreements.isEmpty()) {
        parts.append(agreementTable(agreements));
    }
    return inputs(m_a, m_b) + (parts + m_scans).join('\n');
}

} // namespace kelp::compare
