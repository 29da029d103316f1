#include "Supervisor.h"

#include "kelpCheck.h"
#include "kelpException.h"

#include <algorithm>

namespace kelp::command {

namespace {

constexpr const char* sourcePath = "src/tesseraSegment/Supervisor";
constexpr int refreshMilliseconds = 500;

} // namespace

QString problemText(const QString& input, const QString& reason)
{
    const QString text = reason.simplified();
    return text.startsWith(input) ? text : QString("%1: %2").arg(input, text);
}

Supervisor::Supervisor(const ScanPlan& plan, const Options& options, const ScanSettings& settings,
                       ResultsFolder& results, StoreKeeper* store)
    : m_plan(plan), m_options(options), m_settings(settings), m_results(results), m_store(store),
      m_display(options.talk, static_cast<int>(std::count_if(
                                  plan.jobs.begin(), plan.jobs.end(),
                                  [this](const ScanJob& job) { return isToBeSegmented(job); })))
{
    for (int i = 0; i < plan.jobs.size(); ++i) {
        m_outcomes.append(ScanOutcome());
    }
    KELP_CONNECT(sourcePath,
                 connect(&m_refreshTimer, SIGNAL(timeout()), this, SLOT(refreshDisplay())));
    m_refreshTimer.start(refreshMilliseconds);
}

bool Supervisor::isToBeSegmented(const ScanJob& job) const
{
    return job.problem.isEmpty() && (!job.isThere || m_options.force);
}

bool Supervisor::run()
{
    settleOthers();
    startWaiting();
    if (!m_processes.empty() && !m_interrupted) {
        m_loop.exec();
    }
    return !m_interrupted;
}

void Supervisor::interrupt()
{
    m_interrupted = true;
    m_waiting.clear();
    m_processes.clear();
    m_loop.quit();
}

void Supervisor::refreshDisplay()
{
    m_display.refresh();
}

void Supervisor::settleOthers()
{
    for (const QString& note : m_plan.notes) {
        m_display.print(note);
    }
    for (const InputProblem& problem : m_plan.problems) {
        m_display.printProblem(problemText(problem.input, problem.reason));
    }
    for (int i = 0; i < m_plan.jobs.size(); ++i) {
        const ScanJob& job = m_plan.jobs[i];
        if (!job.problem.isEmpty()) {
            fail(i, job.problem);
        } else if (isToBeSegmented(job)) {
            m_waiting.append(i);
        } else {
            skip(i);
        }
    }
}

void Supervisor::skip(int index)
{
    const ScanJob& job = m_plan.jobs[index];
    ScanOutcome& outcome = m_outcomes[index];
    outcome.kind = ScanOutcome::Kind::Skipped;
    outcome.record = job.record;
    outcome.reason = "is there already";
    const QString difference = describeDifference(job.record.settings, m_settings);
    if (!difference.isEmpty()) {
        outcome.reason += QString(", but made with other settings: %1").arg(difference);
    }
    m_display.print(QString("%1: skipped, %2 (--force redoes it)").arg(job.folder, outcome.reason));
    keepInStore(index, StoreKeeper::Segmentations::OnlyTheFirst);
}

void Supervisor::startWaiting()
{
    while (!m_waiting.isEmpty() && static_cast<int>(m_processes.size()) < m_options.jobs) {
        startScan(m_waiting.takeFirst());
    }
    if (m_processes.empty()) {
        m_loop.quit();
    }
}

void Supervisor::startScan(int index)
{
    const ScanJob& job = m_plan.jobs[index];
    m_display.start(index, job.folder);
    try {
        ScanRequest request;
        request.input = job.input;
        request.series = job.series;
        request.settings = m_settings;
        request.buildFolder = m_results.makeBuildFolder(job.folder);
        request.verbose = m_options.talk == Talk::Verbose;
        m_buildFolders[index] = request.buildFolder;
        m_timers[index].start();
        auto& process = m_processes[index];
        ScanProcessListener& listener = *this;
        process = std::make_unique<ScanProcess>(index, listener);
        process->start(request);
    } catch (const kelp::Exception& failure) {
        fail(index, QString::fromUtf8(failure.what()));
    }
}

void Supervisor::scanTold(int job, const ScanMessage& message)
{
    if (message.kind == ScanMessage::Kind::Progress) {
        m_display.advance(job, message.percentage, message.text);
    } else {
        m_display.trace(job, message.text);
    }
}

void Supervisor::scanEnded(int job, const QString& failure)
{
    // The process object is on the call stack; it goes when the loop is back.
    m_processes.at(job).release()->deleteLater();
    m_processes.erase(job);
    if (!failure.isEmpty()) {
        fail(job, failure);
    } else {
        try {
            publish(job);
            keepInStore(job, StoreKeeper::Segmentations::Add);
        } catch (const kelp::Exception& exception) {
            fail(job, QString::fromUtf8(exception.what()));
        }
    }
    startWaiting();
}

void Supervisor::publish(int index)
{
    const ScanJob& job = m_plan.jobs[index];
    const auto record = StoredRecord::read(m_buildFolders.at(index) + "/run.json");
    if (!record) {
        throw IOFailure("The record of the run cannot be read back.");
    }
    m_results.publish(m_buildFolders.at(index), job.folder, [&job](const QString& place) {
        const auto there = StoredRecord::read(place + "/run.json");
        return there && there->input == job.input && there->series == job.series;
    });
    m_outcomes[index] = {ScanOutcome::Kind::Segmented, QString(), *record};
    const QString duration = durationText(m_timers.at(index).elapsed());
    m_display.finish(index, QString("segmented in %1%2, see %3")
                                .arg(duration, withWarnings(record->nrWarnings()),
                                     m_results.pathOf(job.folder)));
    tellAbout(job, *record);
}

void Supervisor::tellAbout(const ScanJob& job, const StoredRecord& record)
{
    if (record.fill.pixels > 0) {
        m_display.print(QString("%1: white without data (the device's fill), %2 pixels in %3, "
                                "was taken as black")
                            .arg(job.folder)
                            .arg(record.fill.pixels)
                            .arg(counted(record.fill.bScans, "B-scan")));
    }
    const QStringList cutSectors = record.etdrs.cutSectors();
    if (!cutSectors.isEmpty()) {
        // Most scans are smaller than the grid: a thing to know, and no problem of the run.
        m_display.print(
            QString(cutSectors.size() == 1
                        ? "%1: the border of the scan cuts the ETDRS sector %2, its mean is that "
                          "of the rest"
                        : "%1: the border of the scan cuts the ETDRS sectors %2, their means are "
                          "those of the rest")
                .arg(job.folder, cutSectors.join(", ")));
    }
    for (const QString& warning : record.warnings.value_or(QStringList())) {
        // Only the word tells it from the reason of a failure, which is printed alike.
        m_display.printProblem(problemText(job.title(), "warning: " + warning));
    }
}

void Supervisor::keepInStore(int index, StoreKeeper::Segmentations segmentations)
{
    if (m_store == nullptr) {
        return;
    }
    const ScanJob& job = m_plan.jobs[index];
    try {
        m_store->keep(job.input, job.series, m_results.pathOf(job.folder), segmentations);
    } catch (const kelp::Exception& failure) {
        fail(index, QString("The results stand in %1, but are not in the store: %2")
                        .arg(m_results.pathOf(job.folder), QString::fromUtf8(failure.what())));
    }
}

void Supervisor::fail(int index, const QString& reason)
{
    const auto buildFolder = m_buildFolders.find(index);
    if (buildFolder != m_buildFolders.end()) {
        m_results.discard(buildFolder->second);
    }
    m_outcomes[index].kind = ScanOutcome::Kind::Failed;
    m_outcomes[index].reason = reason.simplified();
    m_display.finish(index, QString());
    m_display.printProblem(problemText(m_plan.jobs[index].title(), reason));
}

} // namespace kelp::command
