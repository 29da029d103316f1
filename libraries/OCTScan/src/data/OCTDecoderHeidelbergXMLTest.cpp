#include "OCTDecoderHeidelbergXML.h"

#include "AScanPositions.h"
#include "TestExport.h"
#include "TraceCapture.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTime>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

namespace {

using namespace kelp::oct;
using namespace kelp::oct::test;

/// An export in a folder of its own whose XML text a test may change before it is decoded.
class HeidelbergDecoder : public testing::Test
{
protected:
    void write(const TestExportOptions& options)
    {
        m_path = writeTestExport(m_dir.path(), options);
        m_xml = testExportXml(options);
    }

    void change(const QString& from, const QString& to)
    {
        ASSERT_TRUE(m_xml.contains(from)) << from.toStdString();
        m_xml.replace(from, to);
    }

    bool decode(const QString& id = "1")
    {
        QFile file(m_path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(m_xml.toUtf8());
        file.close();
        m_decoder = OCTDecoderHeidelbergXML();
        m_decoder.setUris({kelp::URI::compose("hra", m_path, "seriesId", id)});
        m_trace = std::make_unique<TraceCapture>();
        const bool decoded = m_decoder.decode();
        m_lines = m_trace->lines();
        m_trace.reset();
        return decoded;
    }

    QString reason() const { return m_decoder.getFailureReason(); }

    QTemporaryDir m_dir;
    QString m_path;
    QString m_xml;
    OCTDecoderHeidelbergXML m_decoder;
    QStringList m_lines;
    std::unique_ptr<TraceCapture> m_trace;
};

TEST_F(HeidelbergDecoder, IsRegisteredUnderItsSchemeOnce)
{
    EXPECT_EQ(createOCTDecoderHeidelbergXMLFactory(), 1);
    EXPECT_EQ(createOCTDecoderHeidelbergXMLFactory(), 1);
    EXPECT_NE(dynamic_cast<OCTDecoderHeidelbergXML*>(OCTDecoder::getOCTDecoder("hra").get()),
              nullptr);
}

TEST_F(HeidelbergDecoder, ReadsPatientAndSeries)
{
    write({});
    ASSERT_TRUE(decode());
    const auto meta = m_decoder.getMetaInfo();
    EXPECT_EQ(meta.value("Patient Last Name"), "Muster");
    EXPECT_EQ(meta.value("Patient First Name"), "Eva Maria");
    EXPECT_EQ(meta.value("Patient Id"), "17");
    EXPECT_EQ(meta.value("Patient Sex"), "F");
    EXPECT_EQ(meta.value("Patient Birth Date"), QDate(1950, 6, 15));
    EXPECT_EQ(meta.value("Scan Id"), "1");
    EXPECT_EQ(meta.value("Modality"), "OCT");
    EXPECT_EQ(meta.value("Modality Procedure"), "IR_OCT");
    EXPECT_EQ(meta.value("Manufacturer"), "Test Optics");
    EXPECT_EQ(meta.value("Manufacturer Model"), "T1");
    EXPECT_EQ(meta.value("Scan Pattern"), "Volume");
    EXPECT_EQ(meta.size(), 11);
    EXPECT_EQ(reason(), "");
}

TEST_F(HeidelbergDecoder, LeavesOutTheKeysOfMissingElements)
{
    write({});
    change("<Sex>F</Sex>", "");
    change("<Month>6</Month>", "<Month>13</Month>");
    change("<ManufacturerModelName>T1</ManufacturerModelName>", "");
    change("<NumAve>16</NumAve>", "");
    ASSERT_TRUE(decode());
    EXPECT_FALSE(m_decoder.getMetaInfo().contains("Patient Sex"));
    EXPECT_FALSE(m_decoder.getMetaInfo().contains("Patient Birth Date"));
    EXPECT_FALSE(m_decoder.getMetaInfo().contains("Manufacturer Model"));
    EXPECT_FALSE(m_decoder.getBScanMetaInfo(0).contains("Number Averaged"));
}

TEST_F(HeidelbergDecoder, ReadsTheKeysOfABScan)
{
    TestExportOptions options;
    options.direction = "CW";
    write(options);
    ASSERT_TRUE(decode());
    ASSERT_EQ(m_decoder.getNumberOfBscans(), 3u);
    const auto meta = m_decoder.getBScanMetaInfo(1);
    EXPECT_EQ(meta.value("Id"), "2");
    EXPECT_EQ(meta.value("Laterality"), "R");
    EXPECT_EQ(meta.value("Acquisition Time"), QTime(10, 5, 12, 500));
    EXPECT_EQ(meta.value("Width"), "8");
    EXPECT_EQ(meta.value("Height"), "8");
    EXPECT_EQ(meta.value("SpacingX"), "0.0125");
    EXPECT_EQ(meta.value("SpacingY"), "0.003872");
    EXPECT_EQ(meta.value("Number Averaged"), "16");
    EXPECT_EQ(meta.value("Quality"), "30");
    EXPECT_EQ(meta.value("Direction"), "CW");
    EXPECT_EQ(meta.value("StartX"), 1.0);
    EXPECT_EQ(meta.value("StartY"), 2.1);
    EXPECT_EQ(meta.value("EndX"), 1.0875);
    EXPECT_EQ(meta.value("EndY"), 2.1);
    EXPECT_FALSE(meta.contains("Image File Extension"));
    EXPECT_FALSE(meta.contains("CenterX"));
    EXPECT_FALSE(meta.contains("Resolution Type"));
    EXPECT_EQ(meta.size(), 14);
}

TEST_F(HeidelbergDecoder, ReadsImagesWithTheirSpacing)
{
    write({});
    ASSERT_TRUE(decode());
    const auto image = m_decoder.getBScanImage(2);
    EXPECT_EQ(image->getPixelTypeId(), kelp::MonoUInt8);
    EXPECT_EQ(image->getDimensions(), (kelp::Vector3<int>{8, 8, 1}));
    EXPECT_EQ(image->getSpacing(), (kelp::Vector3<double>{0.0125, 0.003872, 1.0}));
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(image->pixels<std::uint8_t>()[i], rampPixel(2, i / 8, i % 8));
    }
    EXPECT_EQ(m_decoder.getBScanAxialResolution(2), 0.003872);
    const QStringList urls{"file:///C:\\export\\localizer.png", "file:///C:\\export\\b0.png",
                           "file:///C:\\export\\b1.png", "file:///C:\\export\\b2.png"};
    EXPECT_EQ(m_decoder.getImageUrls(), urls);
}

TEST_F(HeidelbergDecoder, ReadsEveryImageFormatOfTheDevice)
{
    for (const char* format : {"tif", "bmp", "png", "jpg"}) {
        TestExportOptions options;
        options.imageFormat = format;
        options.pixel = [](int, int, int) { return 100; };
        write(options);
        ASSERT_TRUE(decode());
        ASSERT_FALSE(m_decoder.getBScanImage(0).isNull()) << format;
        EXPECT_EQ(m_decoder.getBScanImage(0)->pixels<std::uint8_t>()[9], 100) << format;
    }
}

TEST_F(HeidelbergDecoder, SpacingThatIsNotAboveZeroBecomesOne)
{
    for (const char* bad : {"0", "-0.01", "wide", "nan", ""}) {
        write({});
        change("<ScaleY>0.003872</ScaleY>", QString("<ScaleY>%1</ScaleY>").arg(bad));
        ASSERT_TRUE(decode());
        EXPECT_EQ(m_decoder.getBScanAxialResolution(0), 1.0) << bad;
        EXPECT_EQ(m_decoder.getBScanImage(0)->getSpacing(), (kelp::Vector3<double>{1.0, 1.0, 1.0}));
    }
}

TEST_F(HeidelbergDecoder, ImageKeepsItsSpacingWhenOneScaleIsMissing)
{
    write({});
    change("<ScaleX>0.0125</ScaleX>", "");
    ASSERT_TRUE(decode());
    EXPECT_EQ(m_decoder.getBScanAxialResolution(0), 0.003872);
    EXPECT_EQ(m_decoder.getBScanImage(0)->getSpacing(), (kelp::Vector3<double>{1.0, 1.0, 1.0}));
}

TEST_F(HeidelbergDecoder, ReadsTheLocalizer)
{
    write({});
    ASSERT_TRUE(decode());
    ASSERT_TRUE(m_decoder.hasLocalizer());
    EXPECT_EQ(m_decoder.getAnatomicalTarget(), "OD");
    EXPECT_EQ(m_decoder.getLocalizerImage()->pixels<std::uint8_t>()[0], 77);
    EXPECT_EQ(m_decoder.getLocalizerImage()->getSpacing(), (kelp::Vector3<double>{0.5, 0.5, 1.0}));
    EXPECT_EQ(m_decoder.getLocalizerSpacing(), (Vector2d{0.5, 0.5}));
    const auto meta = m_decoder.getLocalizerMetaInfo();
    EXPECT_EQ(meta.value("Id"), "0");
    EXPECT_EQ(meta.value("Laterality"), "R");
    EXPECT_EQ(meta.value("Acquisition Time"), QTime(10, 5, 12, 500));
    EXPECT_EQ(meta.value("Width"), "8");
    EXPECT_EQ(meta.value("Height"), "8");
    EXPECT_EQ(meta.value("Spacing X"), "0.5");
    EXPECT_EQ(meta.value("Spacing Y"), "0.5");
    EXPECT_EQ(meta.value("Angle"), "30");
    EXPECT_EQ(meta.value("Image File Extension"), "PNG");
    // The first Type is that of the image, and no light source lies below it.
    EXPECT_FALSE(meta.contains("Light Source"));
    EXPECT_EQ(meta.size(), 9);
}

TEST_F(HeidelbergDecoder, ReadsTheFurtherKeysOfALocalizer)
{
    write({});
    change("<Angle>30</Angle>",
           "<Angle>30</Angle><Focus>-1.5</Focus><Resolution>HR</Resolution>"
           "<AutoSensorGain>1</AutoSensorGain><SensorGain>95</SensorGain><NumAve>7</NumAve>"
           "<FixationTarget>Centre</FixationTarget>");
    // The first Image of the text is the localizer.
    const int image = m_xml.indexOf("<Image>") + 7;
    m_xml.insert(image, "<Type><LightSource>IR</LightSource></Type>");
    ASSERT_TRUE(decode());
    const auto meta = m_decoder.getLocalizerMetaInfo();
    EXPECT_EQ(meta.value("Light Source"), "IR");
    EXPECT_EQ(meta.value("Focus"), "-1.5");
    EXPECT_EQ(meta.value("Resolution Type"), "HR");
    EXPECT_EQ(meta.value("Auto Sensor Gain"), "1");
    EXPECT_EQ(meta.value("Sensor Gain"), "95");
    EXPECT_EQ(meta.value("Number Averaged"), "7");
    EXPECT_EQ(meta.value("Fixation Target"), "Centre");
}

TEST_F(HeidelbergDecoder, EyeComesFromTheLocalizerAlone)
{
    const std::pair<const char*, const char*> cases[] = {
        {"R", "OD"}, {"L", "OS"}, {"r", "O_Unknown"}, {"", "O_Unknown"}};
    for (const auto& [laterality, target] : cases) {
        TestExportOptions options;
        options.laterality = laterality;
        write(options);
        ASSERT_TRUE(decode());
        EXPECT_EQ(m_decoder.getAnatomicalTarget(), target);
    }
    write({});
    change("<Laterality>R</Laterality>", "");
    ASSERT_TRUE(decode());
    EXPECT_EQ(m_decoder.getAnatomicalTarget(), "O_Unknown");

    TestExportOptions without;
    without.localizer = false;
    write(without);
    ASSERT_TRUE(decode());
    EXPECT_EQ(m_decoder.getAnatomicalTarget(), "");
    EXPECT_FALSE(m_decoder.hasLocalizer());
    EXPECT_EQ(m_decoder.getLocalizerSpacing(), (Vector2d{0.0, 0.0}));
}

TEST_F(HeidelbergDecoder, LocalizerSpacingThatIsNotAboveZeroBecomesOne)
{
    write({});
    change("<ScaleX>0.5</ScaleX>", "<ScaleX>0</ScaleX>");
    ASSERT_TRUE(decode());
    EXPECT_EQ(m_decoder.getLocalizerSpacing(), (Vector2d{1.0, 1.0}));
    EXPECT_EQ(m_decoder.getLocalizerImage()->getSpacing(), (kelp::Vector3<double>{1.0, 1.0, 1.0}));
}

TEST_F(HeidelbergDecoder, KnowsThePatternsOfTheSeries)
{
    const QStringList cases[] = {
        {"Volume", "Volume", "detected VOLUME scan pattern"},
        {"Fast Volume", "Volume", "detected VOLUME scan pattern"},
        {"Section", "Single BScan", "detected single Bscan pattern"},
        {"Circle", "Circular BScan", "detected Circular Bscan pattern"},
        {"Star", "Star", "detected Star pattern"},
    };
    for (const QStringList& one : cases) {
        TestExportOptions options;
        options.type = one.at(0);
        write(options);
        ASSERT_TRUE(decode());
        EXPECT_EQ(m_decoder.getScanPattern(), one.at(1));
        const int line = m_lines.indexOf(one.at(2));
        ASSERT_GE(line, 0);
        EXPECT_EQ(m_lines.at(line + 1), "got scan type " + one.at(0));
        EXPECT_EQ(m_lines.at(line + 2), "set to pattern type " + one.at(1));
    }
    TestExportOptions options;
    options.type = "Spiral";
    write(options);
    ASSERT_TRUE(decode());
    EXPECT_EQ(m_decoder.getScanPattern(), "Unknown");
    EXPECT_TRUE(m_decoder.getBScanPositions(0).isEmpty());
}

TEST_F(HeidelbergDecoder, PatternStaysEmptyWithoutAType)
{
    TestExportOptions options;
    options.localizer = false;
    write(options);
    for (const char* type : {"<Type>Volume</Type>", "<Type>2</Type>", "<Type>ILM</Type>"}) {
        change(type, "");
    }
    change("<Type>OCT</Type>", "");
    ASSERT_TRUE(decode());
    EXPECT_EQ(m_decoder.getScanPattern(), "");
    EXPECT_EQ(m_decoder.getNumberOfBscans(), 0u);
    EXPECT_TRUE(m_lines.contains("no image type information found for image 2"));
}

TEST_F(HeidelbergDecoder, SkipsImagesOfOtherTypes)
{
    write({});
    const int second = m_xml.indexOf("<Type>OCT</Type>");
    m_xml.replace(second, 16, "<Type>oct</Type>");
    ASSERT_TRUE(decode());
    EXPECT_EQ(m_decoder.getNumberOfBscans(), 2u);
    EXPECT_EQ(m_decoder.getBScanMetaInfo(0).value("Id"), "2");
}

TEST_F(HeidelbergDecoder, PlacesTheAScansOfALineInEqualSteps)
{
    for (const char* type : {"Volume", "Section", "Star"}) {
        TestExportOptions options;
        options.type = type;
        options.start = {0.1, 3.9};
        options.end = {7.157, -2.3};
        write(options);
        ASSERT_TRUE(decode());
        const QList<Vector2d> positions = m_decoder.getBScanPositions(2);
        ASSERT_EQ(positions.size(), 8);
        const Vector2d start{0.1, 3.9 + 2 * 0.1};
        const Vector2d end{7.157, -2.3 + 2 * 0.1};
        for (int i = 0; i < 8; ++i) {
            EXPECT_EQ(positions.at(i).x, start.x + (i * (end.x - start.x)) / 7);
            EXPECT_EQ(positions.at(i).y, start.y + (i * (end.y - start.y)) / 7);
        }
    }
}

TEST_F(HeidelbergDecoder, PlacesTheAScansOfACircle)
{
    for (const char* direction : {"", "CW", "CCW", "ccw"}) {
        TestExportOptions options;
        options.type = "Circle";
        options.bScans = 1;
        options.start = {3.0, 3.5};
        options.center = {1.5, 2.0};
        options.direction = direction;
        write(options);
        ASSERT_TRUE(decode());
        const QList<Vector2d> positions = m_decoder.getBScanPositions(0);
        ASSERT_EQ(positions.size(), 8);
        // The start lies at 45 degrees, so that its mirror image and the steps of 45 degrees fall
        // on the axes and the diagonals.
        EXPECT_NEAR(positions.at(0).x, 3.0, 1e-12);
        EXPECT_NEAR(positions.at(0).y, 2.0 - 1.5, 1e-12);
        const double radius = std::sqrt(4.5);
        const bool counterClockwise = QString(direction) == "CCW";
        EXPECT_NEAR(positions.at(1).x, counterClockwise ? 1.5 : 1.5 + radius, 1e-12) << direction;
        EXPECT_NEAR(positions.at(1).y, counterClockwise ? 2.0 - radius : 2.0, 1e-12) << direction;
        EXPECT_TRUE(m_lines.contains("reading circular bscan"));
    }
}

TEST_F(HeidelbergDecoder, UnparsableCoordinatesAreZero)
{
    TestExportOptions options;
    options.bScans = 1;
    write(options);
    change("<X>1</X>", "<X>left</X>");
    ASSERT_TRUE(decode());
    EXPECT_EQ(m_decoder.getBScanMetaInfo(0).value("StartX"), 0.0);
    EXPECT_EQ(m_decoder.getBScanMetaInfo(0).value("StartY"), 2.0);
}

TEST_F(HeidelbergDecoder, WithoutCoordinatesThereAreNoPositions)
{
    TestExportOptions options;
    options.bScans = 1;
    write(options);
    change("<X>1.0874999999999999</X>", ""); // a coordinate counts only with both numbers
    ASSERT_TRUE(decode());
    EXPECT_FALSE(m_decoder.getBScanMetaInfo(0).contains("EndY"));
    EXPECT_TRUE(m_decoder.getBScanPositions(0).isEmpty());
    EXPECT_TRUE(m_lines.contains("parse bscan: could not find start/end coords"));
    EXPECT_EQ(reason(), QString("B-scan 1 of %1 has no start and end coordinates.").arg(m_path));

    options.type = "Circle";
    write(options);
    change("Center>", "Middle>");
    ASSERT_TRUE(decode());
    EXPECT_TRUE(m_decoder.getBScanPositions(0).isEmpty());
    EXPECT_TRUE(m_lines.contains("parse bscan: could not find start/center coords"));
    EXPECT_EQ(reason(), QString("B-scan 1 of %1 has no start and centre coordinates.").arg(m_path));
}

TEST_F(HeidelbergDecoder, ImageThatCannotBeLoadedStaysAsANullImage)
{
    write({});
    ASSERT_TRUE(QFile::remove(m_dir.filePath("b1.png")));
    ASSERT_TRUE(decode());
    EXPECT_EQ(m_decoder.getNumberOfBscans(), 3u);
    EXPECT_TRUE(m_decoder.getBScanImage(1).isNull());
    EXPECT_TRUE(m_decoder.getBScanPositions(1).isEmpty());
    EXPECT_FALSE(m_decoder.getBScanImage(2).isNull());
    EXPECT_EQ(m_lines.count("bscan image not loaded!"), 1);
    EXPECT_EQ(m_decoder.getImageUrls().size(), 3);
    EXPECT_EQ(
        reason(),
        QString("The image %1 cannot be read: it does not exist.").arg(m_dir.filePath("b1.png")));
}

TEST_F(HeidelbergDecoder, CountsFurtherProblems)
{
    write({});
    for (const char* name : {"localizer.png", "b0.png", "b2.png"}) {
        ASSERT_TRUE(QFile::remove(m_dir.filePath(name)));
    }
    ASSERT_TRUE(decode());
    EXPECT_FALSE(m_decoder.hasLocalizer());
    EXPECT_TRUE(m_lines.contains("localizer image not loaded"));
    EXPECT_EQ(reason(), QString("The image %1 cannot be read: it does not exist. (and 2 more)")
                            .arg(m_dir.filePath("localizer.png")));
}

TEST_F(HeidelbergDecoder, ImageWithoutAFileNameIsNotLoaded)
{
    write({});
    change("<ExamURL>file:///C:\\export\\b1.png</ExamURL>", "");
    ASSERT_TRUE(decode());
    EXPECT_TRUE(m_decoder.getBScanImage(1).isNull());
    EXPECT_EQ(reason(), QString("The file %1 names no file for one of its images.").arg(m_path));
}

TEST_F(HeidelbergDecoder, PrintsWhatItReads)
{
    TestExportOptions options;
    options.bScans = 1;
    options.localizer = false;
    write(options);
    const QString series = "<Series><ID>x</ID></Series>";
    change("<Series>", series + "<Series>");
    ASSERT_TRUE(decode());
    const QString folder = m_dir.path() + "/";
    const QStringList wanted{"retrievingPatientMetaInfo",
                             "OCTDecoderHeidelbergXML meta info size: 5",
                             "found child",
                             "found child",
                             "Found 2 children",
                             "comparing series id x to id 1",
                             "comparing series id 1 to id 1",
                             "found correct series",
                             "detected VOLUME scan pattern",
                             "got scan type Volume",
                             "set to pattern type Volume",
                             "got file name: b0.png",
                             "got folder path: " + folder,
                             "full image path: " + folder + "b0.png",
                             "bscan image loaded with size 8 x 8"};
    EXPECT_EQ(m_lines, wanted);
}

TEST_F(HeidelbergDecoder, ReadsSecondsWithFractionsAndInvalidTimes)
{
    write({});
    change("<Second>12.5</Second>", "<Second>7</Second>");
    ASSERT_TRUE(decode());
    EXPECT_EQ(m_decoder.getBScanMetaInfo(0).value("Acquisition Time"), QTime(10, 5, 7));
    for (const char* bad : {"<Second>61</Second>", "<Second>nan</Second>", "<Second>-1</Second>",
                            "<Second>1e30</Second>", "", "<Second>12.9999</Second>"}) {
        write({});
        change("<Second>12.5</Second>", bad);
        ASSERT_TRUE(decode());
        ASSERT_TRUE(m_decoder.getBScanMetaInfo(0).contains("Acquisition Time"));
        EXPECT_FALSE(m_decoder.getBScanMetaInfo(0).value("Acquisition Time").toTime().isValid());
    }
    write({});
    change("AcquisitionTime>", "OtherTime>");
    ASSERT_TRUE(decode());
    EXPECT_FALSE(m_decoder.getBScanMetaInfo(0).contains("Acquisition Time"));
}

TEST_F(HeidelbergDecoder, SeriesIsChosenByItsOwnIdAndExactText)
{
    write({});
    // The id below ReferenceSeries is not the series' own.
    EXPECT_FALSE(decode("99"));
    EXPECT_TRUE(m_lines.contains("No series with id 99 found"));
    EXPECT_EQ(
        reason(),
        QString("The file %1 holds no series \"99\" in the patient's first study.").arg(m_path));
    EXPECT_FALSE(decode("1 "));
    EXPECT_FALSE(decode(""));
    change("<ID>1</ID>", "<ID></ID>");
    EXPECT_TRUE(decode(""));
}

TEST_F(HeidelbergDecoder, IdAndPathMayHoldAnyCharacter)
{
    ASSERT_TRUE(QDir(m_dir.path()).mkdir(QString::fromUtf8("100% a#b?c&d=é ü+")));
    const QString folder = m_dir.filePath(QString::fromUtf8("100% a#b?c&d=é ü+"));
    TestExportOptions options;
    options.seriesId = "a%20&b=c#d?e +f";
    const QString path = writeTestExport(folder, options);
    OCTDecoderHeidelbergXML decoder;
    decoder.setUris({kelp::URI::compose("hra", path, "seriesId", options.seriesId)});
    EXPECT_TRUE(decoder.decode());
    EXPECT_EQ(decoder.getMetaInfo().value("Scan Id"), options.seriesId);
    EXPECT_EQ(decoder.getNumberOfBscans(), 3u);
    EXPECT_EQ(decoder.getFailureReason(), "");
}

TEST_F(HeidelbergDecoder, WithoutTheStructureOfAnExportFailsWithAReason)
{
    const std::pair<const char*, const char*> cases[] = {
        {"BODY", "The file %1 is no export: it holds no patient."},
        {"Patient", "The file %1 is no export: it holds no patient."},
        {"Study", "The file %1 holds no study of the patient."},
        {"Series", "The file %1 holds no series."},
        {"Image", "The file %1 names no images of series \"1\"."},
    };
    for (const auto& [element, sentence] : cases) {
        write({});
        m_xml.replace(QString("<%1>").arg(element), "<Other>");
        m_xml.replace(QString("</%1>").arg(element), "</Other>");
        EXPECT_FALSE(decode()) << element;
        EXPECT_EQ(reason(), QString(sentence).arg(m_path));
    }
    EXPECT_TRUE(OCTDecoderHeidelbergXML().decode() == false);
}

TEST_F(HeidelbergDecoder, SaysWhenThereIsNoPatient)
{
    write({});
    change("Patient>", "Client>");
    EXPECT_FALSE(decode());
    EXPECT_EQ(m_lines, QStringList{"No patient found"});
}

TEST_F(HeidelbergDecoder, FileThatIsNoXmlFailsWithAReason)
{
    write({});
    m_xml = "<html><p>gone</html>";
    EXPECT_FALSE(decode());
    EXPECT_TRUE(reason().startsWith(QString("The file %1 is no usable XML: ").arg(m_path)));
    ASSERT_TRUE(QFile::remove(m_path));
    m_decoder = OCTDecoderHeidelbergXML();
    m_decoder.setUris({kelp::URI::compose("hra", m_path, "seriesId", "1")});
    EXPECT_FALSE(m_decoder.decode());
    EXPECT_EQ(reason(),
              QString("The file %1 cannot be opened: No such file or directory.").arg(m_path));
}

TEST(AScanPositions, FirstOfACircleIsTheStartMirrored)
{
    for (const Vector2d& d : {Vector2d{1.2, 0.5}, Vector2d{-0.3, 2.0}, Vector2d{0.0, -1.0}}) {
        const Vector2d center{4.0, 5.0};
        const Vector2d first = positionsOnCircle(center + d, center, 10, false).first();
        EXPECT_NEAR(first.x, center.x + d.x, 1e-12);
        EXPECT_NEAR(first.y, center.y - d.y, 1e-12);
    }
}

TEST(AScanPositions, OfACircleFollowTheFormula)
{
    const QList<Vector2d> positions = positionsOnCircle({3.0, 1.0}, {1.0, 2.0}, 7, true);
    const double radius = std::sqrt(2.0 * 2.0 + (-1.0) * (-1.0));
    const double startAngle = 3 * std::numbers::pi - std::atan2(2.0, 1.0);
    for (int i = 0; i < 7; ++i) {
        const double angle = startAngle + i * -(2 * std::numbers::pi / 7);
        EXPECT_EQ(positions.at(i).x, 1.0 + radius * std::sin(angle));
        EXPECT_EQ(positions.at(i).y, 2.0 - radius * std::cos(angle));
    }
}

TEST(AScanPositions, OfNoneOneAndTwoAScans)
{
    EXPECT_TRUE(positionsOnLine({0.0, 0.0}, {1.0, 1.0}, 0).isEmpty());
    EXPECT_TRUE(std::isnan(positionsOnLine({0.0, 0.0}, {1.0, 1.0}, 1).first().x));
    EXPECT_EQ(positionsOnLine({0.0, 0.0}, {1.0, 1.0}, 2),
              (QList<Vector2d>{{0.0, 0.0}, {1.0, 1.0}}));
    EXPECT_TRUE(positionsOnCircle({0.0, 0.0}, {1.0, 1.0}, 0, true).isEmpty());
}

} // namespace
