#pragma once

#include "ExportMetaInfo.h"

#include <QList>
#include <QLocale>
#include <QString>

namespace kelp::oct {

/// One line of what is told of a scan, B-scan or localizer.
struct MetaInfoLine
{
    QString caption;
    QString value;

    friend bool operator==(const MetaInfoLine&, const MetaInfoLine&) = default;
};

/// All values of the meta information in words for the user: numbers with their units, dates and
/// times in the locale's form, the export's abbreviations spelled out. In the order in which one
/// asks for them: what it is, of whom, when, how. Unknown keys come last, by name. A text that is
/// not of the form expected is shown as it is.
QList<MetaInfoLine> metaInfoLines(const MetaInfo& metaInfo, const QLocale& locale);

} // namespace kelp::oct
