#include "Phantom.h"

#include "kelpException.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QHash>
#include <QTextStream>

#include <cstdio>
#include <optional>

namespace {

using namespace kelp::phantom;

constexpr int failure = 1;
constexpr int wrongUsage = 2;

/// Raised for arguments that cannot be understood; the text is for the user.
struct UsageError
{
    QString text;
};

const QHash<QString, Pattern> patterns{{"volume", Pattern::Volume},
                                       {"section", Pattern::Section},
                                       {"circle", Pattern::Circle},
                                       {"star", Pattern::Star}};
const QHash<QString, Kind> kinds{
    {"normal", Kind::Normal}, {"drusen", Kind::Drusen}, {"mouse", Kind::Mouse}};
const QHash<QString, bool> eyes{{"R", true}, {"L", false}};

void printError(const QString& text)
{
    QTextStream(stderr) << "tessera-phantom: " << text << '\n';
}

template <typename T>
T chosen(const QCommandLineParser& parser, const QString& option, const QHash<QString, T>& choices)
{
    const auto found = choices.find(parser.value(option));
    if (found == choices.end()) {
        QStringList names = choices.keys();
        names.sort();
        throw UsageError{QString("--%1 must be one of %2, not \"%3\".")
                             .arg(option, names.join(", "), parser.value(option))};
    }
    return *found;
}

int integer(const QCommandLineParser& parser, const QString& option)
{
    bool isNumber = false;
    const int value = parser.value(option).toInt(&isNumber);
    if (!isNumber) {
        throw UsageError{
            QString("--%1 must be a whole number, not \"%2\".").arg(option, parser.value(option))};
    }
    return value;
}

std::uint64_t seed(const QCommandLineParser& parser)
{
    bool isNumber = false;
    const std::uint64_t value = parser.value("seed").toULongLong(&isNumber);
    if (!isNumber) {
        throw UsageError{QString("--seed must be a whole number from 0 on, not \"%1\".")
                             .arg(parser.value("seed"))};
    }
    return value;
}

double noise(const QCommandLineParser& parser)
{
    bool isNumber = false;
    const double value = parser.value("noise").toDouble(&isNumber);
    if (!isNumber) {
        throw UsageError{
            QString("--noise must be a number, not \"%1\".").arg(parser.value("noise"))};
    }
    return value;
}

void addOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(
        "Writes a synthetic OCT export with known surfaces: export.xml, its images and "
        "truth_<surface>.csv. The same options give the same bytes.");
    parser.addOptions({
        {"out", "The folder to write into; made if need be.", "DIR"},
        {"pattern", "volume, section, circle or star.", "NAME", "volume"},
        {"ascans", "A-scans of a B-scan.", "N", "512"},
        {"rows", "Rows of a B-scan.", "N", "496"},
        {"bscans", "B-scans of a volume or star.", "N", "49"},
        {"eye", "R or L.", "SIDE", "R"},
        {"kind", "normal, drusen or mouse.", "NAME", "normal"},
        {"seed", "Another seed is another eye.", "N", "1"},
        {"image-format", "tif, bmp, png or jpg.", "NAME", "tif"},
        {"noise", "0 is none, 1 as a device has it.", "X", "1.0"},
        {"fill", "White around tilted B-scans, as a device paints it where it has no data."},
    });
    parser.addHelpOption();
    parser.addVersionOption();
}

Options readOptions(const QCommandLineParser& parser)
{
    if (!parser.positionalArguments().isEmpty()) {
        throw UsageError{
            QString("There is no use for \"%1\".").arg(parser.positionalArguments().first())};
    }
    if (parser.value("out").isEmpty()) {
        throw UsageError{"--out must name a folder."};
    }
    Options options;
    options.pattern = chosen(parser, "pattern", patterns);
    options.kind = chosen(parser, "kind", kinds);
    options.rightEye = chosen(parser, "eye", eyes);
    options.aScans = integer(parser, "ascans");
    options.rows = integer(parser, "rows");
    options.bScans = integer(parser, "bscans");
    options.seed = seed(parser);
    options.imageFormat = parser.value("image-format");
    options.noise = noise(parser);
    options.fill = parser.isSet("fill");
    const QString problem = problemWith(options);
    if (!problem.isEmpty()) {
        throw UsageError{problem};
    }
    return options;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("tessera-phantom");
    QCoreApplication::setApplicationVersion(TESSERA_VERSION);

    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(QCoreApplication::arguments())) {
        printError(parser.errorText());
        return wrongUsage;
    }
    if (parser.isSet("help")) {
        parser.showHelp();
    }
    if (parser.isSet("version")) {
        parser.showVersion();
    }
    try {
        const Options options = readOptions(parser);
        const Export written = writeExport(parser.value("out"), options);
        QTextStream(stdout) << written.xmlPath << '\n';
        return 0;
    } catch (const UsageError& error) {
        printError(error.text + "\nSee tessera-phantom --help.");
        return wrongUsage;
    } catch (const kelp::Exception& error) {
        printError(error.what());
        return failure;
    }
}
