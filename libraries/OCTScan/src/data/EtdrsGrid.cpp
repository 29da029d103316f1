#include "EtdrsGrid.h"

#include "EtdrsCoverage.h"
#include "kelpCheck.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace kelp::oct {

namespace {

/// mm^2. The radii are halves, so that their squares are exact.
constexpr double squaredRadius(int circle)
{
    return etdrsRadii[circle] * etdrsRadii[circle];
}

struct Column
{
    EtdrsSector sector;
    const char* label;
};

constexpr std::array<Column, EtdrsTable::nrColumns> columns{{
    {EtdrsSector::C, "C"},
    {EtdrsSector::N1, "N1"},
    {EtdrsSector::N2, "N2"},
    {EtdrsSector::S1, "S1"},
    {EtdrsSector::S2, "S2"},
    {EtdrsSector::T1, "T1"},
    {EtdrsSector::T2, "T2"},
    {EtdrsSector::I1, "I1"},
    {EtdrsSector::I2, "I2"},
}};

struct Row
{
    const char* label;
    LayerNamePtr (*top)();
    LayerNamePtr (*bottom)();
};

constexpr std::array<Row, EtdrsTable::nrRows> rows{{
    {"NFL", &LayerNameILM::create, &LayerNameGCL::create},
    {"GCL + IPL", &LayerNameGCL::create, &LayerNameINL::create},
    {"INL + OPL", &LayerNameINL::create, &LayerNameONL::create},
    {"ONL", &LayerNameONL::create, &LayerNameISe::create},
    {"RPE-OS Complex", &LayerNameISe::create, &LayerNameBM::create},
    {"Complete Retina", &LayerNameILM::create, &LayerNameBM::create},
}};

const Row& rowAt(int row)
{
    constexpr Place place{"libraries/OCTScan/src/data/EtdrsGrid", "kelp::oct::EtdrsTable::rowAt"};
    check(row >= 0 && row < EtdrsTable::nrRows, place, "Tried to measure nonsense values");
    return rows[static_cast<std::size_t>(row)];
}

const Column& columnAt(int column)
{
    constexpr Place place{"libraries/OCTScan/src/data/EtdrsGrid",
                          "kelp::oct::EtdrsTable::columnAt"};
    check(column >= 0 && column < EtdrsTable::nrColumns, place, "The grid has no such column.");
    return columns[static_cast<std::size_t>(column)];
}

/// The column of a sector, indexed by its id.
std::array<std::size_t, EtdrsTable::nrColumns> columnsOfSectors()
{
    std::array<std::size_t, EtdrsTable::nrColumns> result{};
    for (std::size_t column = 0; column < columns.size(); ++column) {
        result[static_cast<std::size_t>(columns[column].sector)] = column;
    }
    return result;
}

/// Null where the layer is not complete and need not be there.
VolumeLayerPtr layerOf(const OCTScanSegmentation& segmentation, const LayerNamePtr& name,
                       bool isRequired)
{
    if (isRequired) {
        return segmentation.getVolumeLayer(name);
    }
    for (int i = 0; i < segmentation.getNrOfBScans(); ++i) {
        const BScanSegmentationPtr bScan = segmentation.getBScanSegmentation(i);
        const QList<LayerNamePtr> names = bScan ? bScan->getAllLayerNames() : QList<LayerNamePtr>();
        const auto isWanted = [&](const LayerNamePtr& other) { return other && *other == *name; };
        if (std::none_of(names.begin(), names.end(), isWanted)) {
            return {};
        }
    }
    return segmentation.getVolumeLayer(name);
}

struct SurfacePair
{
    VolumeLayerPtr top;
    VolumeLayerPtr bottom;
};

struct Sum
{
    double millimetres = 0.0;
    int count = 0;
};

using Sums = std::array<std::array<Sum, EtdrsTable::nrColumns>, EtdrsTable::nrRows>;

void addAScan(Sums& sums, const std::array<SurfacePair, EtdrsTable::nrRows>& pairs,
              std::size_t column, unsigned bScan, unsigned aScan, double axialSpacing)
{
    for (std::size_t row = 0; row < pairs.size(); ++row) {
        const auto& [top, bottom] = pairs[row];
        if (!top || !bottom) {
            continue;
        }
        const int difference = (*bottom)(bScan, aScan) - (*top)(bScan, aScan);
        sums[row][column].millimetres += std::abs(difference) * axialSpacing;
        ++sums[row][column].count;
    }
}

void fillMeans(EtdrsTable& table, const Sums& sums)
{
    for (std::size_t row = 0; row < sums.size(); ++row) {
        for (std::size_t column = 0; column < sums[row].size(); ++column) {
            const Sum& sum = sums[row][column];
            if (sum.count > 0) {
                table.means[row][column] = sum.millimetres / sum.count * 1000.0;
            }
        }
    }
}

/// What the scan's own A-scans have given, and what would follow beyond its borders.
void fillExpected(EtdrsTable& table, const AScansOfSectors& beyondScan)
{
    const auto columnOfSector = columnsOfSectors();
    for (std::size_t sector = 0; sector < beyondScan.size(); ++sector) {
        SectorCoverage& coverage = table.coverage[columnOfSector[sector]];
        coverage.expected = coverage.inside + beyondScan[sector];
    }
}

QString coverageLine(const EtdrsTable& table, const char* label, int SectorCoverage::*number)
{
    QString line = QString::fromLatin1(label);
    for (const SectorCoverage& coverage : table.coverage) {
        line += "\t" + QString::number(coverage.*number);
    }
    return line + "\n";
}

} // namespace

