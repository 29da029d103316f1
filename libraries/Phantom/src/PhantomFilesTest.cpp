#include "Phantom.h"

#include "kelpException.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>

namespace kelp::phantom {

namespace {

using testing::HasSubstr;

Options small()
{
    Options options;
    options.aScans = 32;
    options.rows = 120;
    options.bScans = 3;
    options.localizerSize = 64;
    return options;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

/// Every file of a folder by its name.
std::map<QString, QByteArray> filesOf(const QString& folder)
{
    std::map<QString, QByteArray> files;
    for (const QString& name : QDir(folder).entryList(QDir::Files | QDir::Hidden)) {
        files[name] = contentOf(QDir(folder).filePath(name));
    }
    return files;
}

std::map<QString, QByteArray> filesMadeWith(const Options& options)
{
    const QTemporaryDir folder;
    writeExport(folder.path(), options);
    return filesOf(folder.path());
}

QDomElement seriesOf(const QDomDocument& document)
{
    return document.documentElement()
        .firstChildElement("BODY")
        .firstChildElement("Patient")
        .firstChildElement("Study")
        .firstChildElement("Series");
}

QDomDocument parsed(const QString& path)
{
    QDomDocument document;
    QString message;
    EXPECT_TRUE(document.setContent(contentOf(path), &message)) << message.toStdString();
    return document;
}

QString firstBelow(const QDomElement& element, const QString& name)
{
    return element.elementsByTagName(name).at(0).toElement().text();
}

QDomElement child(const QDomElement& element, const QStringList& path)
{
    QDomElement result = element;
    for (const QString& name : path) {
        result = result.firstChildElement(name);
    }
    return result;
}

} // namespace

TEST(PhantomFiles, AreTheSameBytesForTheSameSeedInEveryFormat)
{
    for (const QString& format : imageFormats()) {
        Options options = small();
        options.imageFormat = format;
        const auto first = filesMadeWith(options);
        EXPECT_EQ(first.size(), 4U + 6U + 1U);
        EXPECT_EQ(first, filesMadeWith(options)) << format.toStdString();
    }
}

TEST(PhantomFiles, DifferForAnotherSeed)
{
    Options options = small();
    const auto first = filesMadeWith(options);
    options.seed = 2;
    const auto second = filesMadeWith(options);
    EXPECT_NE(first.at("truth_ILM.csv"), second.at("truth_ILM.csv"));
    EXPECT_NE(first.begin()->second, second.begin()->second);
}

TEST(PhantomFiles, HoldTheSurfacesAsTabbedRowsWithATrailingTab)
{
    const QTemporaryDir folder;
    const Export written = writeExport(folder.path(), small());
    for (const Surface& surface : written.surfaces) {
        QByteArray expected;
        ASSERT_EQ(surface.rows.size(), 3U);
        for (const auto& row : surface.rows) {
            ASSERT_EQ(row.size(), 32U);
            for (const unsigned short position : row) {
                expected += QByteArray::number(position) + "\t";
            }
            expected += "\n";
        }
        EXPECT_EQ(contentOf(folder.filePath("truth_" + surface.identifier + ".csv")), expected);
    }
}

TEST(PhantomFiles, AreEightBitGreyImagesOfTheStatedSizeBesideTheXml)
{
    for (const QString& format : imageFormats()) {
        const QTemporaryDir folder;
        Options options = small();
        options.imageFormat = format;
        const Export written = writeExport(folder.path(), options);
        ASSERT_EQ(written.imagePaths.size(), 4);
        for (int i = 0; i < 4; ++i) {
            const QImage image(written.imagePaths[i]);
            EXPECT_EQ(image.size(), i == 0 ? QSize(64, 64) : QSize(32, 120));
            EXPECT_TRUE(image.isGrayscale());
            EXPECT_EQ(QFileInfo(written.imagePaths[i]).suffix(), format);
        }
    }
}

TEST(PhantomXml, NestsItsElementsAsTheDeviceDoes)
{
    const QTemporaryDir folder;
    Options options = small();
    options.rightEye = false;
    const Export written = writeExport(folder.path(), options);
    const QDomDocument document = parsed(written.xmlPath);
    EXPECT_EQ(document.documentElement().tagName(), "HEDX");
    const QDomElement body = child(document.documentElement(), {"BODY"});
    EXPECT_FALSE(child(body, {"SWVersion", "Version"}).isNull());
    const QDomElement patient = child(body, {"Patient"});
    EXPECT_FALSE(child(patient, {"PatientUIDList", "PatientUID"}).isNull());
    EXPECT_FALSE(child(patient, {"Birthdate", "Date", "Year"}).isNull());
    EXPECT_FALSE(child(patient, {"Study", "StudyDate", "Date", "Year"}).isNull());
    EXPECT_EQ(firstBelow(patient, "ID"), child(patient, {"ID"}).text());

    const QDomElement series = seriesOf(document);
    EXPECT_EQ(child(series, {"ID"}).text(), written.seriesId);
    EXPECT_FALSE(child(series, {"ReferenceSeries", "ID"}).isNull());
    EXPECT_FALSE(child(series, {"ThicknessGrid", "Type"}).isNull());
    EXPECT_FALSE(child(series, {"GeneralEquipment", "Manufacturer"}).isNull());
    EXPECT_EQ(child(series, {"Modality"}).text(), "OCT");
    // Readers take the first element of the name anywhere below.
    EXPECT_EQ(firstBelow(series, "ID"), written.seriesId);
    EXPECT_EQ(firstBelow(series, "Type"), "Volume");
    EXPECT_NE(child(series, {"ReferenceSeries", "ID"}).text(), written.seriesId);
}

TEST(PhantomXml, TellsOfEveryImageWhatItShowsAndWhere)
{
    const QTemporaryDir folder;
    const Export written = writeExport(folder.path(), small());
    const QDomElement series = seriesOf(parsed(written.xmlPath));
    QStringList types;
    QStringList names;
    for (QDomElement image = series.firstChildElement("Image"); !image.isNull();
         image = image.nextSiblingElement("Image")) {
        types += child(image, {"ImageType", "Type"}).text();
        EXPECT_EQ(firstBelow(image, "Type"), types.last());
        EXPECT_EQ(child(image, {"Laterality"}).text(), "R");
        const QString url = child(image, {"ImageData", "ExamURL"}).text();
        EXPECT_TRUE(url.startsWith("file:///C:\\"));
        names += url.mid(url.lastIndexOf('\\') + 1);
        const QDomElement context = child(image, {"OphthalmicAcquisitionContext"});
        EXPECT_GT(child(context, {"ScaleX"}).text().toDouble(), 0.0);
        if (types.last() == "OCT") {
            EXPECT_EQ(child(context, {"Width"}).text(), "32");
            EXPECT_EQ(child(context, {"Height"}).text(), "120");
            EXPECT_EQ(child(context, {"ScaleY"}).text(), "0.003872");
            EXPECT_FALSE(child(image, {"Segmentation"}).isNull());
            const double start = child(context, {"Start", "Coord", "X"}).text().toDouble();
            const double end = child(context, {"End", "Coord", "X"}).text().toDouble();
            EXPECT_NEAR(end - start, 5.888, 0.002);
            EXPECT_NEAR(child(context, {"ScaleX"}).text().toDouble() * 32, 5.888, 0.002);
        }
    }
    EXPECT_EQ(types, (QStringList{"LOCALIZER", "OCT", "OCT", "OCT"}));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(names[i], QFileInfo(written.imagePaths[i]).fileName());
    }
}

TEST(PhantomXml, GivesCirclesACentreAndTheEyesDirection)
{
    for (const bool rightEye : {true, false}) {
        const QTemporaryDir folder;
        Options options = small();
        options.pattern = Pattern::Circle;
        options.rightEye = rightEye;
        const Export written = writeExport(folder.path(), options);
        EXPECT_EQ(written.imagePaths.size(), 2);
        const QDomElement series = seriesOf(parsed(written.xmlPath));
        EXPECT_EQ(firstBelow(series, "Type"), "Circle");
        const QDomElement context =
            series.elementsByTagName("OphthalmicAcquisitionContext").at(1).toElement();
        EXPECT_EQ(child(context, {"Direction"}).text(), rightEye ? "CW" : "CCW");
        const double radius = child(context, {"Center", "Coord", "X"}).text().toDouble() -
                              child(context, {"Start", "Coord", "X"}).text().toDouble();
        EXPECT_NEAR(radius, rightEye ? 1.75 : -1.75, 0.002);
        EXPECT_TRUE(child(context, {"End"}).isNull());
    }
}

TEST(PhantomXml, LaysAllLinesOfAStarThroughTheFovea)
{
    const QTemporaryDir folder;
    Options options = small();
    options.pattern = Pattern::Star;
    options.bScans = 6;
    const Export written = writeExport(folder.path(), options);
    const QDomElement series = seriesOf(parsed(written.xmlPath));
    EXPECT_EQ(firstBelow(series, "Type"), "Star");
    const QDomNodeList starts = series.elementsByTagName("Start");
    const QDomNodeList ends = series.elementsByTagName("End");
    ASSERT_EQ(starts.size(), 6);
    for (int i = 0; i < 6; ++i) {
        const auto middle = [&](const QString& axis) {
            return 0.5 * (child(starts.at(i).toElement(), {"Coord", axis}).text().toDouble() +
                          child(ends.at(i).toElement(), {"Coord", axis}).text().toDouble());
        };
        EXPECT_NEAR(middle("X"), written.foveaX, 0.002);
        EXPECT_NEAR(middle("Y"), written.foveaY, 0.002);
    }
}

namespace {

void expectTinyExport(Pattern pattern, Kind kind, int aScans, int rows, int bScans)
{
    const QTemporaryDir folder;
    Options options;
    options.pattern = pattern;
    options.kind = kind;
    options.aScans = aScans;
    options.rows = rows;
    options.bScans = bScans;
    options.localizerSize = rows;
    const Export written = writeExport(folder.path(), options);
    const bool single = pattern == Pattern::Section || pattern == Pattern::Circle;
    const int expectedBScans = single ? 1 : bScans;
    ASSERT_EQ(written.imagePaths.size(), 1 + expectedBScans);
    EXPECT_EQ(QImage(written.imagePaths[0]).size(), QSize(rows, rows));
    EXPECT_EQ(QImage(written.imagePaths.last()).size(), QSize(aScans, rows));
    for (const Surface& surface : written.surfaces) {
        ASSERT_EQ(surface.rows.size(), static_cast<std::size_t>(expectedBScans));
        for (const auto& row : surface.rows) {
            ASSERT_EQ(row.size(), static_cast<std::size_t>(aScans));
            EXPECT_THAT(row, testing::Each(testing::Lt(rows)));
        }
    }
}

} // namespace

TEST(PhantomFiles, CanBeTinyInEveryDirectionAndPattern)
{
    for (const Pattern pattern :
         {Pattern::Volume, Pattern::Section, Pattern::Circle, Pattern::Star}) {
        for (int size = 0; size < 27; ++size) {
            expectTinyExport(pattern, Kind::Normal, 1 + size % 3, 1 + size / 3 % 3, 1 + size / 9);
        }
        for (const Kind kind : {Kind::Drusen, Kind::Mouse}) {
            expectTinyExport(pattern, kind, 1, 1, 1);
            expectTinyExport(pattern, kind, 2, 3, 2);
        }
    }
}

TEST(PhantomFiles, AreDescribedBeforehandAsTheyAreWritten)
{
    const QTemporaryDir folder;
    const Export described = describeExport(folder.path(), small());
    EXPECT_TRUE(filesOf(folder.path()).empty());
    const Export written = writeExport(folder.path(), small());
    EXPECT_EQ(described.xmlPath, written.xmlPath);
    EXPECT_EQ(described.imagePaths, written.imagePaths);
    EXPECT_EQ(described.seriesId, written.seriesId);
    EXPECT_EQ(described.foveaX, written.foveaX);
    ASSERT_EQ(described.surfaces.size(), written.surfaces.size());
    for (int i = 0; i < written.surfaces.size(); ++i) {
        EXPECT_EQ(described.surfaces[i].rows, written.surfaces[i].rows);
    }
}

TEST(PhantomOptions, OutsideWhatCanBeMadeAreNamed)
{
    const auto problem = [](auto change) {
        Options options;
        change(options);
        return problemWith(options).toStdString();
    };
    EXPECT_EQ(problem([](Options&) {}), "");
    EXPECT_EQ(problem([](Options& o) { o.aScans = 0; }),
              "The number of A-scans must be from 1 to 4096, not 0.");
    EXPECT_EQ(problem([](Options& o) { o.rows = -3; }),
              "The number of rows must be from 1 to 4096, not -3.");
    EXPECT_EQ(problem([](Options& o) { o.bScans = 1025; }),
              "The number of B-scans must be from 1 to 1024, not 1025.");
    EXPECT_EQ(problem([](Options& o) { o.localizerSize = 0; }),
              "The size of the localizer must be from 1 to 4096, not 0.");
    EXPECT_EQ(problem([](Options& o) { o.noise = -0.5; }),
              "The noise must be from 0 to 10, not -0.5.");
    EXPECT_THAT(problem([](Options& o) { o.noise = std::numeric_limits<double>::quiet_NaN(); }),
                HasSubstr("The noise must be from 0 to 10"));
    EXPECT_EQ(problem([](Options& o) { o.imageFormat = "gif"; }),
              "The image format must be one of tif, bmp, png, jpg, not \"gif\".");
    Options options;
    options.rows = 0;
    const QTemporaryDir folder;
    EXPECT_THROW(writeExport(folder.path(), options), Assertion);
    EXPECT_TRUE(filesOf(folder.path()).empty());
}

TEST(PhantomFiles, ThatCannotBeWrittenAreNamedWithTheReason)
{
    const QTemporaryDir folder;
    QFile blocker(folder.filePath("blocker"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    try {
        writeExport(folder.filePath("blocker/below"), small());
        FAIL() << "a folder below a file was made";
    } catch (const IOFailure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("blocker/below"));
        EXPECT_THAT(failure.what(), HasSubstr("Not a directory"));
    }

    ASSERT_TRUE(QDir(folder.path()).mkpath("out/export.xml"));
    try {
        writeExport(folder.filePath("out"), small());
        FAIL() << "a folder was replaced by a file";
    } catch (const IOFailure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("out/export.xml"));
        EXPECT_THAT(failure.what(), HasSubstr("Is a directory"));
    }
}

TEST(PhantomFiles, ReportAnImageThatCannotBeWrittenAndLeaveNoXml)
{
    const QTemporaryDir folder;
    const Export written = writeExport(folder.path(), small());
    ASSERT_TRUE(QFile::remove(written.imagePaths[2]));
    ASSERT_TRUE(QFile::remove(written.xmlPath));
    ASSERT_TRUE(QDir().mkpath(written.imagePaths[2]));
    try {
        writeExport(folder.path(), small());
        FAIL() << "a folder was replaced by an image";
    } catch (const IOFailure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr(written.imagePaths[2].toStdString()));
    }
    EXPECT_FALSE(QFileInfo::exists(written.xmlPath));
}

} // namespace kelp::phantom
