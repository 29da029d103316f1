#include "CommandFixture.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstring>
#include <numeric>

using kelp::command::test::CommandFixture;
using kelp::command::test::Finished;

namespace {

/// What a run says about its own result.
class QualityCommand : public CommandFixture
{
protected:
    static constexpr double squeezed = 0.3;

    /// One B-scan of a healthy eye.
    static kelp::phantom::Options section()
    {
        kelp::phantom::Options options;
        options.pattern = kelp::phantom::Pattern::Section;
        options.aScans = 256;
        options.localizerSize = 128;
        options.imageFormat = "png";
        return options;
    }

    /// An export whose retina is squeezed to less than a third of its thickness, so that the normal
    /// chain finds no place for the inner surfaces.
    QString writeThinRetina()
    {
        const QString xml = writeExport("thin", section());
        const QDir folder = QFileInfo(xml).dir();
        for (const QString& name : folder.entryList({"*.png"}, QDir::Files)) {
            const QImage image =
                QImage(folder.filePath(name)).convertToFormat(QImage::Format_Grayscale8);
            if (image.width() != section().aScans) {
                continue; // the localizer
            }
            QImage thin(image.size(), QImage::Format_Grayscale8);
            thin.fill(0);
            const int middle = image.height() / 2;
            for (int row = 0; row < image.height(); ++row) {
                const int source = middle + static_cast<int>((row - middle) / squeezed);
                if (source >= 0 && source < image.height()) {
                    std::memcpy(thin.scanLine(row), image.constScanLine(source),
                                static_cast<std::size_t>(image.width()));
                }
            }
            EXPECT_TRUE(thin.save(folder.filePath(name)));
        }
        return xml;
    }

    Finished segmentNormal(const QStringList& arguments) const
    {
        return segment(QStringList{"--chain", "normal", "--formats", "etdrs"} + arguments);
    }

    QJsonObject record() const
    {
        return QJsonDocument::fromJson(read(results("export_100001/run.json"))).object();
    }

    QStringList recordedWarnings() const
    {
        QStringList texts;
        for (const QJsonValue text : record()["warnings"].toArray()) {
            texts.append(text.toString());
        }
        return texts;
    }

    /// The cell of the first scan in this column of summary.csv.
    QString summaryCell(const QString& column) const
    {
        const QStringList lines = QString::fromUtf8(read(results("summary.csv"))).split('\n');
        return csvCells(lines.value(1)).value(csvCells(lines.value(0)).indexOf(column));
    }
};

TEST_F(QualityCommand, TellsOfSurfacesThatAreNotThere)
{
    const QString xml = writeThinRetina();
    const Finished run = segmentNormal({"--quiet", xml});
    EXPECT_EQ(run.status, 0) << "the scan was segmented, if badly";
    EXPECT_EQ(run.output, "");

    const QStringList warnings = recordedWarnings();
    ASSERT_GE(warnings.size(), 2);
    EXPECT_EQ(warnings[0], "INL, ONL: no surface found in 100 % of the A-scans, the result is not "
                           "a segmentation");
    EXPECT_TRUE(warnings[1].startsWith("GCL, INL, ONL: the distances that are allowed between the "
                                       "surfaces leave no room in "))
        << warnings[1].toStdString();
    QString lines;
    for (const QString& warning : warnings) {
        lines += "tessera-segment: " + QFileInfo(xml).canonicalFilePath() +
                 ", series 100001: warning: " + warning + '\n';
    }
    EXPECT_EQ(run.errors, lines);
    EXPECT_EQ(record()["notFound"].toArray(), QJsonArray({"INL", "ONL"}));
    EXPECT_EQ(summaryCell("warnings"), warnings.join("; "));
    EXPECT_EQ(summaryCell("outcome"), "segmented");
    EXPECT_EQ(summaryCell("reason"), "");
}

TEST_F(QualityCommand, NamesTheSurfacesThatWereNotFoundWhereTheirMeansStand)
{
    const auto lastLine = [this] {
        return read(results("export_100001/etdrs.csv")).trimmed().split('\n').last();
    };
    const QString thin = writeThinRetina();
    segmentNormal({thin});
    EXPECT_EQ(record()["notFound"].toArray(), QJsonArray({"INL", "ONL"}));
    EXPECT_EQ(lastLine(), "no surface found\tINL\tONL");
    EXPECT_EQ(summaryCell("no surface found"), "INL ONL");
    segmentNormal({thin});
    EXPECT_EQ(summaryCell("outcome"), "skipped");
    EXPECT_EQ(summaryCell("no surface found"), "INL ONL");

    ASSERT_TRUE(QDir(results()).removeRecursively());
    segmentNormal({writeExport("in", section())});
    EXPECT_EQ(record()["notFound"], QJsonValue(QJsonArray()));
    EXPECT_TRUE(lastLine().startsWith("A-scans expected\t")) << lastLine().toStdString();
    EXPECT_EQ(summaryCell("no surface found"), "");
}

TEST_F(QualityCommand, KeepsTheWarningsOfScansThatAreSkipped)
{
    const QString xml = writeThinRetina();
    const QString output = segmentNormal({xml}).output;
    const QString warnings = summaryCell("warnings");
    EXPECT_TRUE(warnings.contains("; "));
    EXPECT_TRUE(
        output.contains(QString(" s with %1 warnings, see ").arg(recordedWarnings().size())))
        << output.toStdString();
    const Finished again = segmentNormal({xml});
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.errors, "") << "they were told when the scan was segmented";
    EXPECT_EQ(summaryCell("outcome"), "skipped");
    EXPECT_EQ(summaryCell("warnings"), warnings);
}

