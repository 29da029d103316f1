#include "Display.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/ioctl.h>
#include <unistd.h>

namespace kelp::command {

namespace {

constexpr int defaultWidth = 80;
constexpr int narrowestWidth = 20;
/// Before this the time left is a guess that only confuses.
constexpr int firstEstimatePercentage = 8;
constexpr qint64 firstEstimateMilliseconds = 1000;

bool standardOutputIsTerminal()
{
    const char* kind = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && kind != nullptr && std::strcmp(kind, "dumb") != 0;
}

int terminalWidth()
{
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return defaultWidth;
    }
    return qMax(narrowestWidth, static_cast<int>(size.ws_col));
}

void write(std::FILE* stream, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    std::fflush(stream);
}

} // namespace

QString durationText(qint64 milliseconds)
{
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 tenth = 100;
    if (milliseconds < 10 * 1000) {
        const qint64 tenths = (milliseconds + tenth / 2) / tenth;
        return QString("%1 s").arg(static_cast<double>(tenths) / 10.0, 0, 'f', 1);
    }
    const qint64 seconds = (milliseconds + 500) / 1000;
    if (seconds < minute) {
        return QString("%1 s").arg(seconds);
    }
    if (seconds < hour) {
        return QString("%1 min %2 s").arg(seconds / minute).arg(seconds % minute);
    }
    return QString("%1 h %2 min").arg(seconds / hour).arg(seconds % hour / minute);
}

QString counted(int number, const QString& noun)
{
    return QString(number == 1 ? "%1 %2" : "%1 %2s").arg(number).arg(noun);
}

QString withWarnings(int number)
{
    return number == 0 ? QString() : " with " + counted(number, "warning");
}

QString shortened(const QString& text, int width)
{
    const QString dots = "...";
    if (text.size() <= width) {
        return text;
    }
    return width <= dots.size() ? text.left(width) : text.left(width - dots.size()) + dots;
}

Display::Display(Talk talk, int nrScans)
    : m_talk(talk), m_nrScans(nrScans),
      // Trace lines would tear a line that is drawn over and over.
      m_isTerminal(talk == Talk::Normal && standardOutputIsTerminal())
{
}

Display::~Display()
{
    clearLines();
}

void Display::start(int job, const QString& label)
{
    ++m_nrStarted;
    Line line;
    line.label =
        m_nrScans > 1 ? QString("[%1/%2] %3").arg(m_nrStarted).arg(m_nrScans).arg(label) : label;
    line.sinceStart.start();
    m_lines.insert(job, line);
    refresh();
}

void Display::advance(int job, int percentage, const QString& phase)
{
    const auto line = m_lines.find(job);
    if (line == m_lines.end()) {
        return;
    }
    const bool isNewPhase = phase != line->phase;
    line->phase = phase;
    if (percentage > line->percentage) {
        line->percentage = percentage;
        line->advancedAt = line->sinceStart.elapsed();
    }
    if (m_isTerminal) {
        refresh();
    } else if (isNewPhase) {
        print(QString("%1: %2").arg(line->label, phase));
    }
}

void Display::finish(int job, const QString& text)
{
    const QString label = m_lines.value(job).label;
    clearLines();
    m_lines.remove(job);
    if (!text.isEmpty()) {
        print(label.isEmpty() ? text : QString("%1: %2").arg(label, text));
    }
    drawLines();
}

void Display::trace(int job, const QString& text)
{
    if (m_talk == Talk::Verbose) {
        // With several scans at once their lines mix.
        const QString label = m_lines.value(job).label;
        printLine(m_lines.size() > 1 ? QString("%1: %2").arg(label, text) : text);
    }
}

void Display::print(const QString& text)
{
    if (m_talk != Talk::Quiet) {
        printLine(text);
    }
}

void Display::printProblem(const QString& text)
{
    clearLines();
    write(stderr, "tessera-segment: " + text + '\n');
    drawLines();
}

void Display::printLine(const QString& text)
{
    clearLines();
    write(stdout, text + '\n');
    drawLines();
}

void Display::refresh()
{
    if (m_isTerminal) {
        clearLines();
        drawLines();
    }
}

void Display::clearLines()
{
    if (m_nrDrawn == 0) {
        return;
    }
    QString text = "\r\033[K";
    for (int i = 1; i < m_nrDrawn; ++i) {
        text += "\033[A\r\033[K";
    }
    write(stdout, text);
    m_nrDrawn = 0;
}

void Display::drawLines()
{
    if (!m_isTerminal || m_lines.isEmpty()) {
        return;
    }
    // One column stays free, since some terminals wrap when the last one is written.
    const int width = terminalWidth() - 1;
    QStringList texts;
    for (const Line& line : m_lines) {
        texts.append(shortened(lineText(line), width));
    }
    write(stdout, texts.join('\n'));
    m_nrDrawn = texts.size();
}

QString Display::lineText(const Line& line) const
{
    QString text = QString("%1: %2, %3 %").arg(line.label, line.phase).arg(line.percentage);
    const QString left = timeLeft(line);
    if (!left.isEmpty()) {
        text += ", " + left;
    }
    return text;
}

QString Display::timeLeft(const Line& line)
{
    if (line.percentage < firstEstimatePercentage || line.advancedAt < firstEstimateMilliseconds) {
        return {};
    }
    const qint64 whole = line.advancedAt * 100 / line.percentage;
    const qint64 left = qMax<qint64>(0, whole - line.sinceStart.elapsed());
    const qint64 seconds = (left + 999) / 1000;
    constexpr qint64 shortTime = 10;
    return QString("about %1 left")
        .arg(seconds < shortTime ? QString("%1 s").arg(seconds) : durationText(seconds * 1000));
}

} // namespace kelp::command