EtdrsSector etdrsSector(const CoordOnLocalizer& point, const CoordOnLocalizer& fovea, bool rightEye)
{
    const double dx = point.x - fovea.x;
    const double dz = point.y - fovea.y;
    const double squaredDistance = dx * dx + dz * dz;
    if (!(squaredDistance > squaredRadius(0))) {
        return EtdrsSector::C;
    }
    const bool isTemporal = dx * (rightEye ? -1.0 : 1.0) > 0.0;
    const bool isInferior = dz > 0.0;
    const bool isSteep = dx == 0.0 || std::abs(dz / dx) > 1.0;
    if (squaredDistance <= squaredRadius(1)) {
        return isSteep ? (isInferior ? EtdrsSector::I1 : EtdrsSector::S1)
                       : (isTemporal ? EtdrsSector::T1 : EtdrsSector::N1);
    }
    if (squaredDistance <= squaredRadius(2)) {
        return isSteep ? (isInferior ? EtdrsSector::I2 : EtdrsSector::S2)
                       : (isTemporal ? EtdrsSector::T2 : EtdrsSector::N2);
    }
    return EtdrsSector::Outside;
}

bool isRightEye(const OCTScan& scan)
{
    const auto localizer = scan.getLocalizer();
    return localizer && localizer->getMetaInfo().value("Laterality").toString() == "R";
}

QString EtdrsTable::rowLabel(int row)
{
    return QString::fromLatin1(rowAt(row).label);
}

QString EtdrsTable::columnLabel(int column)
{
    return QString::fromLatin1(columnAt(column).label);
}

EtdrsSector EtdrsTable::columnSector(int column)
{
    return columnAt(column).sector;
}

LayerNamePtr EtdrsTable::topLayer(int row)
{
    return rowAt(row).top();
}

LayerNamePtr EtdrsTable::bottomLayer(int row)
{
    return rowAt(row).bottom();
}

QString EtdrsTable::cellText(const std::optional<double>& mean)
{
    return mean ? QString("%1").arg(*mean, 3, 'f', 2, QChar(' ')) : QString("-");
}

QString EtdrsTable::toTabSeparated() const
{
    QString text;
    for (int column = 0; column < nrColumns; ++column) {
        text += "\t" + columnLabel(column);
    }
    text += "\n";
    for (int row = 0; row < nrRows; ++row) {
        text += rowLabel(row);
        for (const std::optional<double>& mean : means[static_cast<std::size_t>(row)]) {
            text += "\t" + cellText(mean);
        }
        text += "\n";
    }
    text += coverageLine(*this, "A-scans", &SectorCoverage::counted);
    text += coverageLine(*this, "A-scans expected", &SectorCoverage::expected);
    return text;
}

EtdrsTable measureEtdrs(const OCTScanSegPtr& segmentation, const CoordOnLocalizer& fovea,
                        bool requireAllLayers)
{
    constexpr Place place{"libraries/OCTScan/src/data/EtdrsGrid", "kelp::oct::measureEtdrs"};
    check(!segmentation.isNull(), place, "OCT scan segmentation is null.");
    const OCTScanPtr scan = segmentation->getOCT();
    check(!scan.isNull(), place, "OCT scan is null.");

    std::array<SurfacePair, EtdrsTable::nrRows> pairs;
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        pairs[static_cast<std::size_t>(row)] = {
            layerOf(*segmentation, EtdrsTable::topLayer(row), requireAllLayers),
            layerOf(*segmentation, EtdrsTable::bottomLayer(row), requireAllLayers)};
    }
    const MaskMatrixPtr mask = segmentation->getMask()->getMaskMatrix();
    const auto nrAScans = static_cast<unsigned>(scan->getBScan(0)->getNrAScans());
    check(mask->columns == nrAScans, place, "Mismatch between mask and segmentation columns.");

    const double axialSpacing = scan->getVolumeSpacing().y;
    const bool rightEye = isRightEye(*scan);
    const auto columnOfSector = columnsOfSectors();
    EtdrsTable table;
    Sums sums{};
    for (unsigned i = 0; i < mask->rows; ++i) {
        for (unsigned j = 0; j < nrAScans; ++j) {
            const CoordOnLocalizer position =
                scan->volumeIndexToLocalizerCoords(static_cast<int>(i), static_cast<int>(j));
            const EtdrsSector sector = etdrsSector(position, fovea, rightEye);
            if (sector == EtdrsSector::Outside) {
                continue;
            }
            const std::size_t column = columnOfSector[static_cast<std::size_t>(sector)];
            ++table.coverage[column].inside;
            if ((*mask)(i, j) == 0) {
                ++table.coverage[column].counted;
                addAScan(sums, pairs, column, i, j, axialSpacing);
            }
        }
    }
    fillMeans(table, sums);
    fillExpected(table, aScansBeyondScan(*scan, static_cast<int>(nrAScans), fovea));
    return table;
}

CoordOnLocalizer foveaOrCenter(const OCTScanSegPtr& segmentation)
{
    constexpr Place place{"libraries/OCTScan/src/data/EtdrsGrid", "kelp::oct::foveaOrCenter"};
    check(!segmentation.isNull(), place, "OCT scan segmentation is null.");
    const FoveaPosition fovea = segmentation->getFoveaPosition();
    if (fovea.isSet) {
        return fovea.position;
    }
    check(!segmentation->getOCT().isNull(), place, "OCT scan is null.");
    return CoordOnLocalizer(segmentation->getOCT()->getCenter());
}

} // namespace kelp::oct
