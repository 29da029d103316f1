#include "AScanPlaces.h"

#include "JsonPoint.h"
#include "JsonWriter.h"
#include "kelpException.h"

#include <QJsonArray>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelp::command {

namespace {

const QString keyOfEnds = "bScanEnds";
const QString keyOfFirst = "first";
const QString keyOfLast = "last";
const QString keyOfCircle = "circle";
const QString keyOfStep = "radiansPerAScan";

std::optional<AScanPlaces::Circle> circleOf(const OCTScan& scan)
{
    if (*scan.getScanPattern() != kelp::oct::OCTScanPatternCircularBScan()) {
        return std::nullopt;
    }
    const auto bScan = scan.getBScan(0);
    const Vector2d center = bScan->getCenter();
    const double step = 2.0 * std::numbers::pi / bScan->getNrAScans();
    if (bScan->getNrAScans() < 2) {
        return AScanPlaces::Circle{CoordOnLocalizer(center), step};
    }
    const Vector2d first = bScan->getAScanPosition(0) - center;
    const Vector2d second = bScan->getAScanPosition(1) - center;
    const bool isTurningToY = first.x * second.y - first.y * second.x > 0.0;
    return AScanPlaces::Circle{CoordOnLocalizer(center), isTurningToY ? step : -step};
}

void writePoint(JsonWriter& json, const QString& key, const CoordOnLocalizer& point)
{
    json.beginObject(key);
    writePoint(json, point);
    json.endObject();
}

QList<AScanPlaces::Ends> readEnds(const QJsonArray& array)
{
    QList<AScanPlaces::Ends> ends;
    for (const QJsonValue item : array) {
        const auto first = readPoint(item.toObject().value(keyOfFirst).toObject());
        const auto last = readPoint(item.toObject().value(keyOfLast).toObject());
        if (!first || !last) {
            throw ParsingError("An end of a B-scan is no point.");
        }
        ends.append({*first, *last});
    }
    return ends;
}

AScanPlaces::Circle readCircle(const QJsonObject& object)
{
    const auto center = readPoint(object);
    if (!center || !object.value(keyOfStep).isDouble()) {
        throw ParsingError("Its circle has no center or no step.");
    }
    return {*center, object.value(keyOfStep).toDouble()};
}

} // namespace

AScanPlaces::AScanPlaces(const QList<Ends>& ends, int nrAScans, const std::optional<Circle>& circle)
    : m_ends(ends), m_nrAScans(nrAScans), m_circle(circle)
{
}

AScanPlaces AScanPlaces::of(const OCTScan& scan)
{
    const int nrAScans = scan.getBScan(0)->getNrAScans();
    QList<Ends> ends;
    for (int i = 0; i < scan.getBScanCount(); ++i) {
        ends.append({CoordOnLocalizer(scan.volumeIndexToLocalizerCoords(i, 0)),
                     CoordOnLocalizer(scan.volumeIndexToLocalizerCoords(i, nrAScans - 1))});
    }
    return {ends, nrAScans, circleOf(scan)};
}

CoordOnLocalizer AScanPlaces::at(int bScan, int aScan) const
{
    const Vector2d first = m_ends[bScan].first.toVector();
    if (m_circle) {
        const Vector2d center = m_circle->center.toVector();
        const double angle = m_circle->radiansPerAScan * aScan;
        const Vector2d arm = first - center;
        return CoordOnLocalizer(center +
                                Vector2d{arm.x * std::cos(angle) - arm.y * std::sin(angle),
                                         arm.x * std::sin(angle) + arm.y * std::cos(angle)});
    }
    const double part = m_nrAScans > 1 ? static_cast<double>(aScan) / (m_nrAScans - 1) : 0.0;
    return CoordOnLocalizer(first + part * (m_ends[bScan].second.toVector() - first));
}

double AScanPlaces::largestDistanceTo(const AScanPlaces& other) const
{
    double largest = 0.0;
    for (int bScan = 0; bScan < m_ends.size(); ++bScan) {
        for (int aScan = 0; aScan < m_nrAScans; ++aScan) {
            const CoordOnLocalizer here = at(bScan, aScan);
            const CoordOnLocalizer there = other.at(bScan, aScan);
            largest = std::max(largest, std::hypot(here.x - there.x, here.y - there.y));
        }
    }
    return largest;
}

void AScanPlaces::write(JsonWriter& json) const
{
    json.beginArray(keyOfEnds);
    for (const auto& [first, last] : m_ends) {
        json.beginObject();
        writePoint(json, keyOfFirst, first);
        writePoint(json, keyOfLast, last);
        json.endObject();
    }
    json.endArray();
    if (m_circle) {
        json.beginObject(keyOfCircle);
        writePoint(json, m_circle->center);
        json.value(keyOfStep, m_circle->radiansPerAScan);
        json.endObject();
    }
}

std::optional<AScanPlaces> AScanPlaces::read(const QJsonObject& record, int nrBScans, int nrAScans)
{
    if (!record.contains(keyOfEnds)) {
        return std::nullopt;
    }
    const QList<Ends> ends = readEnds(record.value(keyOfEnds).toArray());
    if (ends.size() != nrBScans) {
        throw ParsingError(
            QString("It has %1 B-scans and the ends of %2.").arg(nrBScans).arg(ends.size()));
    }
    if (!record.contains(keyOfCircle)) {
        return AScanPlaces(ends, nrAScans);
    }
    return AScanPlaces(ends, nrAScans, readCircle(record.value(keyOfCircle).toObject()));
}

} // namespace kelp::command
