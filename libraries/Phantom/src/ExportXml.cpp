#include "ExportXml.h"

#include "PhantomRandom.h"

#include <QXmlStreamWriter>

namespace kelp::phantom {

namespace {

struct Date
{
    int year;
    int month;
    int day;
};

QString patternType(Pattern pattern)
{
    switch (pattern) {
    case Pattern::Volume:
        return "Volume";
    case Pattern::Section:
        return "Section";
    case Pattern::Circle:
        return "Circle";
    case Pattern::Star:
        return "Star";
    }
    return {};
}

QString kindName(Kind kind)
{
    switch (kind) {
    case Kind::Normal:
        return "Normal";
    case Kind::Drusen:
        return "Drusen";
    case Kind::Mouse:
        return "Mouse";
    }
    return {};
}

QString twoDigits(int value)
{
    return QString("%1").arg(value, 2, 10, QChar('0'));
}

/// Writes the elements of one export. The order matters: readers take the first element of a name
/// anywhere below a series or an image, so that its own ID and Type stand before those of the
/// elements nested in it.
class ExportXmlWriter
{
public:
    ExportXmlWriter(const Options& options, const ScanGeometry& geometry,
                    const QStringList& imageFileNames, const QList<Surface>& surfaces)
        : m_options(options), m_geometry(geometry), m_imageFileNames(imageFileNames),
          m_surfaces(surfaces), m_xml(&m_content)
    {
        Random random(options.seed, Stream::Identity);
        m_birthDate = {random.integer(1938, 1999), random.integer(1, 12), random.integer(1, 28)};
        m_studyDate = {random.integer(2012, 2019), random.integer(1, 12), random.integer(1, 28)};
        m_hour = random.integer(8, 16);
        m_minute = random.integer(0, 50);
        m_female = random.chance(0.5);
        m_focus = random.uniform(-2.0, 2.0);
        m_quality = random.integer(28, 38);
    }

    QByteArray write()
    {
        m_xml.setAutoFormatting(true);
        m_xml.setAutoFormattingIndent(1);
        m_xml.writeStartDocument();
        m_xml.writeStartElement("HEDX");
        m_xml.writeStartElement("BODY");
        text("ExportType", "Data");
        m_xml.writeStartElement("SWVersion");
        text("Name", "Tessera Phantom");
        text("Version", TESSERA_VERSION);
        m_xml.writeEndElement();
        writePatient();
        m_xml.writeEndElement();
        m_xml.writeEndElement();
        m_xml.writeEndDocument();
        return m_content;
    }

private:
    void text(const QString& name, const QString& value) { m_xml.writeTextElement(name, value); }
    void number(const QString& name, int value) { text(name, QString::number(value)); }
    void number(const QString& name, double value, int decimals)
    {
        text(name, QString::number(value, 'f', decimals));
    }

