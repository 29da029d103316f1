#include "HeidelbergExport.h"
#include "OCTScanChecks.h"
#include "OCTScanLoadingUtils.h"
#include "TestExport.h"
#include "TraceCapture.h"
#include "kelpException.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace kelp::oct {

using namespace kelp::oct::test;

namespace {

using Random = std::mt19937;

int below(Random& random, int limit)
{
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

QByteArray flipBytes(QByteArray bytes, Random& random)
{
    const int flips = 1 + below(random, 4);
    for (int i = 0; i < flips; ++i) {
        bytes[below(random, bytes.size())] = static_cast<char>(random() % 256);
    }
    return bytes;
}

QByteArray truncate(const QByteArray& bytes, Random& random)
{
    return bytes.left(below(random, bytes.size()));
}

/// Start and length of an element that the text holds, with all that is in it.
std::pair<int, int> anyElement(const QByteArray& bytes, Random& random)
{
    for (;;) {
        const int start = bytes.indexOf('<', below(random, bytes.size()));
        if (start < 0 || bytes.at(start + 1) == '/' || bytes.at(start + 1) == '?') {
            continue;
        }
        const int nameEnd = bytes.indexOf('>', start);
        const QByteArray closing = "</" + bytes.mid(start + 1, nameEnd - start - 1) + ">";
        const int end = bytes.indexOf(closing, nameEnd);
        if (end >= 0) {
            return {start, end + closing.size() - start};
        }
    }
}

QByteArray removeElement(QByteArray bytes, Random& random)
{
    const auto [start, length] = anyElement(bytes, random);
    return bytes.remove(start, length);
}

QByteArray duplicateElement(QByteArray bytes, Random& random)
{
    const auto [start, length] = anyElement(bytes, random);
    return bytes.insert(start, bytes.mid(start, length));
}

QByteArray replaceNumber(QByteArray bytes, Random& random)
{
    static const QList<QByteArray> extremes{
        "",     "0",     "-0",     "-1",     "1",          "nan",         "inf",
        "text", "1e308", "-1e308", "1e-320", "2147483648", "-2147483649", "99999999999999999999",
        "0x10", "3,5",   "&#0;",   "1e9999"};
    QList<QRegularExpressionMatch> numbers;
    static const QRegularExpression number(">([-+.0-9e]+)<");
    auto matches = number.globalMatch(QString::fromLatin1(bytes));
    while (matches.hasNext()) {
        numbers.append(matches.next());
    }
    const int changes = 1 + below(random, 3);
    // From the back, so that the places of those before stay.
    std::vector<int> chosen(static_cast<std::size_t>(changes));
    std::generate(chosen.begin(), chosen.end(), [&] { return below(random, numbers.size()); });
    std::sort(chosen.rbegin(), chosen.rend());
    chosen.erase(std::unique(chosen.begin(), chosen.end()), chosen.end());
    for (const int index : chosen) {
        bytes.replace(numbers.at(index).capturedStart(1), numbers.at(index).capturedLength(1),
                      extremes.at(below(random, extremes.size())));
    }
    return bytes;
}

QByteArray replaceType(QByteArray bytes, Random& random)
{
    static const QList<QByteArray> types{"Fast Volume", "Section", "Circle", "Star", "Other"};
    return replaceNumber(
        bytes.replace("<Type>Volume<", "<Type>" + types.at(below(random, 5)) + "<"), random);
}

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

template <typename Function>
void allowFailure(Function&& function)
{
    try {
        function();
    } catch (const Exception&) {
        // A refusal in words is a good end. Anything else that escapes fails the test.
    }
}

void useGeometry(const OCTScan& scan)
{
    allowFailure([&] { scan.getCenter(); });
    allowFailure([&] { scan.getVolumeOrigin(); });
    allowFailure([&] { scan.getOrientationOnLocalizer(); });
    allowFailure([&] { scan.getVolumeSpacing(); });
    allowFailure([&] { scan.getVolumeSize(); });
    allowFailure([&] { scan.localizerCoordToVolumeCoords({1.0, 2.0}); });
    allowFailure([&] { scan.volumeCoordsToLocalizerCoord({0.1, 0.1}); });
    allowFailure([&] { scan.volumeIndexToLocalizerCoords(1, 1); });
    allowFailure([&] { scan.getBScanImagesCoarse(0.5, 0.5); });
    for (int i = 0; i < scan.getBScanCount(); ++i) {
        const QSharedPointer<BScan> bScan = scan.getBScan(static_cast<unsigned>(i));
        allowFailure([&] { bScan->getCenter(); });
        allowFailure([&] { bScan->getClosestAScanPos({1.0, 2.0}); });
        allowFailure([&] { bScan->getScanDirection(); });
        bScan->clone();
    }
}

/// Reads the export as far as it goes. Returns whether a scan of it could be segmented.
bool readFully(const QString& path)
{
    QList<ExportSeries> allSeries;
    allowFailure([&] { allSeries = readExportSeries(path); });
    allowFailure([&] {
        QString name;
        QDate birthDate;
        OCTScanLoadingUtils::GetPatientInfoFromXML(path, name, birthDate);
    });
    bool ready = false;
    // The known id as well, for exports in which the list no longer finds it.
    QStringList ids{"1"};
    for (const ExportSeries& series : allSeries) {
        if (!ids.contains(series.id)) {
            ids.append(series.id);
        }
        findImageProblems(path, series);
    }
    for (const QString& id : ids) {
        const OCTScanPtr scan = makeTestExportScan(path, id);
        allowFailure([&] { scan->doBinLoad(); });
        useGeometry(*scan);
        allowFailure([&] {
            checkReadyForSegmentation(*scan);
            ready = true;
        });
    }
    return ready;
}

class ExportMutation : public testing::Test
{
protected:
    /// Applies the mutation to the file of this name, restores it each time, and tells how many of
    /// the exports could still be segmented.
    template <typename Mutate>
    int run(const QString& name, int count, unsigned seed, Mutate mutate)
    {
        QFile original(m_dir.filePath(name));
        EXPECT_TRUE(original.open(QIODevice::ReadOnly));
        const QByteArray bytes = original.readAll();
        original.close();
        Random random(seed);
        int ready = 0;
        for (int i = 0; i < count; ++i) {
            write(m_dir.filePath(name), mutate(bytes, random));
            const TraceCapture trace;
            ready += readFully(m_path) ? 1 : 0;
        }
        write(m_dir.filePath(name), bytes);
        EXPECT_TRUE(readFully(m_path));
        return ready;
    }

    QTemporaryDir m_dir;
    QString m_path = [this] {
        TestExportOptions options;
        options.bScans = 2;
        return writeTestExport(m_dir.path(), options);
    }();
};

TEST_F(ExportMutation, FlippedBytesNeverCrash)
{
    const int ready = run("export.xml", 600, 1, flipBytes);
    EXPECT_GT(ready, 0);
    EXPECT_LT(ready, 600);
}

TEST_F(ExportMutation, TruncationNeverLeavesAScan)
{
    // The last byte is a line feed that nobody misses.
    EXPECT_LE(run("export.xml", 400, 2, truncate), 2);
}

TEST_F(ExportMutation, RemovedElementsNeverCrash)
{
    const int ready = run("export.xml", 300, 3, removeElement);
    EXPECT_GT(ready, 0);
    EXPECT_LT(ready, 300);
}

TEST_F(ExportMutation, DuplicatedElementsNeverCrash)
{
    const int ready = run("export.xml", 300, 4, duplicateElement);
    EXPECT_GT(ready, 0);
    EXPECT_LT(ready, 300);
}

TEST_F(ExportMutation, ExtremeNumbersNeverCrash)
{
    const int ready = run("export.xml", 500, 5, replaceNumber);
    EXPECT_GT(ready, 0);
    EXPECT_LT(ready, 500);
}

TEST_F(ExportMutation, ExtremeNumbersInOtherPatternsNeverCrash)
{
    EXPECT_LT(run("export.xml", 300, 6, replaceType), 300);
}

TEST_F(ExportMutation, DamagedImagesNeverCrash)
{
    for (const char* format : {"png", "tif", "bmp", "jpg"}) {
        TestExportOptions options;
        options.bScans = 2;
        options.imageFormat = format;
        m_path = writeTestExport(m_dir.path(), options);
        const QString name = testImageName(options, 1);
        // A cut that takes no pixel does no harm, and most formats have no check sum.
        EXPECT_LE(run(name, 60, 7, truncate), 3) << format;
        EXPECT_LT(run(name, 60, 8, flipBytes), 60) << format;
    }
}

} // namespace

} // namespace kelp::oct
