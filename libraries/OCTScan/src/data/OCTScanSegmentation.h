#pragma once

#include "BScanSegmentation.h"
#include "CoordOnLocalizer.h"
#include "OCTScan.h"
#include "ProcessData.h"
#include "SegmentationMask.h"
#include "VolumeLayer.h"

#include <QVector>

namespace kelp::oct {

/// Where the fovea is, if it is known.
struct FoveaPosition
{
    CoordOnLocalizer position;
    bool isSet = false;
};

/// The surfaces of every B-scan of one scan, the exclusion mask and the fovea. Saved with its study
/// as base64 text in the attribute "Data", which is decoded at first use.
///
/// Failures are kelp::Assertion. No lock: one thread at a time.
class OCTScanSegmentation : public ProcessData
{
    Q_OBJECT

public:
    /// For the factory, before doLoad.
    OCTScanSegmentation() = default;
    explicit OCTScanSegmentation(const OCTScanPtr& scan);

    static _kelp::StringMixer typeName();
    _kelp::StringMixer getClassId() const override;
    bool isA(const _kelp::StringMixer& classId) const override;

    /// No layers on any B-scan; mask and fovea stay.
    void setEmptySegmentation();
    /// A new matrix; changing it changes nothing here.
    VolumeLayerPtr getVolumeLayer(const LayerNamePtr& name) const;
    /// Copies the matrix. Always true.
    bool setVolumeLayer(const VolumeLayerPtr& layer, const LayerNamePtr& name);
    BScanSegmentationPtr getBScanSegmentation(int index) const;
    int getNrOfBScans() const;
    /// The union over all B-scans in order of first appearance.
    QList<LayerNamePtr> getAllLayerNames() const;
    OCTScanPtr getOCT() const { return m_oct; }
    /// Made when there is none.
    SegmentationMaskPtr getMask();
    FoveaPosition getFoveaPosition();
    void setFoveaPosition(const FoveaPosition& fovea) { m_fovea = fovea; }
    void ensureDecoded();

    /// The payload as base64 without line breaks.
    QString toBase64String() const;
    /// Takes a payload of the stored form in place of what is there; decoded at first use.
    void setStoredData(const QString& base64);

    using ProcessData::doLoad;
    using ProcessData::doSave;
    CaError doSave(DataTreeNode* node, DataSaveContext& context) override;
    CaError doLoad(DataTreeNode* node, DataLoadContext& context) override;

private:
    void initializeFromBase64String();

    OCTScanPtr m_oct;
    QString m_octGUID;
    QString m_storedData;
    QSharedPointer<QVector<BScanSegmentationPtr>> m_bScanSegmentations;
    SegmentationMaskPtr m_mask;
    FoveaPosition m_fovea;
    bool m_decoded = false;
};

} // namespace kelp::oct

using OCTScanSegPtr = DataPointer<kelp::oct::OCTScanSegmentation>;
Q_DECLARE_METATYPE(OCTScanSegPtr)

/// Registers the creator of "OCTScanSegmentation" once. Returns 1.
int createOCTScanSegmentationFactory();
