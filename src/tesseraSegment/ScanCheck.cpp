#include "ScanCheck.h"

#include "OCTScanChecks.h"
#include "kelpException.h"

namespace kelp::command {

namespace {

void requireExtent(int extent, const QString& what)
{
    if (extent < minimumExtent) {
        throw ParsingError(QString("The scan has too few %1: %2, but at least %3 are needed.")
                               .arg(what)
                               .arg(extent)
                               .arg(minimumExtent));
    }
}

} // namespace

void loadAndCheck(const OCTScanPtr& scan)
{
    kelp::oct::loadScan(*scan);
    // A localizer that cannot be read does not keep the scan from loading, but the export is
    // damaged all the same.
    if (!scan->getLoadProblem().isEmpty()) {
        throw IOFailure(scan->getLoadProblem());
    }
    kelp::oct::checkReadyForSegmentation(*scan);
    const auto image = scan->getBScan(0)->getImage();
    requireExtent(image->getColumns(), "A-scans");
    requireExtent(image->getRows(), "rows");
    if (*scan->getScanPattern() == kelp::oct::OCTScanPatternVolume()) {
        requireExtent(scan->getBScanCount(), "B-scans");
    }
}

} // namespace kelp::command
