#include "OCTDescriptions.h"

#include "DataDescription.h"
#include "OCTScanSegmentation.h"

namespace {

using Facts = QList<QPair<QString, QString>>;

void addScanFacts(const OCTScan& scan, Facts& facts)
{
    const QString series = scan.getUri("OCTScanURI").queryItem("seriesId");
    if (!series.isEmpty()) {
        facts.append({"Series", series});
    }
    if (!scan.getLoadProblem().isEmpty()) {
        facts.append({"Cannot be read", scan.getLoadProblem()});
    }
    if (!scan.isLoaded()) {
        return;
    }
    facts.append({"Pattern", scan.getScanPattern()->toString()});
    if (scan.getAnatomicalTarget()) {
        facts.append({"Eye", scan.getAnatomicalTarget()->toString()});
    }
    facts.append({"B-scans", QString::number(scan.getBScanCount())});
}

DataDescription describeScan(const Data& data)
{
    DataDescription description{"OCT scan", {}, nullptr};
    if (const auto* const scan = qobject_cast<const OCTScan*>(&data)) {
        addScanFacts(*scan, description.facts);
    }
    return description;
}

DataDescription describeSegmentation(const Data& data)
{
    DataDescription description{"Segmentation", {}, nullptr};
    const auto* const segmentation = qobject_cast<const kelp::oct::OCTScanSegmentation*>(&data);
    if (!segmentation) {
        return description;
    }
    description.madeFrom = segmentation->getOCT();
    // Decoding a stored one here would load its scan.
    if (segmentation->isDecoded()) {
        QStringList names;
        for (const kelp::oct::LayerNamePtr& name : segmentation->getAllLayerNames()) {
            names.append(name->getIdentifier());
        }
        description.facts.append(
            {"Layers", names.isEmpty()
                           ? QString("none")
                           : QString("%1 (%2)").arg(names.size()).arg(names.join(", "))});
    }
    return description;
}

} // namespace

int createOCTDescriptions()
{
    static const bool registered = [] {
        registerDataDescriber(OCTScan::classId().toQString(), describeScan);
        registerDataDescriber(kelp::oct::OCTScanSegmentation::typeName().toQString(),
                              describeSegmentation);
        return true;
    }();
    static_cast<void>(registered);
    return 1;
}
