#include "ChainBench.h"

#include "HeidelbergExport.h"
#include "OCTDecoderHeidelbergXML.h"
#include "SegmentationChains.h"
#include "kelpException.h"
#include "kelpTrace.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QTextStream>

#include <sstream>

namespace {

constexpr int failure = 1;
constexpr int wrongUsage = 2;

int fail(const QString& text, int status)
{
    QTextStream(stderr) << "tessera-bench: " << text << '\n';
    return status;
}

/// The first series of the export that can be segmented.
OCTScanPtr loadScan(const QString& xmlPath)
{
    for (const kelp::oct::ExportSeries& series : kelp::oct::readExportSeries(xmlPath)) {
        if (series.canBeSegmented()) {
            OCTScanPtr scan = kelp::oct::makeScan(xmlPath, series.id, {});
            scan->doBinLoad();
            return scan;
        }
    }
    throw kelp::RuntimeException(xmlPath + " has no series that can be segmented.");
}

} // namespace

int main(int argumentCount, char** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argumentCount, arguments);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Segments the first series of an export and prints what each step costs.");
    parser.addHelpOption();
    parser.addPositionalArgument("EXPORT", "The XML file of an export.");
    parser.addOption({"chain", "normal, drusen or mouse.", "name", "normal"});
    parser.addOption(
        {"boost", "Also solve every cut with Boost.Graph and compare labels and times."});
    parser.addOption({"trace", "Let the trace lines through."});
    parser.process(application);
    const auto chain = kelp::oct::chainFromName(parser.value("chain"));
    if (!chain) {
        return fail("--chain must be normal, drusen or mouse.", wrongUsage);
    }
    if (parser.positionalArguments().size() != 1) {
        return fail("One export is needed.", wrongUsage);
    }
    std::ostringstream trace;
    if (!parser.isSet("trace")) {
        kelp::Trace::redirect(&trace);
    }
    int status = 0;
    try {
        createOCTDecoderHeidelbergXMLFactory();
        kelp::oct::bench::ChainBench bench(parser.isSet("boost"));
        bench.run(loadScan(parser.positionalArguments().front()), *chain);
        bench.print();
        status = bench.isEqualToBoost() ? 0 : failure;
    } catch (const kelp::Exception& exception) {
        status = fail(QString::fromUtf8(exception.what()), failure);
    }
    kelp::Trace::redirect(nullptr);
    return status;
}
