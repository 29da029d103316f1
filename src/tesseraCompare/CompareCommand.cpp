#include "CompareCommand.h"

#include "CompareInput.h"
#include "CompareOptions.h"
#include "ComparisonFiles.h"
#include "ComparisonText.h"
#include "ExitStatus.h"
#include "ProgramStart.h"
#include "StandardOutput.h"
#include "kelpException.h"
#include "kelpSignalWatch.h"
#include "kelpTrace.h"

#include <QGuiApplication>

#include <cstdio>
#include <memory>
#include <ostream>

namespace kelp::compare {

using command::allWell;
using command::interruptedBy;
using command::someFailed;
using command::wrongUsage;

namespace {

void printProblem(const QString& text)
{
    std::fprintf(stderr, "tessera-compare: %s\n", text.toUtf8().constData());
}

int print(const QString& text)
{
    if (!command::printWhole(text.toUtf8())) {
        printProblem("Standard output cannot be written.");
        return someFailed;
    }
    return allWell;
}

/// Standard output is for the tables alone.
class TraceSilence
{
public:
    TraceSilence() { Trace::redirect(&m_nowhere); }
    ~TraceSilence() { Trace::redirect(nullptr); }
    TraceSilence(const TraceSilence&) = delete;
    TraceSilence& operator=(const TraceSilence&) = delete;

private:
    std::ostream m_nowhere{nullptr};
};

enum class Kind
{
    Note,   ///< what was not compared, or with care
    Failure ///< what could not be done
};

/// scan: empty where only one is compared.
void tell(Kind kind, const QString& scan, const QString& sentence)
{
    printProblem(QString(kind == Kind::Note ? "note: " : "") +
                 (scan.isEmpty() ? scan : scan + ": ") + sentence);
}

QStringList namesOf(const ScanPairing& pairing)
{
    QStringList names;
    for (const auto& pair : pairing.pairs) {
        names.append(pair.first.name);
    }
    return names;
}

bool isInterrupted()
{
    return SignalWatch::receivedSignal() != 0;
}

/// Compares the pairs one after the other and keeps of each what is printed and pooled. One that
/// fails does not keep the others from it, and files that cannot be written do not keep the tables
/// from being printed.
class Comparer
{
public:
    /// Throws where the files will not find their place: nobody wants to learn that at the end.
    Comparer(const Options& options, const ScanPairing& pairing)
        : m_options(options), m_pairing(pairing), m_text(options.a, options.b)
    {
        if (!options.out.isEmpty()) {
            m_files = std::make_unique<ComparisonFiles>(options, namesOf(pairing));
        }
    }

    /// False if a signal ended it; the folder of the files is left as it was then.
    bool run()
    {
        for (const QString& note : m_pairing.notes) {
            tell(Kind::Note, QString(), note);
        }
        for (const auto& pair : m_pairing.pairs) {
            comparePair(pair);
            if (isInterrupted()) {
                return false;
            }
        }
        if (anyCompared()) {
            writing([this] { m_files->addPooled(m_pool); });
            if (isInterrupted()) {
                return false;
            }
            writing([this] { m_files->publish(); });
        }
        return true;
    }

    bool anyFailed() const { return m_anyFailed; }
    bool anyCompared() const { return m_pool.getNrScans() > 0; }
    QString text() const { return m_text.text(m_pool); }

private:
    void comparePair(const QPair<ScanSource, ScanSource>& pair)
    {
        const QString label = m_pairing.pairs.size() > 1 ? pair.first.name : QString();
        try {
            const auto [a, b] = readPair(pair, m_options.columns);
            const ScanComparison scan =
                compareScans(pair.first.name, a, b,
                             {m_options.axialMicrometres, m_options.fovea, m_options.samePlaces});
            for (const QString& note : scan.notes) {
                tell(Kind::Note, label, note);
            }
            m_pool.add(scan);
            m_text.add(scan);
            writing([&] { m_files->add(scan); });
        } catch (const std::exception& failure) {
            fail(label, failure);
        }
    }

    /// The first failure ends the writing.
    template <typename Write>
    void writing(const Write& write)
    {
        try {
            if (m_files) {
                write();
            }
        } catch (const std::exception& failure) {
            m_files.reset();
            fail(QString(), failure);
        }
    }

    void fail(const QString& label, const std::exception& failure)
    {
        m_anyFailed = true;
        tell(Kind::Failure, label, QString::fromUtf8(failure.what()).simplified());
    }

    const Options& m_options;
    const ScanPairing& m_pairing;
    std::unique_ptr<ComparisonFiles> m_files;
    ComparisonPool m_pool;
    ComparisonText m_text;
    bool m_anyFailed = false;
};

/// False if a signal ended it.
bool runToTheEnd(Comparer& comparer)
{
    // Not while printing, where the system shall end the process.
    const SignalWatch signalWatch([] {});
    return comparer.run();
}

int compare(const Options& options)
{
    const QList<ScanSource> a = listScans(options.a, options.tablesA);
    const QList<ScanSource> b = listScans(options.b, options.tablesB);
    const ScanPairing pairing = pairScans(a, b);
    Comparer comparer(options, pairing);
    if (!runToTheEnd(comparer)) {
        printProblem("Interrupted.");
        return interruptedBy + SignalWatch::receivedSignal();
    }
    if (!comparer.anyCompared()) {
        return someFailed;
    }
    const int printed = print(comparer.text());
    return comparer.anyFailed() ? someFailed : printed;
}

int follow(const Options& options)
{
    switch (options.action) {
    case Options::Action::PrintHelp:
        return print(helpText());
    case Options::Action::PrintVersion:
        return print("tessera-compare " TESSERA_VERSION "\n");
    case Options::Action::Compare:
        return compare(options);
    }
    return wrongUsage;
}

} // namespace

int runCommand(int argc, char** argv)
{
    // Pictures are painted, but nothing is ever shown.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    command::preparePlugins();
    const TraceSilence silence;
    command::traceQtMessages();
    const QGuiApplication application(argc, argv);
    Options options;
    try {
        options = parseCommandLine(QCoreApplication::arguments());
    } catch (const command::UsageError& error) {
        printProblem(QString::fromUtf8(error.what()));
        std::fprintf(stderr, "%s\n", usageHint().toUtf8().constData());
        return wrongUsage;
    }
    try {
        return follow(options);
    } catch (const std::exception& failure) {
        printProblem(QString::fromUtf8(failure.what()).simplified());
        return someFailed;
    }
}

} // namespace kelp::compare
