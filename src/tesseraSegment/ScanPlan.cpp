#include "ScanPlan.h"

#include "DataTreeNode.h"
#include "HeidelbergExport.h"
#include "kelpException.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>

namespace kelp::command {

namespace {

using kelp::oct::ExportSeries;

/// File systems take 255 bytes for a name; the rest is for the hash.
constexpr int maximumNameBytes = 200;
constexpr int hashDigits = 10;

bool isWanted(const ExportSeries& series, const QStringList& wantedSeries)
{
    return wantedSeries.isEmpty() ? series.canBeSegmented() : wantedSeries.contains(series.id);
}

QString describeType(const ExportSeries& series)
{
    return series.type.isEmpty() ? QString("no type") : QString("type \"%1\"").arg(series.type);
}

/// Why a series that was asked for cannot be segmented; empty if it can.
QString problemOf(const ExportSeries& series)
{
    if (series.canBeSegmented()) {
        return {};
    }
    if (!series.isOCT()) {
        return "The series holds no OCT scan.";
    }
    return QString("A series of %1 cannot be segmented.").arg(describeType(series));
}

QString describeNothingToDo(const QList<ExportSeries>& allSeries)
{
    if (allSeries.isEmpty()) {
        return "The file is no export: it holds no series.";
    }
    QStringList types;
    for (const ExportSeries& series : allSeries) {
        if (series.isOCT()) {
            types.append(QString("series %1 is of %2").arg(series.id, describeType(series)));
        }
    }
    if (types.isEmpty()) {
        return "The export holds no OCT series.";
    }
    return QString("The export holds no OCT series that can be segmented: %1.")
        .arg(types.join(", "));
}

/// Adds the scans of one export to the plan.
class ExportPlanner
{
public:
    ExportPlanner(ScanPlan& plan, const QStringList& wantedSeries)
        : m_plan(plan), m_wantedSeries(wantedSeries)
    {
    }

    void add(const QString& file)
    {
        QList<ExportSeries> allSeries;
        try {
            allSeries = kelp::oct::readExportSeries(file);
        } catch (const kelp::Exception& failure) {
            m_plan.problems.append({file, QString::fromUtf8(failure.what())});
            return;
        }
        m_seenIds.clear();
        bool chosen = false;
        for (const ExportSeries& series : allSeries) {
            chosen = addSeries(file, series) || chosen;
        }
        // With named series it is no fault of an export to have none of them.
        if (!chosen && (m_wantedSeries.isEmpty() || allSeries.isEmpty())) {
            m_plan.problems.append({file, describeNothingToDo(allSeries)});
        } else {
            addNotes(file, allSeries);
        }
    }

    /// Wanted ids that no export has.
    void finish(bool anyExport)
    {
        for (const QString& id : m_wantedSeries) {
            if (anyExport && !m_foundIds.contains(id)) {
                m_plan.problems.append({"--series " + id, "No export has a series of this id."});
                m_foundIds.insert(id);
            }
        }
    }

private:
    bool addSeries(const QString& file, const ExportSeries& series)
    {
        if (!isWanted(series, m_wantedSeries)) {
            return false;
        }
        m_foundIds.insert(series.id);
        ScanJob job;
        job.input = file;
        job.series = series.id;
        job.problem = problemOf(series);
        if (m_seenIds.contains(series.id)) {
            m_plan.problems.append(
                {job.title(), "The id stands in the export twice; only the first can be read."});
            return true;
        }
        m_seenIds.insert(series.id);
        m_plan.jobs.append(job);
        return true;
    }

    void addNotes(const QString& file, const QList<ExportSeries>& allSeries)
    {
        if (!m_wantedSeries.isEmpty()) {
            return;
        }
        for (const ExportSeries& series : allSeries) {
            if (series.isOCT() && !series.canBeSegmented()) {
                m_plan.notes.append(QString("%1, series %2: left out, %3 cannot be segmented")
                                        .arg(file, series.id, describeType(series)));
            }
        }
    }

    ScanPlan& m_plan;
    QStringList m_wantedSeries;
    QSet<QString> m_seenIds;
    QSet<QString> m_foundIds;
};

QString plainName(const ScanJob& job)
{
    QString name = DataTreeNode::makeIdValid(QFileInfo(job.input).completeBaseName()) + '_' +
                   DataTreeNode::makeIdValid(job.series);
    if (name.startsWith('.')) {
        name[0] = '_'; // results are not to be hidden
    }
    while (name.toUtf8().size() > maximumNameBytes) {
        name.chop(1);
    }
    return name;
}

/// Tells inputs apart whose plain names are equal. Nothing but the input goes into it.
QString hashedName(const ScanJob& job)
{
    const QByteArray identity = job.input.toUtf8() + '\0' + job.series.toUtf8();
    const QByteArray hash =
        QCryptographicHash::hash(identity, QCryptographicHash::Sha256).toHex().left(hashDigits);
    return plainName(job) + '-' + QString::fromLatin1(hash);
}

/// Whether whole results of this job stand in the folder; notes what they say.
bool findResults(ScanJob& job, const QString& resultsFolder, const QString& name)
{
    const auto record = StoredRecord::read(resultsFolder + '/' + name + "/run.json");
    if (!record || record->input != job.input || record->series != job.series) {
        return false;
    }
    job.folder = name;
    job.isThere = true;
    job.record = *record;
    return true;
}

} // namespace

QString ScanJob::title() const
{
    return QString("%1, series %2").arg(input, series);
}

ScanPlan planScans(const ExportList& exports, const QStringList& wantedSeries)
{
    ScanPlan plan;
    plan.problems = exports.problems;
    ExportPlanner planner(plan, wantedSeries);
    for (const QString& file : exports.files) {
        planner.add(file);
    }
    planner.finish(!exports.files.isEmpty());
    return plan;
}

void assignFolders(QList<ScanJob>& jobs, const QString& resultsFolder)
{
    // Names that differ in case only would meet on file systems that do not tell cases apart.
    QHash<QString, int> wishes;
    for (const ScanJob& job : jobs) {
        ++wishes[plainName(job).toLower()];
    }
    for (ScanJob& job : jobs) {
        const QString plain = plainName(job);
        const QString hashed = hashedName(job);
        if (findResults(job, resultsFolder, hashed) || findResults(job, resultsFolder, plain)) {
            continue;
        }
        const bool plainIsFree =
            wishes.value(plain.toLower()) == 1 && !QFileInfo::exists(resultsFolder + '/' + plain);
        job.folder = plainIsFree ? plain : hashed;
        if (!plainIsFree && QFileInfo::exists(resultsFolder + '/' + hashed)) {
            job.problem = QString("%1/%2 is there but holds no whole results; move it away.")
                              .arg(resultsFolder, hashed);
        }
    }
}

} // namespace kelp::command
