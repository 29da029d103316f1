#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace kelp::command {

/// An input that cannot be worked on, and why.
struct InputProblem
{
    QString input;
    QString reason;
};

/// The XML files that the command line names.
struct ExportList
{
    QStringList files; ///< canonical paths, each once
    QList<InputProblem> problems;
};

/// Folders stand for every *.xml below them, sorted by path; links are followed, each folder and
/// file once. What lies below one of the folders of excluded (results, store) is left out, unless
/// it is named as a file.
ExportList collectExports(const QStringList& inputs, const QStringList& excluded);

} // namespace kelp::command
