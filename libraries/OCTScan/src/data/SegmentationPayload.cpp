#include "SegmentationPayload.h"

#include "kelpException.h"

#include <QDataStream>
#include <QIODevice>

#include <algorithm>

namespace kelp::oct {

namespace {

// More than any device or hand has ever made. Bytes that end before a count is filled may hold a
// count up to here, and the rest reads as zeros; only one list of a payload can be filled so.
constexpr qint64 mostBScans = 1 << 16;
constexpr qint64 mostPositions = 1 << 16;
constexpr qint64 mostPolygons = 1 << 16;
constexpr qint64 mostPoints = 1 << 16;

void write(QDataStream& stream, const BScanSegmentationLayer& layer)
{
    const LayerNamePtr name = layer.getLayerName();
    stream << (name ? name->getIdentifier() : QString());
    const BScanSegmentationLayer::LayerData& positions = layer.layerData();
    stream << static_cast<qint32>(positions.size());
    for (std::size_t k = 0; k < positions.size(); ++k) {
        stream << static_cast<qint16>(positions[k]);
    }
}

void write(QDataStream& stream, const QPolygonF& polygon)
{
    stream << static_cast<qint32>(polygon.size());
    for (const QPointF& point : polygon) {
        stream << static_cast<double>(point.x()) << static_cast<double>(point.y());
    }
}

/// A stream that gives zeros past its end, as QDataStream does, and refuses absurd counts.
class Reader
{
public:
    explicit Reader(const QByteArray& bytes) : m_stream(bytes) {}

    bool atEnd() const { return m_stream.atEnd(); }

    template <typename T>
    T value()
    {
        T result{};
        m_stream >> result;
        return result;
    }

    /// 0 for a negative count.
    qint32 count() { return std::max(0, value<qint32>()); }

    /// A count that memory is asked for. bytesEach: the least that an element takes.
    qint32 allocatedCount(qint64 most, qint64 bytesEach, const char* what)
    {
        const qint32 number = count();
        const qint64 remaining = m_stream.device()->bytesAvailable();
        if (number > std::max(most, remaining / bytesEach)) {
            throw ParsingError(
                QString("The stored segmentation is damaged: it announces %1 %2, but only %3 "
                        "bytes follow.")
                    .arg(number)
                    .arg(what)
                    .arg(remaining));
        }
        return number;
    }

    void skip(qint64 nrBytes)
    {
        while (nrBytes > 0 && !atEnd()) {
            const int piece = static_cast<int>(std::min<qint64>(nrBytes, 1 << 30));
            m_stream.skipRawData(piece);
            nrBytes -= piece;
        }
    }

private:
    QDataStream m_stream;
};

void readLayer(Reader& reader, BScanSegmentation& bScan)
{
    constexpr qint64 bytesPerPosition = 2;
    const LayerNamePtr name = LayerName::fromIdentifier(reader.value<QString>());
    if (*name == LayerNameInvalid()) {
        // Costs no more than its own data, so that what a later version adds can be passed over.
        reader.skip(reader.count() * bytesPerPosition);
        return;
    }
    const qint32 size = reader.allocatedCount(mostPositions, bytesPerPosition, "positions");
    BScanSegmentationLayer::LayerData positions(static_cast<std::size_t>(size));
    for (std::size_t k = 0; k < positions.size(); ++k) {
        positions[k] = static_cast<unsigned short>(reader.value<qint16>());
    }
    bScan.addLayer(QSharedPointer<BScanSegmentationLayer>::create(positions, name));
}

BScanSegmentationPtr readBScan(Reader& reader)
{
    auto bScan = BScanSegmentationPtr::create();
    // Past the end there are only layers without a name, which are dropped.
    for (qint32 remaining = reader.count(); remaining > 0 && !reader.atEnd(); --remaining) {
        readLayer(reader, *bScan);
    }
    return bScan;
}

QPolygonF readPolygon(Reader& reader)
{
    constexpr qint64 bytesPerPoint = 16;
    const qint32 size = reader.allocatedCount(mostPoints, bytesPerPoint, "polygon points");
    QPolygonF polygon;
    polygon.reserve(size);
    for (qint32 k = 0; k < size; ++k) {
        const double x = reader.value<double>();
        const double y = reader.value<double>();
        polygon.append(QPointF(x, y));
    }
    return polygon;
}

} // namespace

QByteArray SegmentationPayload::toBytes() const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << static_cast<qint32>(bScans.size());
    for (const BScanSegmentationPtr& bScan : bScans) {
        const QList<BScanSegmentationLayerPtr> layers =
            bScan ? bScan->getAllLayers() : QList<BScanSegmentationLayerPtr>();
        stream << static_cast<qint32>(layers.size());
        for (const BScanSegmentationLayerPtr& layer : layers) {
            write(stream, *layer);
        }
    }
    stream << static_cast<qint32>(polygons.size());
    for (const QPolygonF& polygon : polygons) {
        write(stream, polygon);
    }
    if (fovea) {
        stream << fovea->x << fovea->y;
    }
    return bytes;
}

SegmentationPayload SegmentationPayload::fromBytes(const QByteArray& bytes)
{
    constexpr qint64 bytesPerCount = 4;
    Reader reader(bytes);
    SegmentationPayload payload;
    const qint32 nrBScans = reader.allocatedCount(mostBScans, bytesPerCount, "B-scans");
    payload.bScans.reserve(nrBScans);
    for (qint32 i = 0; i < nrBScans; ++i) {
        payload.bScans.append(readBScan(reader));
    }
    const qint32 nrPolygons = reader.allocatedCount(mostPolygons, bytesPerCount, "polygons");
    for (qint32 i = 0; i < nrPolygons; ++i) {
        payload.polygons.append(readPolygon(reader));
    }
    if (!reader.atEnd()) {
        const double x = reader.value<double>();
        const double z = reader.value<double>();
        payload.fovea = CoordOnLocalizer(x, z);
    }
    return payload;
}

} // namespace kelp::oct
