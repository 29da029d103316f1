#pragma once

#include "SegmentationChains.h"
#include "UsageError.h"

#include <QString>
#include <QStringList>

/// The command tessera-segment, apart from its main function.
namespace kelp::command {

/// What is written for a scan beside what is always there.
struct Formats
{
    bool positions = true;
    bool thickness = true;
    bool raw = false;
    bool metaimage = true;
    bool etdrs = true;
    bool pictures = true;

    /// From names separated by commas. Throws UsageError.
    static Formats fromNames(const QString& list);
    /// The names of what is switched on, in the order of the help text.
    QStringList names() const;

    friend bool operator==(const Formats&, const Formats&) = default;
};

enum class Talk
{
    Quiet,
    Normal,
    Verbose
};

/// What the command is asked to do.
struct Options
{
    enum class Action
    {
        Segment,
        PrintModel,
        PrintVersion,
        PrintHelp
    };

    Action action = Action::Segment;
    QStringList exports; ///< files and folders as given
    QStringList series;  ///< empty: all that can be segmented
    kelp::oct::SegmentationChain chain = kelp::oct::SegmentationChain::Normal;
    bool etdrsMask = false;
    bool centerMask = false;
    QString maskFile;
    QString out = "tessera-results";
    Formats formats;
    QString store;
    int jobs = 1;
    bool force = false;
    Talk talk = Talk::Normal;
};

/// arguments: with the program's name in front. Throws UsageError.
Options parseCommandLine(const QStringList& arguments);

QString helpText();
QString usageHint();

} // namespace kelp::command
