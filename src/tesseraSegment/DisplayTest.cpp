#include "Display.h"
#include "CommandFixture.h"

#include <QRegularExpression>

#include <array>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace kelp::command;

namespace {

TEST(DisplayTexts, TellDurationsAsPeopleDo)
{
    EXPECT_EQ(durationText(0), "0.0 s");
    EXPECT_EQ(durationText(4249), "4.2 s");
    EXPECT_EQ(durationText(10000), "10 s");
    EXPECT_EQ(durationText(200000), "3 min 20 s");
    EXPECT_EQ(durationText(7500000), "2 h 5 min");
}

TEST(DisplayTexts, AreCutToTheirWidth)
{
    EXPECT_EQ(shortened("abcdef", 6), "abcdef");
    EXPECT_EQ(shortened("abcdef", 5), "ab...");
    EXPECT_EQ(shortened("abcdef", 2), "ab");
}

/// The command on a terminal of its own.
class Terminal : public kelp::command::test::CommandFixture
{
protected:
    /// All that the command prints on a terminal of this width.
    QString printed(int columns, const QStringList& arguments) const
    {
        const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        EXPECT_EQ(grantpt(master), 0);
        EXPECT_EQ(unlockpt(master), 0);
        winsize size{};
        size.ws_col = static_cast<unsigned short>(columns);
        size.ws_row = 24;
        const QString terminal = ptsname(master);
        const int slave = open(terminal.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        EXPECT_EQ(ioctl(slave, TIOCSWINSZ, &size), 0);
        QProcess process;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TERM", "xterm");
        process.setProcessEnvironment(environment);
        process.start("/bin/sh",
                      QStringList{"-c", "out=$1; shift; exec \"$@\" > \"$out\"", "sh", terminal,
                                  TESSERA_SEGMENT_PROGRAM, "--chain", "mouse", "--out", results()} +
                          arguments);
        const QByteArray text = readUntilFinished(master, process);
        close(slave);
        close(master);
        EXPECT_EQ(process.exitCode(), 0);
        return QString::fromUtf8(text);
    }

private:
    static QByteArray readUntilFinished(int master, QProcess& process)
    {
        QByteArray text;
        bool isOver = false;
        for (int round = 0; round < 20000; ++round) {
            pollfd waiting{master, POLLIN, 0};
            if (poll(&waiting, 1, 10) > 0) {
                std::array<char, 4096> buffer{};
                const ssize_t count = ::read(master, buffer.data(), buffer.size());
                text.append(buffer.data(), static_cast<int>(std::max<ssize_t>(0, count)));
            } else if (isOver) {
                return text;
            }
            isOver = process.waitForFinished(1) || process.state() == QProcess::NotRunning;
        }
        ADD_FAILURE() << "The command does not end.";
        return text;
    }
};

TEST_F(Terminal, ShowsOneLineThatAdvancesAndIsGoneAtTheEnd)
{
    const QString text = printed(100, {writeExport("in")});
    EXPECT_TRUE(text.contains(QRegularExpression("step 3 of 4: ISe and BM, \\d+ %")))
        << text.toStdString();
    EXPECT_TRUE(text.contains("\r\033[K"));
    const QStringList lines = text.split('\n');
    ASSERT_EQ(lines.size(), 3) << text.toStdString();
    EXPECT_TRUE(lines[0].section("\033[K", -1).startsWith("export_100001: segmented in "));
    EXPECT_TRUE(
        lines[1].startsWith("export_100001: the border of the scan cuts the ETDRS sectors "));
    EXPECT_EQ(lines[2], "");
}

TEST_F(Terminal, NeverWritesMoreThanTheLineHolds)
{
    const QString text = printed(30, {writeExport("in")});
    const QString drawn = text.left(text.indexOf("segmented in"));
    for (const QString& line : drawn.split("\r\033[K")) {
        EXPECT_LT(line.size(), 30) << line.toStdString();
    }
    EXPECT_TRUE(drawn.contains("...\r"));
}

} // namespace
