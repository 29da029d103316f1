#include "RunRecord.h"

#include "JsonWriter.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

namespace kelp::command {

namespace {

using kelp::oct::CutStatistics;
using kelp::oct::EtdrsTable;
using kelp::oct::StepStatistics;

/// Milliseconds are as exact as a clock reading is worth.
double roundedSeconds(double seconds)
{
    return std::round(seconds * 1000.0) / 1000.0;
}

std::int64_t asInteger(std::size_t value)
{
    return static_cast<std::int64_t>(value);
}

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

void writeGeometry(JsonWriter& json, const RunRecord& record)
{
    json.value("pattern", record.pattern);
    json.value("eye", record.eye);
    json.beginObject("size");
    json.value("aScans", record.size.x);
    json.value("rows", record.size.y);
    json.value("bScans", record.size.z);
    json.endObject();
    json.beginObject("spacingMillimetres");
    json.value("aScans", record.spacing.x);
    json.value("rows", record.spacing.y);
    json.value("bScans", record.spacing.z);
    json.endObject();
}

void writeFovea(JsonWriter& json, const kelp::oct::FoveaPosition& fovea)
{
    json.beginObject("fovea");
    json.value("found", fovea.isSet);
    if (fovea.isSet) {
        json.value("xMillimetres", fovea.position.x);
        json.value("yMillimetres", fovea.position.y);
    }
    json.endObject();
}

void writeStep(JsonWriter& json, const StepStatistics& step)
{
    CutStatistics sum;
    for (const CutStatistics& cut : step.cuts) {
        sum.columns += cut.columns;
        sum.nodes += cut.nodes;
        sum.edges += cut.edges;
        sum.buildSeconds += cut.buildSeconds;
        sum.solveSeconds += cut.solveSeconds;
    }
    json.beginObject();
    json.value("name", step.name);
    json.value("seconds", roundedSeconds(step.seconds));
    json.value("columns", asInteger(sum.columns));
    json.value("nodes", asInteger(sum.nodes));
    json.value("edges", asInteger(sum.edges));
    json.value("buildSeconds", roundedSeconds(sum.buildSeconds));
    json.value("solverSeconds", roundedSeconds(sum.solveSeconds));
    json.value("peakMemoryBytes", asInteger(step.peakMemoryBytes));
    json.endObject();
}

void writeEtdrs(JsonWriter& json, const EtdrsTable& table)
{
    json.beginObject("etdrsMicrometres");
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            const auto& mean = table.means[row][column];
            if (mean) {
                json.value(etdrsCellName(row, column), *mean);
            } else {
                json.null(etdrsCellName(row, column));
            }
        }
    }
    json.endObject();
}

std::optional<EtdrsTable> readEtdrs(const QJsonValue& value)
{
    if (!value.isObject()) {
        return std::nullopt;
    }
    const QJsonObject object = value.toObject();
    EtdrsTable table;
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
            const QJsonValue mean = object.value(etdrsCellName(row, column));
            if (mean.isDouble()) {
                table.means[row][column] = mean.toDouble();
            } else if (!mean.isNull()) {
                return std::nullopt;
            }
        }
    }
    return table;
}

std::optional<QList<QPolygonF>> readPolygons(const QJsonValue& value)
{
    if (!value.isArray()) {
        return std::nullopt;
    }
    QList<QPolygonF> polygons;
    for (const QJsonValue& item : value.toArray()) {
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

QString etdrsCellName(int row, int column)
{
    return EtdrsTable::rowLabel(row) + " " + EtdrsTable::columnLabel(column);
}

QByteArray RunRecord::toJson() const
{
    JsonWriter json;
    json.beginObject();
    json.value("program", "tessera-segment");
    json.value("version", TESSERA_VERSION);
    json.value("outcome", "segmented");
    json.value("input", input);
    json.value("series", series);
    writeGeometry(json, *this);
    writeSettings(json, settings);
    json.beginArray("layers");
    for (const QString& layer : layers) {
        json.value(QString(), layer);
    }
    json.endArray();
    writeFovea(json, fovea);
    writeEtdrs(json, etdrs);
    json.beginArray("steps");
    for (const StepStatistics& step : steps) {
        writeStep(json, step);
    }
    json.endArray();
    json.value("seconds", roundedSeconds(seconds));
    json.value("peakMemoryBytes", asInteger(peakMemoryBytes));
    json.endObject();
    return json.text();
}

std::optional<StoredRecord> StoredRecord::read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    const auto settings = settingsFromJson(object);
    const auto etdrs = readEtdrs(object.value("etdrsMicrometres"));
    if (object.value("outcome").toString() != "segmented" || !object.value("input").isString() ||
        !object.value("series").isString() || !settings || !etdrs) {
        return std::nullopt;
    }
    return StoredRecord{object.value("input").toString(), object.value("series").toString(),
                        *settings, *etdrs};
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
    for (const QJsonValue& name : object.value("formats").toArray()) {
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