TEST_F(QualityCommand, GoesOnFromResultsOfVersionsThatLookedForNoWarnings)
{
    const QString xml = writeExport("in", section());
    segmentNormal({xml});
    QJsonObject old = record();
    for (const char* item :
         {"pixelDigest", "fill", "warnings", "notFound", "quality", "etdrsCoverage"}) {
        ASSERT_TRUE(old.contains(item)) << item;
        old.remove(item);
    }
    write(results("export_100001/run.json"), QJsonDocument(old).toJson());
    const Finished again = segmentNormal({xml});
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.errors, "");
    EXPECT_EQ(summaryCell("outcome"), "skipped");
    EXPECT_EQ(summaryCell("warnings"), "not recorded by the version that segmented the scan");
    EXPECT_EQ(summaryCell("cut sectors"), "");
    EXPECT_EQ(summaryCell("no surface found"), "");
}

TEST_F(QualityCommand, RecordsFiguresOfEverySurfaceAndBScan)
{
    segment({writeExport("in")});
    QStringList surfaces;
    for (const QJsonValue value : record()["quality"].toArray()) {
        const QJsonObject surface = value.toObject();
        const QString name = surface["surface"].toString();
        surfaces.append(name);
        EXPECT_FALSE(surface["step"].toString().isEmpty());
        EXPECT_EQ(surface["aScans"].toInt(), name.endsWith("oarse") ? 5 * 4 : 5 * 64);
        for (const char* share : {"atTop", "atBottom", "withoutRoom", "withoutRow"}) {
            const QJsonArray byBScan = surface["byBScan"].toObject()[share].toArray();
            ASSERT_EQ(byBScan.size(), 5) << share;
            double sum = 0.0;
            for (const QJsonValue& bScan : byBScan) {
                sum += bScan.toDouble(-1.0);
            }
            // The B-scans have the same number of A-scans, so the whole is their mean.
            EXPECT_NEAR(surface[share].toDouble(-1.0), sum / 5, 1e-4) << share;
        }
        EXPECT_EQ(surface["withoutRow"].toDouble(-1.0), 0.0);
    }
    EXPECT_EQ(surfaces,
              QStringList({"ILMcoarse", "ISeCoarse", "ILM", "ISe", "BM", "GCL", "INL", "ONL"}));
    // An array stands on one line.
    EXPECT_TRUE(
        read(results("export_100001/run.json")).contains("\"withoutRow\": [0, 0, 0, 0, 0]"));
}

TEST_F(QualityCommand, TellsOfTheDevicesFillOnlyWhereThereIsSome)
{
    const Finished without = segment({writeExport("in")});
    EXPECT_FALSE(without.output.contains("fill"));
    EXPECT_FALSE(without.output.contains("warning"));
    EXPECT_EQ(record()["fill"].toObject()["pixels"].toInt(-1), 0);
    EXPECT_EQ(record()["fill"].toObject()["bScans"].toInt(-1), 0);

    kelp::phantom::Options options = smallScan();
    options.fill = true;
    const kelp::phantom::Export phantom = kelp::phantom::writeExport(path("in"), options);
    const Finished with = segment({"--force", phantom.xmlPath});
    const QJsonObject fill = record()["fill"].toObject();
    const std::vector<int>& painted = phantom.fillPixels;
    EXPECT_EQ(fill["pixels"].toInt(), std::accumulate(painted.begin(), painted.end(), 0));
    EXPECT_EQ(fill["bScans"].toInt(),
              std::count_if(painted.begin(), painted.end(), [](int pixels) { return pixels > 0; }));
    EXPECT_GT(fill["bScans"].toInt(), 0);
    EXPECT_TRUE(with.output.contains(
        QString("\nexport_100001: white without data (the device's fill), %1 pixels in %2 "
                "B-scans, was taken as black\n")
            .arg(fill["pixels"].toInt())
            .arg(fill["bScans"].toInt())))
        << with.output.toStdString();
}

} // namespace
