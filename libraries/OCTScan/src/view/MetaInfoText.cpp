#include "MetaInfoText.h"

#include <QDate>
#include <QTime>

#include <array>
#include <utility>

namespace kelp::oct {

namespace {

enum class Kind
{
    Text,
    Number,
    Millimetres,
    Pixels,
    Degrees,
    Diopters,
    Frames,
    Sex,
    Eye,
    Pattern,
    Modality,
    Procedure,
    Resolution,
    LightSource,
    Direction,
    YesNo
};

struct Entry
{
    const char* key;
    const char* caption;
    Kind kind;
};

constexpr std::array entries{
    Entry{metaKey::scanPattern, "Scan pattern", Kind::Pattern},
    Entry{metaKey::scanId, "Scan id", Kind::Text},
    Entry{metaKey::id, "Id", Kind::Text},
    Entry{metaKey::laterality, "Eye", Kind::Eye},
    Entry{metaKey::patientLastName, "Patient last name", Kind::Text},
    Entry{metaKey::patientFirstName, "Patient first name", Kind::Text},
    Entry{metaKey::patientId, "Patient id", Kind::Text},
    Entry{metaKey::patientSex, "Patient sex", Kind::Sex},
    Entry{metaKey::patientBirthDate, "Patient birth date", Kind::Text},
    Entry{metaKey::studyDate, "Study date", Kind::Text},
    Entry{metaKey::studyId, "Study id", Kind::Text},
    Entry{metaKey::studyOperator, "Study operator", Kind::Text},
    Entry{metaKey::acquisitionTime, "Acquisition time", Kind::Text},
    Entry{metaKey::modality, "Modality", Kind::Modality},
    Entry{metaKey::modalityProcedure, "Modality procedure", Kind::Procedure},
    Entry{metaKey::manufacturer, "Manufacturer", Kind::Text},
    Entry{metaKey::manufacturerModel, "Manufacturer model", Kind::Text},
    Entry{metaKey::width, "Width", Kind::Pixels},
    Entry{metaKey::height, "Height", Kind::Pixels},
    Entry{metaKey::bScanSpacingX, "Spacing x", Kind::Millimetres},
    Entry{metaKey::bScanSpacingY, "Spacing y", Kind::Millimetres},
    Entry{metaKey::localizerSpacingX, "Spacing x", Kind::Millimetres},
    Entry{metaKey::localizerSpacingY, "Spacing y", Kind::Millimetres},
    Entry{metaKey::resolutionType, "Resolution type", Kind::Resolution},
    Entry{metaKey::numberAveraged, "Number averaged", Kind::Frames},
    Entry{metaKey::quality, "Quality", Kind::Number},
    Entry{metaKey::direction, "Direction", Kind::Direction},
    Entry{metaKey::startX, "Start x", Kind::Millimetres},
    Entry{metaKey::startY, "Start y", Kind::Millimetres},
    Entry{metaKey::endX, "End x", Kind::Millimetres},
    Entry{metaKey::endY, "End y", Kind::Millimetres},
    Entry{metaKey::centerX, "Center x", Kind::Millimetres},
    Entry{metaKey::centerY, "Center y", Kind::Millimetres},
    Entry{metaKey::lightSource, "Light source", Kind::LightSource},
    Entry{metaKey::angle, "Angle", Kind::Degrees},
    Entry{metaKey::focus, "Focus", Kind::Diopters},
    Entry{metaKey::autoSensorGain, "Auto sensor gain", Kind::YesNo},
    Entry{metaKey::sensorGain, "Sensor gain", Kind::Number},
    Entry{metaKey::fixationTarget, "Fixation target", Kind::Text},
    Entry{metaKey::imageFileExtension, "Image file extension", Kind::Text},
};

struct Word
{
    Kind kind;
    const char* abbreviation;
    const char* words;
};

constexpr std::array words{
    Word{Kind::Sex, "M", "Male"},
    Word{Kind::Sex, "F", "Female"},
    Word{Kind::Sex, "O", "Other"},
    Word{Kind::Sex, "U", "Unknown"},
    Word{Kind::Eye, "R", "Right (OD)"},
    Word{Kind::Eye, "L", "Left (OS)"},
    Word{Kind::Eye, "B", "Both (OU)"},
    Word{Kind::Pattern, "Volume", "Volume"},
    Word{Kind::Pattern, "Fast Volume", "Fast volume"},
    Word{Kind::Pattern, "Section", "Single B-scan"},
    Word{Kind::Pattern, "Circle", "Circular B-scan"},
    Word{Kind::Pattern, "Star", "Star"},
    Word{Kind::Modality, "OCT", "Optical coherence tomography (OCT)"},
    Word{Kind::Procedure, "IR_OCT", "Infrared image with OCT"},
    Word{Kind::Procedure, "IROCT", "Infrared image with OCT"},
    Word{Kind::Resolution, "HS", "High speed"},
    Word{Kind::Resolution, "HR", "High resolution"},
    Word{Kind::Resolution, "HIGH_SPEED", "High speed"},
    Word{Kind::Resolution, "HIGH_RESOLUTION", "High resolution"},
    Word{Kind::LightSource, "IR", "Infrared"},
    Word{Kind::Direction, "CW", "Clockwise"},
    Word{Kind::Direction, "CCW", "Counter-clockwise"},
    Word{Kind::YesNo, "1", "Yes"},
    Word{Kind::YesNo, "0", "No"},
    Word{Kind::YesNo, "true", "Yes"},
    Word{Kind::YesNo, "false", "No"},
};

QString notGiven()
{
    return QStringLiteral("Not given");
}

/// In words; the text itself if it is none of the abbreviations.
QString inWords(Kind kind, const QString& text)
{
    for (const Word& word : words) {
        if (word.kind == kind &&
            text.compare(QLatin1String(word.abbreviation), Qt::CaseInsensitive) == 0) {
            return QString::fromLatin1(word.words);
        }
    }
    return text;
}

QString unitOf(Kind kind)
{
    switch (kind) {
    case Kind::Millimetres:
        return QStringLiteral(" mm");
    case Kind::Pixels:
        return QStringLiteral(" pixels");
    case Kind::Degrees:
        return QString(QChar(0x00b0));
    case Kind::Diopters:
        return QStringLiteral(" D");
    case Kind::Frames:
        return QStringLiteral(" frames");
    default:
        return {};
    }
}

bool isNumber(Kind kind)
{
    return kind == Kind::Number || !unitOf(kind).isEmpty();
}

QString numberText(double number, const QLocale& locale)
{
    constexpr int significantDigits = 6;
    return locale.toString(number, 'g', significantDigits);
}

/// The locale's short form, but with the year's century, without which a birth date is ambiguous.
QString dateText(const QDate& date, const QLocale& locale)
{
    QString format = locale.dateFormat(QLocale::ShortFormat);
    if (!format.contains(QLatin1String("yyyy"))) {
        format.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    }
    return date.isValid() ? locale.toString(date, format) : notGiven();
}

/// With seconds; the time zone that the long form names is not known.
QString timeText(const QTime& time, const QLocale& locale)
{
    QString format = locale.timeFormat(QLocale::LongFormat);
    format.remove(QLatin1Char('t'));
    return time.isValid() ? locale.toString(time, format.trimmed()) : notGiven();
}

QString textOf(const QString& text, Kind kind, const QLocale& locale)
{
    if (text.trimmed().isEmpty()) {
        return notGiven();
    }
    if (!isNumber(kind)) {
        return inWords(kind, text);
    }
    bool isANumber = false;
    const double number = text.toDouble(&isANumber);
    return isANumber ? numberText(number, locale) + unitOf(kind) : text;
}

QString valueText(const QVariant& value, Kind kind, const QLocale& locale)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::QDate:
        return dateText(value.toDate(), locale);
    case QMetaType::QTime:
        return timeText(value.toTime(), locale);
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("Yes") : QStringLiteral("No");
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        return numberText(value.toDouble(), locale) + unitOf(kind);
    default:
        return textOf(value.toString(), kind, locale);
    }
}

} // namespace

QList<MetaInfoLine> metaInfoLines(const MetaInfo& metaInfo, const QLocale& locale)
{
    QList<MetaInfoLine> lines;
    MetaInfo rest = metaInfo;
    for (const Entry& entry : entries) {
        const auto value = rest.constFind(QString::fromLatin1(entry.key));
        if (value != rest.constEnd()) {
            lines.append(
                {QString::fromLatin1(entry.caption), valueText(value.value(), entry.kind, locale)});
            rest.remove(QString::fromLatin1(entry.key));
        }
    }
    for (auto value = rest.constBegin(); value != rest.constEnd(); ++value) {
        lines.append({value.key(), valueText(value.value(), Kind::Text, locale)});
    }
    return lines;
}

} // namespace kelp::oct
