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
/// as base64 text in the attribute "Data", which is decoded at first use: ensureDecoded,
/// setVolumeLayer, setEmptySegmentation and getFoveaPosition decode, the other readers want it
/// done.
///
/// A stored text that ends too early reads as zeros to the end of its counts. One whose counts
/// neither its own bytes nor any scan could fill throws kelp::ParsingError instead of asking for
/// the memory; the segmentation then keeps its text, and saving it gives that text back.
///
/// All other failures are kelp::Assertion. No lock: one thread at a time.
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
    FoveaPosition getFoveaPosition() const;
    void setFoveaPosition(const FoveaPosition& fovea) { m_fovea = fovea; }
    /// Does nothing once decoded. Throws ParsingError for a damaged text, and whatever loading the
    /// scan throws.
    void ensureDecoded() const;

    /// Whether the layers can be read without decoding, which may load the scan.
    bool isDecoded() const { return m_decoded && m_bScanSegmentations; }

    /// The payload as base64 without line breaks.
    QString toBase64String() const;
    /// Takes a payload of the stored form in place of what is there; decoded at first use.
    void setStoredData(const QString& base64);

    using ProcessData::doLoad;
    using ProcessData::doSave;
    CaError doSave(DataTreeNode* node, DataSaveContext& context) override;
    CaError doLoad(DataTreeNode* node, DataLoadContext& context) override;

private:
    void initializeFromBase64String() const;

    OCTScanPtr m_oct;
    /// Of the scan at construction; informative.
    QString m_octGUID;
    // Mutable, since reading decodes.
    /// The text as loaded; empty once decoded.
    mutable QString m_storedData;
    /// Null until decoded.
    mutable QSharedPointer<QVector<BScanSegmentationPtr>> m_bScanSegmentations;
    mutable SegmentationMaskPtr m_mask;
    mutable FoveaPosition m_fovea;
    mutable bool m_decoded = false;
};

} // namespace kelp::oct

using OCTScanSegPtr = DataPointer<kelp::oct::OCTScanSegmentation>;
Q_DECLARE_METATYPE(OCTScanSegPtr)

/// Registers the creator of "OCTScanSegmentation" once. Returns 1.
int createOCTScanSegmentationFactory();
