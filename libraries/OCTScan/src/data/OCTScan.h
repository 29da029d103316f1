#pragma once

#include "AnatomicalTarget.h"
#include "BScan.h"
#include "CoordOnLocalizer.h"
#include "DataPointer.h"
#include "Localizer.h"
#include "Matrix2x2.h"
#include "OCTScanPattern.h"
#include "Vector3d.h"
#include "kelpVector.h"

#include <QStringList>

class OCTDecoder;
namespace kelp {
struct Place;
}

/// A place in a volume: B-scan number and A-scan number, with fractions.
struct VolumeIndex
{
    double bScan = 0.0;
    double aScan = 0.0;
};

/// A place in a volume in millimetres along its axes: across B-scans (z), along A-scans (x).
struct VolumeCoords
{
    double z = 0.0;
    double x = 0.0;
};

/// One acquisition: a series of B-scans with an optional localizer. The tree keeps its URIs only;
/// the pixels are read through an OCTDecoder at first use. All geometry between millimetres on the
/// localizer and indices into the volume lives here. For volumes a regular grid is assumed, derived
/// from B-scans 0 and 1 alone.
///
/// Failures are kelp::Assertion, or kelp::NotImplemented for a pattern that an operation does not
/// handle.
class OCTScan : public Data
{
    Q_OBJECT

public:
    OCTScan();
    ~OCTScan() override;

    static _kelp::StringMixer classId();
    _kelp::StringMixer getClassId() const override;
    bool isA(const _kelp::StringMixer& classId) const override;

    /// Reads the scan from its URIs. May be called again and then rebuilds the B-scans.
    virtual void doBinLoad();
    void ensureLoaded();
    bool isLoaded() const { return m_loaded; }
    /// What the decoder said of the last doBinLoad: a plain sentence that names the file, or empty.
    /// A caller that catches a failure of loading shows this rather than the failure's own text.
    const QString& getLoadProblem() const { return m_loadProblem; }

    QSharedPointer<kelp::oct::BScan> getBScan(unsigned index) const;
    int getBScanCount() const { return m_bScans.size(); }
    /// Shared, in B-scan order.
    QList<QSharedPointer<kelp::Image>> getBScanImages() const;
    QList<QSharedPointer<kelp::Image>> getBScanImagesCoarse(double xScale, double yScale) const;
    QList<QSharedPointer<const kelp::Image>> getBScanImagesConst() const;
    /// Null when the export has none.
    QSharedPointer<kelp::oct::Localizer> getLocalizer() const { return m_localizer; }
    QMap<QString, QVariant> getMetaInfo() const { return m_metaInfo; }
    QSharedPointer<kelp::oct::OCTScanPattern> getScanPattern() const { return m_pattern; }
    /// Null until loaded.
    QSharedPointer<kelp::oct::AnatomicalTarget> getAnatomicalTarget() const { return m_target; }

    Vector2d getCenter() const;
    /// The position of A-scan 0 of B-scan 0.
    Vector2d getVolumeOrigin() const;
    /// Columns: the direction of the A-scans, the direction of the B-scans.
    Matrix2x2 getOrientationOnLocalizer() const;
    /// Distance of neighbouring A-scans, axial resolution.
    Vector2d getSliceSpacing() const;
    /// Distance of neighbouring A-scans, axial resolution, distance of neighbouring B-scans.
    Vector3d getVolumeSpacing() const;
    /// A-scans, rows, B-scans.
    kelp::Vector3<int> getVolumeSize() const;

    /// Neither rounded nor clamped.
    VolumeIndex localizerCoordToVolumeIndex(const CoordOnLocalizer& position) const;
    VolumeCoords localizerCoordToVolumeCoords(const CoordOnLocalizer& position) const;
    CoordOnLocalizer volumeCoordsToLocalizerCoord(const VolumeCoords& coords) const;
    CoordOnLocalizer volumeIndexToLocalizerCoords(const VolumeIndex& index) const;
    /// For stars and circles the stored position of this A-scan.
    CoordOnLocalizer volumeIndexToLocalizerCoords(int bScan, int aScan) const;

private:
    void takeOver(const OCTDecoder& decoder);
    void appendBScan(const OCTDecoder& decoder, unsigned index);
    QString patternText() const;
    template <typename... Patterns>
    bool hasPattern() const
    {
        const QString text = patternText();
        return ((text == Patterns().toString()) || ...);
    }
    const QSharedPointer<kelp::oct::BScan>& bScanAt(unsigned index) const;
    const Vector2d& position(unsigned bScan, unsigned aScan) const;
    void checkTwoBScans(const kelp::Place& place) const;
    CoordOnLocalizer gridPosition(const kelp::Place& place, double bScan, double aScan) const;

    QList<QSharedPointer<kelp::oct::BScan>> m_bScans;
    QSharedPointer<kelp::oct::OCTScanPattern> m_pattern;
    QSharedPointer<kelp::oct::Localizer> m_localizer;
    QMap<QString, QVariant> m_metaInfo;
    QSharedPointer<kelp::oct::AnatomicalTarget> m_target;
    QStringList m_reserved; ///< part of the scan's record; nothing fills it
    bool m_loaded = false;
    QString m_loadProblem;
};

using OCTScanPtr = DataPointer<OCTScan>;
Q_DECLARE_METATYPE(OCTScanPtr)

/// Registers the creator of "OCTScan" once. Returns 1. Also runs during static initialisation.
int createOCTScanFactory();
