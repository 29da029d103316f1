#include "CommandLine.h"

#include "OptionValue.h"

#include <QCommandLineParser>

#include <array>
#include <utility>

namespace kelp::command {

namespace {

constexpr int maximumJobs = 256;

constexpr std::array<std::pair<const char*, bool Formats::*>, 6> formatNames{{
    {"positions", &Formats::positions},
    {"thickness", &Formats::thickness},
    {"raw", &Formats::raw},
    {"metaimage", &Formats::metaimage},
    {"etdrs", &Formats::etdrs},
    {"pictures", &Formats::pictures},
}};

QString allFormatNames()
{
    QStringList names;
    for (const auto& [name, member] : formatNames) {
        names.append(name);
    }
    return names.join(", ");
}

void addOptions(QCommandLineParser& parser)
{
    parser.addOptions({
        {"chain", "", "NAME"},
        {"series", "", "ID"},
        {"etdrs-mask", ""},
        {"center-mask", ""},
        {"mask", "", "FILE"},
        {"out", "", "DIR"},
        {"formats", "", "LIST"},
        {"store", "", "DIR"},
        {"jobs", "", "N"},
        {"force", ""},
        {"print-model", ""},
        {"quiet", ""},
        {"verbose", ""},
        {"version", ""},
        {{"h", "help"}, ""},
    });
}

kelp::oct::SegmentationChain readChain(const QString& name)
{
    const auto chain = kelp::oct::chainFromName(name);
    if (!chain) {
        refuse(QString("--chain is normal, drusen or mouse, not \"%1\".").arg(name));
    }
    return *chain;
}

int readJobs(const QString& text)
{
    bool isNumber = false;
    const int jobs = text.toInt(&isNumber);
    if (!isNumber || jobs < 1 || jobs > maximumJobs) {
        refuse(QString("--jobs is a number from 1 to %1, not \"%2\".").arg(maximumJobs).arg(text));
    }
    return jobs;
}

Talk readTalk(const QCommandLineParser& parser)
{
    if (parser.isSet("quiet") && parser.isSet("verbose")) {
        refuse("--quiet and --verbose exclude each other.");
    }
    if (parser.isSet("quiet")) {
        return Talk::Quiet;
    }
    return parser.isSet("verbose") ? Talk::Verbose : Talk::Normal;
}

} // namespace

Formats Formats::fromNames(const QString& list)
{
    Formats formats{false, false, false, false, false, false};
    for (const QString& part : list.split(',')) {
        const QString wanted = part.trimmed();
        bool known = false;
        for (const auto& [name, member] : formatNames) {
            if (wanted == name) {
                formats.*member = true;
                known = true;
            }
        }
        if (!known) {
            refuse(QString("--formats takes names of %1, separated by commas, not \"%2\".")
                       .arg(allFormatNames(), wanted));
        }
    }
    return formats;
}

QStringList Formats::names() const
{
    QStringList result;
    for (const auto& [name, member] : formatNames) {
        if (this->*member) {
            result.append(name);
        }
    }
    return result;
}

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
    if (parser.isSet("print-model")) {
        options.action = Options::Action::PrintModel;
        return options;
    }

    options.exports = parser.positionalArguments();
    if (options.exports.isEmpty()) {
        refuse("No export is given.");
    }
    if (options.exports.contains(QString())) {
        refuse("An export with an empty name is given.");
    }
    options.series = parser.values("series");
    options.chain = readChain(optionValue(parser, "chain", "normal"));
    options.etdrsMask = parser.isSet("etdrs-mask");
    options.centerMask = parser.isSet("center-mask");
    options.maskFile = optionValue(parser, "mask");
    options.out = optionValue(parser, "out", options.out);
    if (parser.isSet("formats")) {
        options.formats = Formats::fromNames(parser.value("formats"));
    }
    options.store = optionValue(parser, "store");
    options.jobs = readJobs(optionValue(parser, "jobs", "1"));
    options.force = parser.isSet("force");
    options.talk = readTalk(parser);
    return options;
}

QString helpText()
{
    return R"(Usage: tessera-segment [options] EXPORT...

Segments the retinal layers of the OCT scans in Heidelberg XML exports and writes
positions, thicknesses, volumes and pictures. For research only.

  EXPORT            an XML export, or a folder: every *.xml below it
  --chain NAME      normal (default), drusen or mouse
  --series ID       only this series (repeatable); default: every OCT series that
                    can be segmented
  --etdrs-mask      leave out what lies outside the ETDRS grid
  --center-mask     leave out the middle of the scan, where the optic disc is
  --mask FILE       leave out polygons on the localizer, in mm: one polygon a line,
                    "x,y x,y x,y ..."; empty lines and lines with # are comments
  --out DIR         folder for the results; default: tessera-results in the
                    current folder
  --formats LIST    of positions,thickness,raw,metaimage,etdrs,pictures
                    (default: all but raw)
  --store DIR       also keep patients, study, scans and segmentations in the
                    patient store at DIR
  --jobs N          scans segmented at the same time, one process each (default 1)
  --force           redo what is already there
  --print-model     write the compiled-in trained model's XML to standard output
                    and end
  --quiet           print errors and warnings only
  --verbose         print what the system traces, instead of keeping it in trace.log
  --version         print the version and end
  --help            print this and end

Each scan gets a folder DIR/<xml base name>_<series id>; DIR/summary.csv lists the
scans of the run. What is whole already is skipped.

Exit status: 0 all well, 1 at least one scan failed, 2 wrong usage.
)";
}

QString usageHint()
{
    return "Usage: tessera-segment [options] EXPORT...   (tessera-segment --help lists the "
           "options)";
}

} // namespace kelp::command
