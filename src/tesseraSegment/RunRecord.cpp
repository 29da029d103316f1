#include "RunRecord.h"

#include "JsonWriter.h"
#include "QualityJson.h"

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

void writeCoverage(JsonWriter& json, const EtdrsTable& table)
{
    json.beginObject("etdrsCoverage");
    for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
        const kelp::oct::SectorCoverage& sector = table.coverage[column];
        json.beginObject(EtdrsTable::columnLabel(column));
        json.value("counted", sector.counted);
        json.value("inside", sector.inside);
        json.value("expected", sector.expected);
        json.value("cut", sector.isCut());
        json.endObject();
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

void writeFill(JsonWriter& json, const kelp::oct::FillCount& fill)
{
    json.beginObject("fill");
    json.value("pixels", fill.pixels);
    json.value("bScans", fill.bScans);
    json.endObject();
}

void writeScan(JsonWriter& json, const RunRecord& record)
{
    json.value("input", record.input);
    json.value("series", record.series);
    writeGeometry(json, record);
    json.value("pixelDigest", record.pixelDigest);
    writeFill(json, record.fill);
}

void writeResult(JsonWriter& json, const RunRecord& record)
{
    json.texts("layers", record.layers);
    json.texts("notFound", record.notFound);
    writeFovea(json, record.fovea);
    record.places.write(json);
    record.grid.write(json);
    writeEtdrs(json, record.etdrs);
    writeCoverage(json, record.etdrs);
}

void writeCost(JsonWriter& json, const RunRecord& record)
{
    json.beginArray("steps");
    for (const StepStatistics& step : record.steps) {
        writeStep(json, step);
    }
    json.endArray();
    json.value("seconds", roundedSeconds(record.seconds));
    json.value("peakMemoryBytes", asInteger(record.peakMemoryBytes));
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
    writeScan(json, *this);
    writeSettings(json, settings);
    writeResult(json, *this);
    json.texts("warnings", warnings);
    writeQuality(json, steps);
    writeCost(json, *this);
    json.endObject();
    return json.text();
}

} // namespace kelp::command
