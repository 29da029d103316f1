#pragma once

#include "DataIOManager.h"

#include <QStringList>

#include <functional>

/// Carries patients with everything they need from one store to another, in a folder named
/// "Export__" and digits. No window: progress and questions go through functions.
namespace kelp::exchange {

/// done of all; false stops.
using Progress = std::function<bool(int done, int all, const QString& what)>;

struct Report
{
    /// The folder written or read.
    QString folder;
    /// Names of the patients carried over, of those that were there already, and of those that the
    /// user had replaced.
    QStringList carried;
    QStringList present;
    QStringList replaced;
    /// What could not be carried, each with its reason: patient or file.
    QStringList problems;
    int files = 0;
    qint64 bytes = 0;
    bool cancelled = false;
    bool isImport = false;

    /// As many problems as fit a box without filling the screen; all of them stand in problems.
    static constexpr int shownProblems = 5;
    /// What the user reads at the end.
    QString summary() const;
};

/// Writes a new folder below the destination: the patients' stored trees and every file that they
/// name, also those outside the store's own folder, with the trees pointing at the copies. A
/// cancelled or failed export leaves no folder. Throws kelp::IOFailure.
Report exportPatients(const QList<DataPointer<Patient>>& patients, const QString& destination,
                      const Progress& progress);

/// What to do with a patient that the store has already (same GUID).
enum class Present
{
    Keep,
    Replace,
    /// The import ends before this patient.
    Cancel
};
using Question = std::function<Present(const Patient& present)>;

/// Reads such a folder into the open store (the list's own object stands for a replaced patient,
/// but with new studies): same ids, GUIDs and content, files below the store's binary folder.
/// Nothing is overwritten without the question's consent. A patient is stored only when all its
/// files are there. Throws kelp::IOFailure for a folder that is no export.
Report importPatients(const QString& folder, const Progress& progress, const Question& question);

/// Whether this folder looks like an export.
bool isExportFolder(const QString& folder);

} // namespace kelp::exchange
