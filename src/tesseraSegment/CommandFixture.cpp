#include "CommandFixture.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

namespace kelp::command::test {

namespace {

constexpr int runMilliseconds = 300000;

Finished finish(QProcess& process)
{
    EXPECT_TRUE(process.waitForFinished(runMilliseconds)) << "The command does not end.";
    Finished run;
    run.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.output = QString::fromUtf8(process.readAllStandardOutput());
    run.errors = QString::fromUtf8(process.readAllStandardError());
    return run;
}

} // namespace

kelp::phantom::Options CommandFixture::smallScan()
{
    kelp::phantom::Options options;
    options.kind = kelp::phantom::Kind::Mouse;
    options.aScans = 64;
    options.rows = 200;
    options.bScans = 5;
    options.localizerSize = 128;
    return options;
}

QString CommandFixture::results(const QString& name) const
{
    return path("results") + (name.isEmpty() ? QString() : '/' + name);
}

QString CommandFixture::writeExport(const QString& folder, const kelp::phantom::Options& options)
{
    return kelp::phantom::writeExport(path(folder), options).xmlPath;
}

Finished CommandFixture::run(const QStringList& arguments)
{
    QProcess process;
    process.start(TESSERA_SEGMENT_PROGRAM, arguments);
    return finish(process);
}

Finished CommandFixture::segment(const QStringList& arguments) const
{
    return run(QStringList{"--chain", "mouse", "--out", results()} + arguments);
}

std::unique_ptr<QProcess> CommandFixture::startSegmenting(const QStringList& arguments) const
{
    auto process = std::make_unique<QProcess>();
    process->start(TESSERA_SEGMENT_PROGRAM,
                   QStringList{"--chain", "mouse", "--out", results()} + arguments);
    EXPECT_TRUE(process->waitForStarted());
    return process;
}

QByteArray CommandFixture::read(const QString& file) const
{
    QFile input(QDir::isAbsolutePath(file) ? file : path(file));
    EXPECT_TRUE(input.open(QIODevice::ReadOnly)) << file.toStdString();
    return input.readAll();
}

void CommandFixture::write(const QString& file, const QByteArray& content) const
{
    QFile output(QDir::isAbsolutePath(file) ? file : path(file));
    ASSERT_TRUE(output.open(QIODevice::WriteOnly)) << file.toStdString();
    ASSERT_EQ(output.write(content), content.size());
}

void CommandFixture::edit(const QString& file, const QByteArray& before,
                          const QByteArray& after) const
{
    QByteArray content = read(file);
    ASSERT_TRUE(content.contains(before)) << before.toStdString();
    write(file, content.replace(before, after));
}

std::map<QString, QByteArray> CommandFixture::filesBelow(const QString& folder)
{
    std::map<QString, QByteArray> files;
    QDirIterator iterator(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        QFile file(iterator.next());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        files[QDir(folder).relativeFilePath(file.fileName())] = file.readAll();
    }
    return files;
}

QStringList CommandFixture::resultNames() const
{
    return QDir(results()).entryList(QDir::Files | QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot,
                                     QDir::Name);
}

QStringList CommandFixture::csvCells(const QString& line)
{
    QStringList cells{QString()};
    bool isQuoted = false;
    for (int i = 0; i < line.size(); ++i) {
        if (line[i] == '"' && isQuoted && line.mid(i + 1, 1) == "\"") {
            cells.last() += line[++i];
        } else if (line[i] == '"') {
            isQuoted = !isQuoted;
        } else if (line[i] == ',' && !isQuoted) {
            cells.append(QString());
        } else {
            cells.last() += line[i];
        }
    }
    return cells;
}

bool waitUntil(const std::function<bool()>& condition, int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > milliseconds) {
            return false;
        }
        QThread::msleep(2);
    }
    return true;
}

} // namespace kelp::command::test
