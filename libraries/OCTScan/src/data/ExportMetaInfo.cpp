#include "ExportMetaInfo.h"

#include "ExportDocument.h"

#include <QDate>
#include <QTime>

#include <cmath>
#include <initializer_list>

namespace kelp::oct {

using namespace exportDocument;

namespace {

const QString context = QStringLiteral("OphthalmicAcquisitionContext");

struct TextEntry
{
    QStringList path;
    const char* key;
};

void addTexts(const QDomElement& element, std::initializer_list<TextEntry> entries,
              MetaInfo& metaInfo)
{
    for (const TextEntry& entry : entries) {
        if (const auto text = descendantText(element, entry.path)) {
            metaInfo.insert(entry.key, *text);
        }
    }
}

QTime parseTime(const QDomElement& time)
{
    const auto hour = descendantText(time, {"Hour"});
    const auto minute = descendantText(time, {"Minute"});
    const auto second = descendantText(time, {"Second"});
    if (!hour || !minute || !second) {
        return QTime();
    }
    const double seconds = second->toDouble();
    if (!(seconds >= 0.0 && seconds < 60.0)) {
        return QTime();
    }
    const double whole = std::floor(seconds);
    return QTime(hour->toInt(), minute->toInt(), static_cast<int>(whole),
                 static_cast<int>(std::round((seconds - whole) * 1000)));
}

void addTime(const QDomElement& image, MetaInfo& metaInfo)
{
    const QDomElement time = firstDescendant(image, QStringList{"AcquisitionTime", "Time"});
    if (!time.isNull()) {
        metaInfo.insert(metaKey::acquisitionTime, parseTime(time));
    }
}

/// Both coordinates or none.
void addCoord(const QDomElement& image, const QString& name, const char* keyX, const char* keyY,
              MetaInfo& metaInfo)
{
    const auto x = descendantText(image, {name, "Coord", "X"});
    const auto y = descendantText(image, {name, "Coord", "Y"});
    if (x && y) {
        metaInfo.insert(keyX, x->toDouble());
        metaInfo.insert(keyY, y->toDouble());
    }
}

} // namespace

void addPatientMetaInfo(const QDomElement& patient, MetaInfo& metaInfo)
{
    addTexts(patient,
             {{{"LastName"}, metaKey::patientLastName},
              {{"FirstNames"}, metaKey::patientFirstName},
              {{"ID"}, metaKey::patientId},
              {{"Sex"}, metaKey::patientSex}},
             metaInfo);
    const QDomElement date = firstDescendant(patient, QStringList{"Birthdate", "Date"});
    const QDate birthDate(descendantText(date, {"Year"}).value_or(QString()).toInt(),
                          descendantText(date, {"Month"}).value_or(QString()).toInt(),
                          descendantText(date, {"Day"}).value_or(QString()).toInt());
    if (birthDate.isValid()) {
        metaInfo.insert(metaKey::patientBirthDate, birthDate);
    }
}

void addSeriesMetaInfo(const QDomElement& series, MetaInfo& metaInfo)
{
    addTexts(series,
             {{{"ID"}, metaKey::scanId},
              {{"Modality"}, metaKey::modality},
              {{"ModalityProcedure"}, metaKey::modalityProcedure},
              {{"GeneralEquipment", "Manufacturer"}, metaKey::manufacturer},
              {{"GeneralEquipment", "ManufacturerModelName"}, metaKey::manufacturerModel},
              {{"Type"}, metaKey::scanPattern}},
             metaInfo);
}

MetaInfo bScanMetaInfo(const QDomElement& image)
{
    MetaInfo metaInfo;
    addTexts(image,
             {{{"ID"}, metaKey::id},
              {{"Laterality"}, metaKey::laterality},
              {{context, "Width"}, metaKey::width},
              {{context, "Height"}, metaKey::height},
              {{context, "ScaleX"}, metaKey::bScanSpacingX},
              {{context, "ScaleY"}, metaKey::bScanSpacingY},
              {{context, "Resolution"}, metaKey::resolutionType},
              {{context, "NumAve"}, metaKey::numberAveraged},
              {{context, "ImageQuality"}, metaKey::quality},
              {{context, "Direction"}, metaKey::direction}},
             metaInfo);
    addTime(image, metaInfo);
    addCoord(image, "Start", metaKey::startX, metaKey::startY, metaInfo);
    addCoord(image, "End", metaKey::endX, metaKey::endY, metaInfo);
    addCoord(image, "Center", metaKey::centerX, metaKey::centerY, metaInfo);
    return metaInfo;
}

MetaInfo localizerMetaInfo(const QDomElement& image)
{
    MetaInfo metaInfo;
    // The light source is looked for below the first Type, which in most exports is that of the
    // image type and has none below it; the key then stays out.
    addTexts(image,
             {{{"ID"}, metaKey::id},
              {{"Laterality"}, metaKey::laterality},
              {{"Type", "LightSource"}, metaKey::lightSource},
              {{context, "Width"}, metaKey::width},
              {{context, "Height"}, metaKey::height},
              {{context, "ScaleX"}, metaKey::localizerSpacingX},
              {{context, "ScaleY"}, metaKey::localizerSpacingY},
              {{context, "Angle"}, metaKey::angle},
              {{context, "Focus"}, metaKey::focus},
              {{context, "Resolution"}, metaKey::resolutionType},
              {{context, "AutoSensorGain"}, metaKey::autoSensorGain},
              {{context, "SensorGain"}, metaKey::sensorGain},
              {{context, "NumAve"}, metaKey::numberAveraged},
              {{context, "FixationTarget"}, metaKey::fixationTarget},
              {{"ImageData", "Extension"}, metaKey::imageFileExtension}},
             metaInfo);
    addTime(image, metaInfo);
    return metaInfo;
}

} // namespace kelp::oct
