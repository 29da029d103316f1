#pragma once

#include "CoordOnLocalizer.h"
#include "ReferenceFolder.h"
#include "UsageError.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace kelp::compare {

/// What the command is asked to do.
struct Options
{
    enum class Action
    {
        Compare,
        PrintVersion,
        PrintHelp
    };

    Action action = Action::Compare;
    QString a;
    QString b;
    QString out; ///< empty: nothing is written
    QStringList maps;
    ColumnNames columns;
    QString tablesA;
    QString tablesB;
    std::optional<double> axialMicrometres;
    std::optional<CoordOnLocalizer> fovea;
    bool samePlaces = false;

    /// As on the command line, for the record of a comparison.
    QStringList words() const;
};

/// arguments: with the program's name in front. Throws UsageError.
Options parseCommandLine(const QStringList& arguments);

QString helpText();
QString usageHint();

} // namespace kelp::compare
