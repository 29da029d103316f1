#include "ScanSettings.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace kelp::command {

namespace {

std::optional<QList<QPolygonF>> readPolygons(const QJsonValue& value)
{
    if (!value.isArray()) {
        return std::nullopt;
    }
    QList<QPolygonF> polygons;
    for (const QJsonValue item : value.toArray()) {
        const QJsonArray numbers = item.toArray();
        QPolygonF polygon;
        for (int i = 0; i + 1 < numbers.size(); i += 2) {
            polygon.append({numbers[i].toDouble(), numbers[i + 1].toDouble()});
        }
        polygons.append(polygon);
    }
    return polygons;
}

QString maskWords(const ScanSettings& settings)
{
    QStringList words;
    if (settings.etdrsMask) {
        words.append("--etdrs-mask");
    }
    if (settings.centerMask) {
        words.append("--center-mask");
    }
    if (!settings.maskPolygons.isEmpty()) {
        words.append(QString("%1 mask polygons").arg(settings.maskPolygons.size()));
    }
    return words.isEmpty() ? "no mask" : words.join(" and ");
}

} // namespace

void writeSettings(JsonWriter& json, const ScanSettings& settings)
{
    json.value("chain", kelp::oct::chainName(settings.chain));
    json.beginObject("masks");
    json.value("etdrs", settings.etdrsMask);
    json.value("center", settings.centerMask);
    json.beginArray("polygons");
    for (const QPolygonF& polygon : settings.maskPolygons) {
        json.beginArray();
        for (const QPointF& corner : polygon) {
            json.value(QString(), corner.x());
            json.value(QString(), corner.y());
        }
        json.endArray();
    }
    json.endArray();
    json.endObject();
    json.beginArray("formats");
    for (const QString& name : settings.formats.names()) {
        json.value(QString(), name);
    }
    json.endArray();
}

QJsonObject settingsToJson(const ScanSettings& settings)
{
    JsonWriter json;
    json.beginObject();
    writeSettings(json, settings);
    json.endObject();
    return QJsonDocument::fromJson(json.text()).object();
}

std::optional<ScanSettings> settingsFromJson(const QJsonObject& object)
{
    const auto chain = kelp::oct::chainFromName(object.value("chain").toString());
    const QJsonObject masks = object.value("masks").toObject();
    const auto polygons = readPolygons(masks.value("polygons"));
    if (!chain || !masks.value("etdrs").isBool() || !masks.value("center").isBool() || !polygons ||
        !object.value("formats").isArray()) {
        return std::nullopt;
    }
    QStringList formats;
    for (const QJsonValue name : object.value("formats").toArray()) {
        formats.append(name.toString());
    }
    ScanSettings settings;
    settings.chain = *chain;
    settings.etdrsMask = masks.value("etdrs").toBool();
    settings.centerMask = masks.value("center").toBool();
    settings.maskPolygons = *polygons;
    try {
        settings.formats = Formats::fromNames(formats.join(','));
    } catch (const UsageError&) {
        return std::nullopt;
    }
    return settings;
}

QString describeDifference(const ScanSettings& recorded, const ScanSettings& wanted)
{
    QStringList differences;
    if (recorded.chain != wanted.chain) {
        differences.append("chain " + kelp::oct::chainName(recorded.chain));
    }
    if (recorded.etdrsMask != wanted.etdrsMask || recorded.centerMask != wanted.centerMask ||
        recorded.maskPolygons != wanted.maskPolygons) {
        differences.append(maskWords(recorded));
    }
    if (recorded.formats != wanted.formats) {
        differences.append("formats " + recorded.formats.names().join(','));
    }
    return differences.join(", ");
}

} // namespace kelp::command
