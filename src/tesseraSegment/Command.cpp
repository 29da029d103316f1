#include "Command.h"

#include "ExitStatus.h"
#include "LayerDistributionUtils.h"
#include "MaskFile.h"
#include "ProgramStart.h"
#include "StandardOutput.h"
#include "Startup.h"
#include "Supervisor.h"
#include "kelpException.h"
#include "kelpFileWriter.h"
#include "kelpSignalWatch.h"
#include "kelpTrace.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <ostream>

namespace kelp::command {

namespace {

void printError(const QString& text)
{
    std::fprintf(stderr, "tessera-segment: %s\n", text.toUtf8().constData());
}

int print(const QByteArray& text)
{
    if (!printWhole(text)) {
        printError("Standard output cannot be written.");
        return someFailed;
    }
    return allWell;
}

/// What is traced while exports are listed and stored is of interest to --verbose only.
class TraceChoice
{
public:
    explicit TraceChoice(Talk talk)
    {
        if (talk != Talk::Verbose) {
            Trace::redirect(&m_nowhere);
        }
    }
    ~TraceChoice() { Trace::redirect(nullptr); }
    TraceChoice(const TraceChoice&) = delete;
    TraceChoice& operator=(const TraceChoice&) = delete;

private:
    std::ostream m_nowhere{nullptr};
};

bool anyFailed(const ScanPlan& plan, const QList<ScanOutcome>& outcomes)
{
    return !plan.problems.isEmpty() ||
           std::any_of(outcomes.begin(), outcomes.end(), [](const ScanOutcome& outcome) {
               return outcome.kind == ScanOutcome::Kind::Failed;
           });
}

ScanSettings settingsOf(const Options& options)
{
    ScanSettings settings;
    settings.chain = options.chain;
    settings.etdrsMask = options.etdrsMask;
    settings.centerMask = options.centerMask;
    settings.formats = options.formats;
    if (!options.maskFile.isEmpty()) {
        settings.maskPolygons = readMaskFile(options.maskFile);
    }
    return settings;
}

/// Of several scans the lines above are long; this is what one looks for at the end.
void tellSummary(const ScanPlan& plan, const QList<ScanOutcome>& outcomes, const QString& path)
{
    if (plan.jobs.size() + plan.problems.size() > 1) {
        print(QString("In all: %1, see %2\n").arg(summaryText(plan, outcomes), path).toUtf8());
    }
}

int segment(const Options& options)
{
    const ScanSettings settings = settingsOf(options);
    ResultsFolder results(options.out);
    std::unique_ptr<StoreKeeper> store;
    if (!options.store.isEmpty()) {
        store = std::make_unique<StoreKeeper>(options.store);
    }
    ScanPlan plan =
        planScans(collectExports(options.exports, {options.out, options.store}), options.series);
    assignFolders(plan.jobs, results.getPath());

    Supervisor supervisor(plan, options, settings, results, store.get());
    const SignalWatch signalWatch([&supervisor] { supervisor.interrupt(); });
    if (!supervisor.run()) {
        printError("Interrupted. What was whole stays; the same command goes on from there.");
        return interruptedBy + SignalWatch::receivedSignal();
    }
    const QString summaryPath = results.pathOf("summary.csv");
    kelp::writeFileAtomically(summaryPath, summaryCsv(plan, supervisor.getOutcomes()));
    if (options.talk != Talk::Quiet) {
        tellSummary(plan, supervisor.getOutcomes(), summaryPath);
    }
    return anyFailed(plan, supervisor.getOutcomes()) ? someFailed : allWell;
}

int follow(const Options& options)
{
    switch (options.action) {
    case Options::Action::PrintHelp:
        return print(helpText().toUtf8());
    case Options::Action::PrintVersion:
        return print("tessera-segment " TESSERA_VERSION "\n");
    case Options::Action::PrintModel:
        return print(kelp::oct::LayerDistributionUtils::modelXML());
    case Options::Action::Segment:
        return segment(options);
    }
    return wrongUsage;
}

} // namespace

int runCommand(int argc, char** argv)
{
    preparePlugins();
    const QCoreApplication application(argc, argv);
    Options options;
    try {
        options = parseCommandLine(QCoreApplication::arguments());
    } catch (const UsageError& error) {
        printError(QString::fromUtf8(error.what()));
        std::fprintf(stderr, "%s\n", usageHint().toUtf8().constData());
        return wrongUsage;
    }
    const TraceChoice trace(options.talk);
    traceQtMessages();
    registerScanLibrary();
    try {
        return follow(options);
    } catch (const std::exception& failure) {
        printError(QString::fromUtf8(failure.what()).simplified());
        return someFailed;
    }
}

} // namespace kelp::command
