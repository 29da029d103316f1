#pragma once

#include "BScanSegmentation.h"
#include "CoordOnLocalizer.h"

#include <QByteArray>
#include <QList>
#include <QPolygonF>
#include <QVector>

#include <optional>

namespace kelp::oct {

/// What a segmentation stores, and the bytes that stand for it. The byte form never changes, since
/// stores keep it: QDataStream's big-endian numbers, 64-bit floats and UTF-16 texts.
///
///     i32 nrOfBScans
///         i32 nrOfLayers                        per B-scan
///             text identifier                   per layer
///             i32 nrOfPositions, then i16 each
///     i32 nrOfPolygons
///         i32 nrOfPoints, then f64 x, f64 y each
///     f64 x, f64 z of the fovea                 only if it is known
struct SegmentationPayload
{
    /// A null entry stands for a B-scan without layers.
    QVector<BScanSegmentationPtr> bScans;
    QList<QPolygonF> polygons;
    std::optional<CoordOnLocalizer> fovea;

    QByteArray toBytes() const;

    /// Layers that the registry does not know are dropped. Where the bytes end too early, zeros are
    /// read. Throws kelp::ParsingError for a count that neither the bytes nor any scan could fill,
    /// so that memory stays in proportion to the bytes.
    static SegmentationPayload fromBytes(const QByteArray& bytes);
};

} // namespace kelp::oct
