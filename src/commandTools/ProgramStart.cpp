#include "ProgramStart.h"

#include "kelpTrace.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <cstdlib>

namespace kelp::command {

namespace {

void traceQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtFatalMsg) {
        // The process is about to be ended; its reason must not stay in a log that is thrown away.
        std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
        std::abort();
    }
    Trace() << qFormatLogMessage(type, context, text);
}

} // namespace

QString programPath()
{
    return QFileInfo("/proc/self/exe").canonicalFilePath();
}

void preparePlugins()
{
    const QString plugins = QFileInfo(programPath()).absolutePath() + "/plugins";
    if (!QFileInfo(plugins).isDir()) {
        return;
    }
    QStringList paths{plugins};
    if (!QFileInfo(plugins + "/platforms").isDir()) {
        paths += QCoreApplication::libraryPaths();
    }
    QCoreApplication::setLibraryPaths(paths);
}

void traceQtMessages()
{
    qInstallMessageHandler(traceQtMessage);
}

} // namespace kelp::command
