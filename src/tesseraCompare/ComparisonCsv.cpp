#include "ComparisonCsv.h"

#include "CsvText.h"
#include "TextTable.h"

namespace kelp::compare {

namespace {

using command::csvLine;
using kelp::oct::EtdrsTable;

constexpr int nrDecimals = 4;

QString cell(const std::optional<double>& number)
{
    return number ? decimalText(number, nrDecimals) : QString();
}

QStringList statisticsNames(const QString& unit)
{
    QStringList names{"mean absolute difference",
                      "mean difference A - B",
                      "standard deviation",
                      "median difference",
                      "median absolute difference",
                      "95th percentile of absolute differences",
                      "mean absolute difference about the mean difference"};
    for (QString& name : names) {
        name += QString(" (%1)").arg(unit);
    }
    return names;
}

QStringList statisticsCells(const DifferenceStatistics& statistics)
{
    return {cell(statistics.meanAbsolute),         cell(statistics.mean),
            cell(statistics.standardDeviation),    cell(statistics.median),
            cell(statistics.medianAbsolute),       cell(statistics.percentile95),
            cell(statistics.meanAbsoluteAboutMean)};
}

QStringList differenceNames()
{
    return QStringList{"A-scans compared", "A-scans only in A", "A-scans only in B"} +
           statisticsNames("rows") + statisticsNames("micrometres");
}

QStringList differenceCells(int onlyA, int onlyB, const DifferenceStatistics& rows,
                            const DifferenceStatistics& micrometres)
{
    return QStringList{QString::number(rows.count), QString::number(onlyA),
                       QString::number(onlyB)} +
           statisticsCells(rows) + statisticsCells(micrometres);
}

/// whose: what deviates. The A-scans of one scan scatter otherwise than the means of several.
QStringList limitNames(const QString& whose)
{
    return {"difference A - B (micrometres)",
            QString("standard deviation %1 (micrometres)").arg(whose),
            QString("lower limit of agreement %1 (micrometres)").arg(whose),
            QString("upper limit of agreement %1 (micrometres)").arg(whose)};
}

QStringList layerCells(int row)
{
    return {EtdrsTable::rowLabel(row), EtdrsTable::topLayer(row)->getIdentifier(),
            EtdrsTable::bottomLayer(row)->getIdentifier()};
}

/// The sides whose scan ends within the sector.
QString cutText(const SectorComparison& sector)
{
    QStringList sides;
    if (sector.cutA) {
        sides.append("A");
    }
    if (sector.cutB) {
        sides.append("B");
    }
    return sides.join(' ');
}

} // namespace

QByteArray surfacesHeader()
{
    return csvLine(QStringList{"scan", "surface"} + differenceNames());
}

QByteArray surfaceLines(const QString& name, const QList<SurfaceSummary>& surfaces)
{
    QByteArray lines;
    for (const SurfaceSummary& surface : surfaces) {
        lines += csvLine(
            QStringList{name, surface.identifier} +
            differenceCells(surface.onlyA, surface.onlyB, surface.rows, surface.micrometres));
    }
    return lines;
}

QByteArray bScansHeader()
{
    return csvLine(QStringList{"scan", "surface", "B-scan (from 1)"} + differenceNames());
}

QByteArray bScanLines(const ScanComparison& scan)
{
    QByteArray lines;
    for (const ComparedSurface& surface : scan.surfaces) {
        int bScan = 0;
        for (const SurfaceOverlap& overlap : surface.bScans) {
            const auto micrometres = scan.axialMicrometres
                                         ? overlap.statistics(*scan.axialMicrometres)
                                         : DifferenceStatistics();
            lines += csvLine(QStringList{scan.name, surface.identifier, QString::number(++bScan)} +
                             differenceCells(overlap.onlyA, overlap.onlyB, overlap.statistics(1.0),
                                             micrometres));
        }
    }
    return lines;
}

QByteArray sectorsHeader()
{
    return csvLine(QStringList{"scan", "layer", "top surface", "bottom surface", "sector",
                               "A-scans in A", "A-scans in B", "thickness A (micrometres)",
                               "thickness B (micrometres)"} +
                   limitNames("of the A-scans") + QStringList{"cut in"});
}

QByteArray sectorLines(const ScanComparison& scan)
{
    QByteArray lines;
    for (const SectorComparison& sector : scan.sectors) {
        const auto statistics = sector.aScans.value_or(DifferenceStatistics());
        lines +=
            csvLine(QStringList{scan.name} + layerCells(sector.row) +
                    QStringList{EtdrsTable::columnLabel(sector.column), QString::number(sector.nrA),
                                QString::number(sector.nrB), cell(sector.thickness.a),
                                cell(sector.thickness.b), cell(sector.thickness.difference()),
                                cell(statistics.standardDeviation), cell(statistics.lowerLimit()),
                                cell(statistics.upperLimit()), cutText(sector)});
    }
    return lines;
}

QByteArray agreementCsv(const QList<Agreement>& agreements)
{
    QByteArray text =
        csvLine(QStringList{"layer", "top surface", "bottom surface", "sector", "sector means"} +
                limitNames("over scans"));
    for (const Agreement& agreement : agreements) {
        const DifferenceStatistics& statistics = agreement.statistics;
        const QString sector =
            agreement.column ? EtdrsTable::columnLabel(*agreement.column) : QString("all");
        text += csvLine(layerCells(agreement.row) +
                        QStringList{sector, QString::number(statistics.count),
                                    cell(statistics.mean), cell(statistics.standardDeviation),
                                    cell(statistics.lowerLimit()), cell(statistics.upperLimit())});
    }
    return text;
}

} // namespace kelp::compare
