#pragma once

#include "ExportList.h"
#include "StoredRecord.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace kelp::command {

/// One scan that the command line asks for.
struct ScanJob
{
    QString input;        ///< canonical path of the XML file
    QString series;       ///< its id
    QString folder;       ///< name of its results folder inside the results folder
    bool isThere = false; ///< whole results of this scan stand in the folder
    StoredRecord record;  ///< what they say, if they do
    QString problem;      ///< why it cannot be segmented at all; empty if it can

    /// For messages: the path and the series.
    QString title() const;
};

struct ScanPlan
{
    QList<ScanJob> jobs;
    QList<InputProblem> problems; ///< inputs that give no scan
    QStringList notes;            ///< what is left out and need not worry anyone
};

/// Reads the series of the exports and chooses those to segment: the OCT series of a pattern that
/// can be segmented, or those whose ids are wanted. A wanted id that no export has is a problem.
ScanPlan planScans(const ExportList& exports, const QStringList& wantedSeries);

/// Gives each job a results folder of its own: <xml base name>_<series id>, or where another input
/// has that name, or wants it in this run, the same with a hash of path and series behind it. The
/// choice does not depend on the order of the jobs. Finds results that are there already.
void assignFolders(QList<ScanJob>& jobs, const QString& resultsFolder);

} // namespace kelp::command
