#include "QualityJson.h"

#include <cmath>
#include <limits>

namespace kelp::command {

namespace {

using kelp::oct::QualityCounts;
using kelp::oct::StepStatistics;
using kelp::oct::SurfaceQuality;

/// One of the counts of QualityCounts and its name in the record.
struct Share
{
    const char* name;
    int QualityCounts::*count;
};

constexpr Share shares[] = {{"atTop", &QualityCounts::atTop},
                            {"atBottom", &QualityCounts::atBottom},
                            {"withoutRoom", &QualityCounts::withoutRoom},
                            {"withoutRow", &QualityCounts::withoutRow}};

/// With 4 decimals; no number where all is masked.
double shareOf(const QualityCounts& counts, const Share& share)
{
    if (counts.aScans == 0) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    return std::round(1e4 * (counts.*share.count) / counts.aScans) / 1e4;
}

void writeSurface(JsonWriter& json, const StepStatistics& step, const SurfaceQuality& surface)
{
    const QualityCounts all = surface.all();
    json.beginObject();
    json.value("step", step.name);
    json.value("surface", surface.surface);
    json.value("aScans", all.aScans);
    for (const Share& share : shares) {
        json.value(share.name, shareOf(all, share));
    }
    json.beginObject("byBScan");
    for (const Share& share : shares) {
        QList<double> numbers;
        for (const QualityCounts& counts : surface.bScans) {
            numbers.append(shareOf(counts, share));
        }
        json.numbers(share.name, numbers);
    }
    json.endObject();
    json.endObject();
}

} // namespace

void writeQuality(JsonWriter& json, const std::vector<StepStatistics>& steps)
{
    json.beginArray("quality");
    for (const StepStatistics& step : steps) {
        for (const SurfaceQuality& surface : step.surfaces) {
            writeSurface(json, step, surface);
        }
    }
    json.endArray();
}

} // namespace kelp::command
