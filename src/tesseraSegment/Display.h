#pragma once

#include "CommandLine.h"

#include <QElapsedTimer>
#include <QList>
#include <QMap>
#include <QString>

namespace kelp::command {

/// What the user sees while scans are segmented: on a terminal one line a scan under way, which is
/// drawn anew as it advances; otherwise a plain line a step. Problems go to standard error.
class Display
{
public:
    /// nrScans: how many scans of the run are segmented, for the numbers in front of the lines.
    Display(Talk talk, int nrScans);
    ~Display();
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    /// label: how the scan's lines begin.
    void start(int job, const QString& label);
    void advance(int job, int percentage, const QString& phase);
    /// Ends the scan's line and, unless the text is empty, prints it.
    void finish(int job, const QString& text);

    void trace(int job, const QString& text);
    void print(const QString& text);
    /// Also when quiet.
    void printProblem(const QString& text);

    /// Draws the lines under way again, since time has passed.
    void refresh();

private:
    struct Line
    {
        QString label;
        QString phase;
        int percentage = 0;
        QElapsedTimer sinceStart;
        qint64 advancedAt = 0; ///< milliseconds after the start
    };

    QString lineText(const Line& line) const;
    static QString timeLeft(const Line& line);
    void clearLines();
    void drawLines();
    void printLine(const QString& text);

    Talk m_talk;
    int m_nrScans;
    bool m_isTerminal;
    int m_nrStarted = 0;
    int m_nrDrawn = 0;
    QMap<int, Line> m_lines;
};

/// "1 scan", "2 scans".
QString counted(int number, const QString& noun);

/// " with 1 warning", " with 2 warnings"; empty without any.
QString withWarnings(int number);

/// "4.2 s", "45 s", "3 min 20 s", "2 h 5 min".
QString durationText(qint64 milliseconds);

/// The text cut to this many characters, the end replaced by dots if need be.
QString shortened(const QString& text, int width);

} // namespace kelp::command
