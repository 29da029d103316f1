#include "StoredRecord.h"

#include "RunRecord.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace kelp::command {

namespace {

using kelp::oct::EtdrsTable;
using kelp::oct::FillCount;

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

void readCoverage(EtdrsTable& table, const QJsonObject& object)
{
    for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
        const QJsonObject sector = object.value(EtdrsTable::columnLabel(column)).toObject();
        table.coverage[static_cast<std::size_t>(column)] = {sector.value("counted").toInt(),
                                                            sector.value("inside").toInt(),
                                                            sector.value("expected").toInt()};
    }
}

/// Nothing where there is none, as in the results of former versions.
std::optional<QStringList> readTexts(const QJsonValue& value)
{
    if (!value.isArray()) {
        return std::nullopt;
    }
    QStringList texts;
    for (const QJsonValue text : value.toArray()) {
        texts.append(text.toString());
    }
    return texts;
}

FillCount readFill(const QJsonObject& object)
{
    return {static_cast<std::int64_t>(object.value("pixels").toDouble()),
            object.value("bScans").toInt()};
}

} // namespace

std::optional<StoredRecord> StoredRecord::read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    const auto settings = settingsFromJson(object);
    auto etdrs = readEtdrs(object.value("etdrsMicrometres"));
    if (object.value("outcome").toString() != "segmented" || !object.value("input").isString() ||
        !object.value("series").isString() || !settings || !etdrs) {
        return std::nullopt;
    }
    readCoverage(*etdrs, object.value("etdrsCoverage").toObject());
    return StoredRecord{object.value("input").toString(),
                        object.value("series").toString(),
                        *settings,
                        *etdrs,
                        readFill(object.value("fill").toObject()),
                        readTexts(object.value("warnings")),
                        readTexts(object.value("notFound")).value_or(QStringList())};
}

} // namespace kelp::command
