#include "TestExport.h"

#include "HeidelbergExport.h"
#include "OCTDecoder.h"
#include "OCTDecoderHeidelbergXML.h"
#include "kelpException.h"

#include <QDir>
#include <QFile>
#include <QXmlStreamWriter>

#include <mutex>

namespace kelp::oct::test {

namespace {

class ExportWriter
{
public:
    explicit ExportWriter(const TestExportOptions& options) : m_options(options), m_xml(&m_text)
    {
        m_xml.setAutoFormatting(true);
        m_xml.setAutoFormattingIndent(1);
    }

    QString write()
    {
        m_xml.writeStartDocument();
        for (const char* name : {"HEDX", "BODY"}) {
            m_xml.writeStartElement(name);
        }
        group("SWVersion", {{"Name", "Test"}, {"Version", "1.0"}});
        m_xml.writeStartElement("Patient");
        writePatient();
        m_xml.writeStartElement("Study");
        m_xml.writeTextElement("ID", "1");
        date("StudyDate", "2020", "2", "29");
        writeSeries();
        m_xml.writeEndDocument();
        return m_text;
    }

private:
    using Texts = QList<QPair<QString, QString>>;

    void group(const QString& name, const Texts& children)
    {
        m_xml.writeStartElement(name);
        for (const auto& child : children) {
            m_xml.writeTextElement(child.first, child.second);
        }
        m_xml.writeEndElement();
    }

    void date(const QString& name, const QString& year, const QString& month, const QString& day)
    {
        m_xml.writeStartElement(name);
        group("Date", {{"Year", year}, {"Month", month}, {"Day", day}});
        m_xml.writeEndElement();
    }

    void coord(const QString& name, const Vector2d& position)
    {
        m_xml.writeStartElement(name);
        group("Coord", {{"X", QString::number(position.x, 'g', 17)},
                        {"Y", QString::number(position.y, 'g', 17)}});
        m_xml.writeEndElement();
    }

    void writePatient()
    {
        m_xml.writeTextElement("ID", "17");
        m_xml.writeTextElement("PatientID", "P17");
        m_xml.writeTextElement("LastName", "Muster");
        m_xml.writeTextElement("FirstNames", "Eva Maria");
        date("Birthdate", "1950", "6", "15");
        m_xml.writeTextElement("Sex", "F");
    }

    void writeSeries()
    {
        m_xml.writeStartElement("Series");
        m_xml.writeTextElement("ID", m_options.seriesId);
        group("ReferenceSeries", {{"ID", "99"}});
        m_xml.writeTextElement("ModalityProcedure", "IR_OCT");
        m_xml.writeTextElement("Modality", m_options.modality);
        m_xml.writeTextElement("Type", m_options.type);
        m_xml.writeTextElement("Laterality", m_options.laterality);
        group("GeneralEquipment",
              {{"Manufacturer", "Test Optics"}, {"ManufacturerModelName", "T1"}});
        if (m_options.localizer) {
            writeLocalizer();
        }
        for (int i = 0; i < m_options.bScans; ++i) {
            writeBScan(i);
        }
        group("ThicknessGrid", {{"Type", "2"}});
        m_xml.writeEndElement();
    }

    void beginImage(const QString& id, const QString& type, const Texts& furtherTypeTexts)
    {
        m_xml.writeStartElement("Image");
        m_xml.writeTextElement("ID", id);
        m_xml.writeTextElement("ImageNumber", id);
        m_xml.writeTextElement("Laterality", m_options.laterality);
        m_xml.writeStartElement("AcquisitionTime");
        group("Time", {{"Hour", "10"}, {"Minute", "5"}, {"Second", "12.5"}, {"UTCBias", "60"}});
        m_xml.writeEndElement();
        group("ImageType", Texts{{"Type", type}} + furtherTypeTexts);
        m_xml.writeStartElement("OphthalmicAcquisitionContext");
    }

    void endImage(const QString& fileName)
    {
        m_xml.writeEndElement();
        group("ImageData", {{"Extension", m_options.imageFormat.toUpper()},
                            {"ExamURL", "file:///C:\\export\\" + fileName}});
        m_xml.writeEndElement();
    }

    void writeLocalizer()
    {
        beginImage("0", "LOCALIZER", {{"LightSource", "IR"}});
        for (const auto& text : Texts{{"Width", "8"},
                                      {"Height", "8"},
                                      {"ScaleX", "0.5"},
                                      {"ScaleY", "0.5"},
                                      {"Angle", "30"}}) {
            m_xml.writeTextElement(text.first, text.second);
        }
        endImage("localizer." + m_options.imageFormat);
    }

    void writeBScan(int index)
    {
        beginImage(QString::number(index + 1), "OCT", {});
        for (const auto& text : Texts{{"Width", QString::number(m_options.aScans)},
                                      {"Height", QString::number(m_options.rows)},
                                      {"ScaleX", m_options.scaleX},
                                      {"ScaleY", m_options.scaleY},
                                      {"NumAve", "16"},
                                      {"ImageQuality", "30"}}) {
            m_xml.writeTextElement(text.first, text.second);
        }
        if (!m_options.direction.isEmpty()) {
            m_xml.writeTextElement("Direction", m_options.direction);
        }
        coord("Start", m_options.start + index * m_options.bScanStep);
        coord("End", m_options.end + index * m_options.bScanStep);
        if (m_options.type == "Circle") {
            coord("Center", m_options.center);
        }
        group("Segmentation", {{"ID", "5"}, {"Width", "3"}, {"Type", "ILM"}});
        endImage(testImageName(m_options, index));
    }

