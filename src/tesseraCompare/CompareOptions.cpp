#include "CompareOptions.h"

#include "OptionValue.h"

#include <QCommandLineParser>

#include <cmath>

namespace kelp::compare {

using command::optionValue;
using command::refuse;

namespace {

const QString anyTable = "*.tsv";

/// Micrometres; far beyond what any device has.
constexpr double lowestAxial = 0.01;
constexpr double highestAxial = 1000.0;

void addOptions(QCommandLineParser& parser)
{
    parser.addOptions({
        {"out", "", "DIR"},
        {"map", "", "NAME=IDENTIFIER"},
        {"tables-a", "", "GLOB"},
        {"tables-b", "", "GLOB"},
        {"axial-micrometres", "", "X"},
        {"fovea", "", "X,Y"},
        {"same-places", ""},
        {"version", ""},
        {{"h", "help"}, ""},
    });
}

std::optional<double> readNumber(const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<double> readAxial(const QCommandLineParser& parser)
{
    const QString text = optionValue(parser, "axial-micrometres");
    if (text.isEmpty()) {
        return std::nullopt;
    }
    const auto number = readNumber(text);
    if (!number || *number < lowestAxial || *number > highestAxial) {
        refuse(QString("--axial-micrometres is a number from %1 to %2, not \"%3\".")
                   .arg(lowestAxial)
                   .arg(highestAxial)
                   .arg(text));
    }
    return number;
}

std::optional<CoordOnLocalizer> readFovea(const QCommandLineParser& parser)
{
    const QString text = optionValue(parser, "fovea");
    if (text.isEmpty()) {
        return std::nullopt;
    }
    const QStringList parts = text.split(',');
    const auto x = readNumber(parts.first());
    const auto y = readNumber(parts.last());
    if (parts.size() != 2 || !x || !y) {
        refuse(QString("--fovea is a place X,Y on the localizer in mm, not \"%1\".").arg(text));
    }
    return CoordOnLocalizer(*x, *y);
}

void readInputs(const QCommandLineParser& parser, Options& options)
{
    const QStringList inputs = parser.positionalArguments();
    if (inputs.size() != 2) {
        refuse(QString("Two results are compared, A and B; %1.")
                   .arg(inputs.isEmpty() ? QString("none is given")
                                         : QString("%1 given").arg(inputs.size())));
    }
    if (inputs.contains(QString())) {
        refuse("A result with an empty name is given.");
    }
    options.a = inputs[0];
    options.b = inputs[1];
}

} // namespace

Options parseCommandLine(const QStringList& arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments)) {
        refuse(parser.errorText());
    }
    Options options;
    if (parser.isSet("help")) {
        options.action = Options::Action::PrintHelp;
        return options;
    }
    if (parser.isSet("version")) {
        options.action = Options::Action::PrintVersion;
        return options;
    }
    readInputs(parser, options);
    options.out = optionValue(parser, "out");
    options.maps = parser.values("map");
    options.columns = ColumnNames::fromTexts(options.maps);
    options.tablesA = optionValue(parser, "tables-a", anyTable);
    options.tablesB = optionValue(parser, "tables-b", anyTable);
    options.axialMicrometres = readAxial(parser);
    options.fovea = readFovea(parser);
    options.samePlaces = parser.isSet("same-places");
    return options;
}

QStringList Options::words() const
{
    QStringList words;
    for (const QString& map : maps) {
        words += {"--map", map};
    }
    if (tablesA != anyTable) {
        words += {"--tables-a", tablesA};
    }
    if (tablesB != anyTable) {
        words += {"--tables-b", tablesB};
    }
    if (axialMicrometres) {
        words += {"--axial-micrometres", QString::number(*axialMicrometres)};
    }
    if (fovea) {
        words += {"--fovea", QString("%1,%2").arg(fovea->x).arg(fovea->y)};
    }
    if (samePlaces) {
        words += "--same-places";
    }
    return words;
}

QString helpText()
{
    return R"(Usage: tessera-compare [options] A B

Tells how far the surfaces and thicknesses of A and B are apart: two versions of the
program, before and after a correction, two graders, two sessions. For research only.

A and B are each one of
  - the folder of one scan that tessera-segment wrote (or layer_*.csv exported by the
    application),
  - a folder of such folders; scans are paired by the name of their folder,
  - a folder of reference tables, or one such table: a table a B-scan, in the natural
    order of their names. The first line names the columns; the first column numbers
    the A-scans from 0, each other column is a surface in image rows from the top,
    empty where it is not drawn; the separator is the tab.

  --out DIR         also write CSV files, compare.json and pictures into this folder: a
                    new one, an empty one, or one of an earlier comparison, whose files
                    then give way to the new ones
  --map NAME=IDENTIFIER
                    the column NAME of the tables is this surface: ILM, GCL, INL, ONL,
                    ISe, IRPE or BM (repeatable). A column with such a name needs none.
  --tables-a GLOB   which files of A are tables (default "*.tsv")
  --tables-b GLOB   the same for B
  --axial-micrometres X
                    height of a row where both are tables; else run.json tells it
  --fovea X,Y       center of the ETDRS sectors on the localizer in mm where scans are
                    compared by place; default: that of A
  --same-places     take the A-scans of both to lie at the same places of the eye, though
                    the images differ: follow-up scans of the device, or an export whose
                    images were processed
  --version         print the version and end
  --help            print this and end

All differences are A - B over the A-scans that both have; a positive one says that the
surface of A lies deeper, or that the layer of A is thicker.
  mean |d|          mean absolute difference
  mean              signed mean
  SD                standard deviation, with n - 1
  median            median of the signed differences
  P95 |d|           95th percentile of the absolute differences, interpolated between
                    the two nearest
  about mean        mean absolute difference after the signed mean of the same line is
                    taken off each: what is left between two conventions of a surface
  limits            95 % limits of agreement, mean - 1.96 SD and mean + 1.96 SD

In the sectors of one scan SD and limits are those of the A-scans: how far A and B are
apart in single A-scans, not in the mean of the sector. Neighbouring A-scans are not
independent of each other, so nothing about the certainty of a mean follows from their
number. Of several scans, "over the scans" and agreement.csv have the limits of the
sector means, one mean a scan, which are those of two methods; the line "all" takes all
sectors together, and those of one eye are not independent either.

B-scans count from 1. A star, or the column "cut in" of sectors.csv, marks sectors that
the border of the scan cuts, so that their mean is not that of the whole sector.

Thickness is the distance of a layer's two surfaces. Two segmentations of the same
B-scans are compared by place, and the sectors lie around the fovea of A for both; so
are results of which one does not tell its B-scans (tables, exported layers). Two
sessions, two eyes and scans of different sizes are compared by their sector means, each
around its own fovea and over its own A-scans.

What was not compared, or with care, is said on standard error: "note: " and a sentence.
Exit status: 0 all well, 1 something could not be compared or written, 2 wrong usage.
)";
}

QString usageHint()
{
    return "Usage: tessera-compare [options] A B   (tessera-compare --help lists the options)";
}

} // namespace kelp::compare