    void writeDate(const QString& name, const Date& date)
    {
        m_xml.writeStartElement(name);
        m_xml.writeStartElement("Date");
        number("Year", date.year);
        text("Month", twoDigits(date.month));
        text("Day", twoDigits(date.day));
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    void writeCoordinate(const QString& name, const Vector2d& position)
    {
        m_xml.writeStartElement(name);
        m_xml.writeStartElement("Coord");
        number("X", position.x, 3);
        number("Y", position.y, 3);
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    QString laterality() const { return m_options.rightEye ? "R" : "L"; }

    void writePatient()
    {
        m_xml.writeStartElement("Patient");
        text("ID", QString::number(m_options.seed % 100000));
        text("PatientID", QString("PHANTOM-%1").arg(m_options.seed));
        m_xml.writeStartElement("PatientUIDList");
        text("PatientUID", QString("2.25.%1").arg(mix64(m_options.seed)));
        m_xml.writeEndElement();
        text("LastName", "Phantom");
        text("FirstNames", kindName(m_options.kind));
        writeDate("Birthdate", m_birthDate);
        text("Sex", m_female ? "F" : "M");
        writeStudy();
        m_xml.writeEndElement();
    }

    void writeStudy()
    {
        m_xml.writeStartElement("Study");
        text("ID", "1");
        text("StudyUID", QString("2.25.%1").arg(mix64(m_options.seed + 1)));
        writeDate("StudyDate", m_studyDate);
        text("Operator", "phantom");
        writeSeries();
        m_xml.writeEndElement();
    }

    void writeSeries()
    {
        m_xml.writeStartElement("Series");
        text("ID", seriesIdOf(m_options));
        text("SeriesUID", QString("2.25.%1").arg(mix64(m_options.seed + 2)));
        m_xml.writeStartElement("ReferenceSeries");
        text("ID", QString::number(m_options.seed % 100000 + 700000));
        m_xml.writeEndElement();
        text("ExaminedStructure", "Retina");
        text("Modality", "OCT");
        text("ModalityProcedure", "IR_OCT");
        text("Type", patternType(m_options.pattern));
        text("Laterality", laterality());
        number("NumImages", static_cast<int>(m_imageFileNames.size()));
        m_xml.writeStartElement("GeneralEquipment");
        text("Manufacturer", "Tessera");
        text("ManufacturerModelName", "Phantom");
        m_xml.writeEndElement();
        for (int image = 0; image < m_imageFileNames.size(); ++image) {
            if (image == 0) {
                writeLocalizer();
            } else {
                writeBScan(image);
            }
        }
        m_xml.writeStartElement("ThicknessGrid");
        text("Type", "1, 3, 6 mm ETDRS");
        writeCoordinate("CenterPos", m_geometry.fovea);
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    void startImage(int image)
    {
        m_xml.writeStartElement("Image");
        number("ID", image);
        number("ImageNumber", image);
        text("Laterality", laterality());
        m_xml.writeStartElement("AcquisitionTime");
        m_xml.writeStartElement("Time");
        // A B-scan takes 0.4 s with its averaging.
        const int tenths = 4 * image;
        number("Hour", m_hour + (m_minute + tenths / 600) / 60);
        number("Minute", (m_minute + tenths / 600) % 60);
        number("Second", 0.1 * (tenths % 600), 3);
        number("UTCBias", 60);
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    void writeImageData(int image)
    {
        m_xml.writeStartElement("ImageData");
        text("Extension", m_options.imageFormat.toUpper());
        text("ExamURL", "file:///C:\\export\\" + m_imageFileNames[image]);
        m_xml.writeEndElement();
    }

    void writeLocalizer()
    {
        startImage(0);
        m_xml.writeStartElement("ImageType");
        text("Type", "LOCALIZER");
        text("LightSource", "IR");
        m_xml.writeEndElement();
        m_xml.writeStartElement("OphthalmicAcquisitionContext");
        number("Width", m_options.localizerSize);
        number("Height", m_options.localizerSize);
        number("ScaleX", m_geometry.localizerSpacing, 6);
        number("ScaleY", m_geometry.localizerSpacing, 6);
        number("Angle", 30);
        number("Focus", m_focus, 2);
        text("Resolution", "HIGH_SPEED");
        number("AutoSensorGain", 1);
        number("SensorGain", 80);
        number("NumAve", 16);
        text("FixationTarget", m_options.pattern == Pattern::Circle ? "Nasal" : "Central");
        m_xml.writeEndElement();
        writeImageData(0);
        m_xml.writeEndElement();
    }

    void writeBScan(int image)
    {
        const ScanPath& path = m_geometry.paths[static_cast<std::size_t>(image) - 1];
        startImage(image);
        m_xml.writeStartElement("ImageType");
        text("Type", "OCT");
        m_xml.writeEndElement();
        m_xml.writeStartElement("OphthalmicAcquisitionContext");
        number("Width", m_options.aScans);
        number("Height", m_options.rows);
        number("ScaleX", m_geometry.aScanSpacing, 6);
        number("ScaleY", m_geometry.axialSpacing, 6);
        text("Resolution", "HIGH_SPEED");
        number("NumAve", 16);
        number("ImageQuality", m_quality);
        writeCoordinate("Start", path.start);
        if (m_options.pattern == Pattern::Circle) {
            writeCoordinate("Center", path.center);
            text("Direction", m_geometry.counterClockwise ? "CCW" : "CW");
        } else {
            writeCoordinate("End", path.end);
        }
        m_xml.writeEndElement();
        writeSegmentation(image - 1);
        writeImageData(image);
        m_xml.writeEndElement();
    }

    /// The device's own two surfaces.
    void writeSegmentation(int bScan)
    {
        m_xml.writeStartElement("Segmentation");
        for (const Surface& surface : m_surfaces) {
            if (surface.identifier != "ILM" && surface.identifier != "BM") {
                continue;
            }
            QByteArray values;
            for (const unsigned short row : surface.rows[static_cast<std::size_t>(bScan)]) {
                values += QByteArray::number(row);
                values += ' ';
            }
            values.chop(1);
            m_xml.writeStartElement("SegLine");
            text("Name", surface.identifier);
            text("Array", QString::fromLatin1(values));
            m_xml.writeEndElement();
        }
        m_xml.writeEndElement();
    }

    const Options& m_options;
    const ScanGeometry& m_geometry;
    const QStringList& m_imageFileNames;
    const QList<Surface>& m_surfaces;
    QByteArray m_content;
    QXmlStreamWriter m_xml;
    Date m_birthDate{};
    Date m_studyDate{};
    int m_hour = 0;
    int m_minute = 0;
    bool m_female = false;
    double m_focus = 0.0;
    int m_quality = 0;
};

} // namespace

QString seriesIdOf(const Options& options)
{
    return QString::number(options.seed % 100000 + 100000);
}

QByteArray exportXml(const Options& options, const ScanGeometry& geometry,
                     const QStringList& imageFileNames, const QList<Surface>& surfaces)
{
    return ExportXmlWriter(options, geometry, imageFileNames, surfaces).write();
}

} // namespace kelp::phantom
