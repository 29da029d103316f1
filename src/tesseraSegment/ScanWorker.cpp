#include "ScanWorker.h"

#include "ChainRun.h"
#include "HeidelbergExport.h"
#include "PixelDigest.h"
#include "ProgramStart.h"
#include "Protocol.h"
#include "ResultWriter.h"
#include "RunRecord.h"
#include "ScanCheck.h"
#include "SegmentationQuality.h"
#include "Startup.h"
#include "kelpException.h"
#include "kelpFileWriter.h"
#include "kelpTrace.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QHash>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>

#include <sys/prctl.h>
#include <unistd.h>

namespace kelp::command {

namespace {

using Kind = ScanMessage::Kind;

constexpr int failed = 1;

/// What share of the percentage shown the chain has; before it the scan is read, behind it the
/// results are written.
constexpr int chainStart = 2;
constexpr int chainEnd = 85;

QString stepWords(const QString& step)
{
    static const QHash<QString, QString> words{
        {"segmentCoarse", "coarse layers"},           {"segmentILMFine", "ILM, fovea and masks"},
        {"segmentRPEHumanHealthy", "ISe and BM"},     {"segmentBMFine", "BM"},
        {"segmentISeIRPEFineDrusen", "ISe and IRPE"}, {"segmentPEFineConstant", "ISe and BM"},
        {"segmentInnerHumanHealthy", "inner layers"}, {"segmentInnerFineConstant", "inner layers"},
    };
    return words.value(step, step);
}

/// The process must not go on when the command that started it is gone, which may have happened
/// before this begins.
void endWithParent(pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        std::raise(SIGKILL);
    }
}

std::ostream& nowhere()
{
    static std::ostream stream(nullptr);
    return stream;
}

/// Where the trace lines of the scan go for the time that this lives.
class TraceTarget
{
public:
    TraceTarget(const ScanRequest& request, MessageSender& sender)
        : m_path(request.buildFolder + "/trace.log"), m_buffer(sender)
    {
        if (request.verbose) {
            m_stream = std::make_unique<std::ostream>(&m_buffer);
        } else {
            m_stream = std::make_unique<std::ofstream>(QFile::encodeName(m_path).constData());
        }
        Trace::redirect(m_stream.get());
    }

    ~TraceTarget() { Trace::redirect(&nowhere()); }
    TraceTarget(const TraceTarget&) = delete;
    TraceTarget& operator=(const TraceTarget&) = delete;

    /// Throws IOFailure if not every line could be written.
    void requireWhole()
    {
        m_stream->flush();
        if (!m_stream->good()) {
            throw IOFailure(QString("%1 cannot be written.").arg(m_path));
        }
    }

private:
    QString m_path;
    TraceBuffer m_buffer;
    std::unique_ptr<std::ostream> m_stream;
};

/// Segments the scan of one request.
class ScanWorker
{
public:
    ScanWorker(const ScanRequest& request, MessageSender& sender)
        : m_request(request), m_sender(sender)
    {
    }

    void run()
    {
        QElapsedTimer timer;
        timer.start();
        TraceTarget trace(m_request, m_sender);
        tellProgress(0, "reading");
        const OCTScanPtr scan = kelp::oct::makeScan(m_request.input, m_request.series, {});
        loadAndCheck(scan);
        const OCTScanSegPtr segmentation(new kelp::oct::OCTScanSegmentation(scan));
        for (const QPolygonF& polygon : m_request.settings.maskPolygons) {
            segmentation->getMask()->addPolygon(polygon);
        }

        RunRecord record = describe(*scan);
        record.steps = segment(segmentation);
        record.fovea = segmentation->getFoveaPosition();
        const CoordOnLocalizer gridCenter = kelp::oct::foveaOrCenter(segmentation);
        record.etdrs = kelp::oct::measureEtdrs(segmentation, gridCenter, false);
        record.places = AScanPlaces::of(*scan);
        record.grid = SectorGrid::of(*scan, gridCenter);
        record.warnings = kelp::oct::qualityWarnings(record.steps);
        record.layers = finalLayers(segmentation);
        record.notFound = kelp::oct::surfacesNotFound(record.steps);
        writeResults(segmentation, record, m_request.buildFolder,
                     [this](const QString& what, int percentage) {
                         tellProgress(chainEnd + (100 - chainEnd) * percentage / 100, what);
                     });
        trace.requireWhole();
        record.seconds = static_cast<double>(timer.elapsed()) / 1000.0;
        record.peakMemoryBytes = kelp::oct::peakResidentBytes();
        // Last, since its presence means that everything else is there.
        kelp::writeFileAtomically(m_request.buildFolder + "/run.json", record.toJson());
    }

private:
    void tellProgress(int percentage, const QString& phase)
    {
        m_sender.send({Kind::Progress, percentage, phase});
    }

    RunRecord describe(const OCTScan& scan) const
    {
        RunRecord record;
        record.input = m_request.input;
        record.series = m_request.series;
        record.pattern = scan.getScanPattern()->toString();
        record.eye = scan.getAnatomicalTarget()->toString();
        record.size = scan.getVolumeSize();
        record.spacing = scan.getVolumeSpacing();
        record.pixelDigest = pixelDigest(scan);
        record.fill = kelp::oct::countDeviceFill(scan);
        record.settings = m_request.settings;
        return record;
    }

    std::vector<kelp::oct::StepStatistics> segment(const OCTScanSegPtr& segmentation)
    {
        ChainRun chain([this](const ChainProgress& progress) {
            tellProgress(chainStart + (chainEnd - chainStart) * progress.percentage / 100,
                         QString("step %1 of %2: %3")
                             .arg(progress.step)
                             .arg(progress.nrSteps)
                             .arg(stepWords(progress.stepName)));
        });
        return chain.run(segmentation, m_request.settings.chain, m_request.settings.etdrsMask,
                         m_request.settings.centerMask);
    }

    static QStringList finalLayers(const OCTScanSegPtr& segmentation)
    {
        QStringList identifiers;
        for (const auto& name : segmentation->getAllLayerNames()) {
            if (name->isFinal()) {
                identifiers.append(name->getIdentifier());
            }
        }
        return identifiers;
    }

    ScanRequest m_request;
    MessageSender& m_sender;
};

} // namespace

int runScanWorker(int argc, char** argv)
{
    endWithParent(static_cast<pid_t>(std::atol(argv[2])));
    // Ctrl-C reaches all processes of the terminal; the command alone decides what comes of it.
    std::signal(SIGINT, SIG_IGN);
    // Pictures are painted, but nothing is ever shown.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    preparePlugins();
    // Nothing but messages may reach standard output.
    Trace::redirect(&nowhere());
    traceQtMessages();
    const QGuiApplication application(argc, argv);
    registerScanLibrary();
    MessageSender sender;
    try {
        QFile input;
        input.open(stdin, QIODevice::ReadOnly);
        ScanWorker(ScanRequest::fromJson(input.readAll()), sender).run();
    } catch (const std::bad_alloc&) {
        sender.send({Kind::Failure, 0, "There is not enough memory."});
        return failed;
    } catch (const std::exception& failure) {
        sender.send({Kind::Failure, 0, QString::fromUtf8(failure.what())});
        return failed;
    }
    sender.send({Kind::Done, 100, QString()});
    return 0;
}

} // namespace kelp::command