    const TestExportOptions& m_options;
    QString m_text;
    QXmlStreamWriter m_xml;
};

void save(const QImage& image, const QString& path)
{
    if (!image.save(path)) {
        throw IOFailure(QString("Could not write the test image %1").arg(path));
    }
}

/// The contents of scans in memory, named in their URIs by their number.
struct Contents
{
    std::mutex mutex;
    QList<TestScan> scans;

    static Contents& instance()
    {
        static Contents contents;
        return contents;
    }
    QString add(const TestScan& scan)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        scans.append(scan);
        return QString::number(scans.size() - 1);
    }
    TestScan get(const QString& number)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return scans.at(number.toInt());
    }
};

class TestDecoder : public OCTDecoder
{
public:
    bool decode() override
    {
        const TestScan scan = Contents::instance().get(getUris().first().queryItem("number"));
        m_metaInfo = scan.metaInfo;
        m_scanPattern = scan.pattern;
        m_anatomicalTarget = scan.target;
        m_localizerImage = scan.localizer;
        m_localizerSpacing = scan.localizerSpacing;
        m_bScanImages = scan.images;
        m_bScanPositions = scan.positions;
        for (int i = 0; i < scan.images.size(); ++i) {
            m_bScanAxialResolutions.append(scan.axialResolution);
            m_bScanMetaInfos.append(scan.metaInfos.value(i));
        }
        return true;
    }
};

class TestDecoderFactory : public CaFactory<OCTDecoder>::Factory
{
public:
    OCTDecoder* createInstance() const override { return new TestDecoder; }
};

} // namespace

int rampPixel(int bScan, int row, int column)
{
    return (bScan + row + column) % 256;
}

QString testExportXml(const TestExportOptions& options)
{
    return ExportWriter(options).write();
}

QString testImageName(const TestExportOptions& options, int bScan)
{
    return QString("b%1.%2").arg(bScan).arg(options.imageFormat);
}

QImage testImage(const TestExportOptions& options, int bScan)
{
    QImage image(options.aScans, options.rows, QImage::Format_Grayscale8);
    for (int row = 0; row < options.rows; ++row) {
        uchar* const line = image.scanLine(row);
        for (int column = 0; column < options.aScans; ++column) {
            line[column] = static_cast<uchar>(options.pixel(bScan, row, column));
        }
    }
    return image;
}

QString writeTestExport(const QString& folder, const TestExportOptions& options)
{
    const QDir dir(folder);
    QFile file(dir.absoluteFilePath("export.xml"));
    const QByteArray bytes = testExportXml(options).toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        throw IOFailure(QString("Could not write the test export %1").arg(file.fileName()));
    }
    if (options.localizer) {
        QImage localizer(8, 8, QImage::Format_Grayscale8);
        localizer.fill(77);
        save(localizer, dir.absoluteFilePath("localizer." + options.imageFormat));
    }
    for (int i = 0; i < options.bScans; ++i) {
        save(testImage(options, i), dir.absoluteFilePath(testImageName(options, i)));
    }
    return file.fileName();
}

OCTScanPtr makeTestExportScan(const QString& xmlPath, const QString& seriesId)
{
    createOCTDecoderHeidelbergXMLFactory();
    return makeScan(xmlPath, seriesId, {});
}

TestScan lineScan(int aScans, int rows, int bScans, double aScanStep, double bScanStep,
                  const Pixel& pixel)
{
    TestScan scan;
    for (int b = 0; b < bScans; ++b) {
        const QSharedPointer<Image> image =
            Image::create(MonoUInt8, {aScans, rows, 1}, {aScanStep, scan.axialResolution, 1.0});
        auto* const pixels = image->pixels<std::uint8_t>();
        QList<Vector2d> positions;
        for (int column = 0; column < aScans; ++column) {
            positions.append({column * aScanStep, b * bScanStep});
            for (int row = 0; row < rows; ++row) {
                pixels[row * aScans + column] = static_cast<std::uint8_t>(pixel(b, row, column));
            }
        }
        scan.images.append(image);
        scan.positions.append(positions);
    }
    return scan;
}

OCTScanPtr makeUnloadedTestScan(const TestScan& contents)
{
    static const bool registered =
        OCTDecoder::getFactory().registerFactory("test", std::make_shared<TestDecoderFactory>());
    static_cast<void>(registered);
    OCTScanPtr scan(new OCTScan);
    scan->setUri("OCTScanURI",
                 URI::compose("test", "memory", "number", Contents::instance().add(contents)));
    return scan;
}

OCTScanPtr makeTestScan(const TestScan& contents)
{
    OCTScanPtr scan = makeUnloadedTestScan(contents);
    scan->doBinLoad();
    return scan;
}

} // namespace kelp::oct::test
