#include "OCTScanSegmentation.h"

#include "DataTreeNode.h"
#include "OCTDescriptions.h"
#include "SegmentationPayload.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

#include <algorithm>
#include <memory>

namespace kelp::oct {

namespace {

constexpr const char* sourcePath = "libraries/OCTScan/src/data/OCTScanSegmentation";
constexpr Place constructorPlace{sourcePath, "kelp::oct::OCTScanSegmentation::OCTScanSegmentation"};
constexpr Place setEmptySegmentationPlace{sourcePath,
                                          "kelp::oct::OCTScanSegmentation::setEmptySegmentation"};
constexpr Place setVolumeLayerPlace{sourcePath, "kelp::oct::OCTScanSegmentation::setVolumeLayer"};
constexpr Place getVolumeLayerPlace{sourcePath, "kelp::oct::OCTScanSegmentation::getVolumeLayer"};
constexpr Place getBScanSegmentationPlace{sourcePath,
                                          "kelp::oct::OCTScanSegmentation::getBScanSegmentation"};
constexpr Place getNrOfBScansPlace{sourcePath, "kelp::oct::OCTScanSegmentation::getNrOfBScans"};
constexpr Place doLoadPlace{sourcePath, "kelp::oct::OCTScanSegmentation::doLoad"};
constexpr Place doSavePlace{sourcePath, "kelp::oct::OCTScanSegmentation::doSave"};

constexpr const char* versionAttribute = "kelp::oct::Segmentation::DataVersion";
constexpr const char* dataAttribute = "Data";
constexpr const char* scanChild = "OCTScan";

BScanSegmentationLayerPtr makeLayer(const VolumeLayer& surface, int row, const LayerNamePtr& name)
{
    BScanSegmentationLayer::LayerData positions(surface.columns);
    const unsigned short* const begin =
        surface.data + static_cast<std::size_t>(row) * surface.columns;
    std::copy(begin, begin + surface.columns, positions.data());
    return QSharedPointer<BScanSegmentationLayer>::create(positions, name);
}

/// Null, with the reason on the trace, for a node that holds no readable scan. An item of another
/// class is not even made, since nobody would own it.
OCTScan* loadScan(DataTreeNode* node, DataLoadContext& context)
{
    if (node->getType() != OCTScan::classId().toQString()) {
        Trace() << "The scan of a segmentation is stored as " << node->getType();
        return nullptr;
    }
    CaError error;
    Data* const item = Data::loadFromNode(node, context, error);
    if (error != CaError::nullError) {
        Trace() << error.toString();
    }
    return dynamic_cast<OCTScan*>(item);
}

} // namespace

OCTScanSegmentation::OCTScanSegmentation(const OCTScanPtr& scan)
{
    check(!scan.isNull(), constructorPlace, "Null OCT scan.");
    m_oct = scan;
    m_octGUID = scan->getGUID();
    m_mask = SegmentationMaskPtr::create(m_oct);
    setEmptySegmentation();
    m_decoded = true;
}

_kelp::StringMixer OCTScanSegmentation::typeName()
{
    return "OCTScanSegmentation";
}

_kelp::StringMixer OCTScanSegmentation::getClassId() const
{
    return typeName();
}

bool OCTScanSegmentation::isA(const _kelp::StringMixer& classId) const
{
    return classId == typeName() || ProcessData::isA(classId);
}

void OCTScanSegmentation::setEmptySegmentation()
{
    check(!m_oct.isNull(), setEmptySegmentationPlace, "Null OCT scan.");
    m_oct->ensureLoaded();
    if (!m_bScanSegmentations) {
        initializeFromBase64String();
    }
    m_bScanSegmentations->clear();
    m_bScanSegmentations->resize(m_oct->getBScanCount());
    for (BScanSegmentationPtr& bScan : *m_bScanSegmentations) {
        bScan = BScanSegmentationPtr::create();
    }
}

VolumeLayerPtr OCTScanSegmentation::getVolumeLayer(const LayerNamePtr& name) const
{
    check(!m_oct.isNull(), getVolumeLayerPlace, "Null OCT scan.");
    const auto firstBScan = m_oct->getBScan(0);
    check(!firstBScan.isNull(), getVolumeLayerPlace, "First BScan is null.");
    check(!name.isNull(), getVolumeLayerPlace, "Null layer name.");

    const int rows = m_oct->getBScanCount();
    const int columns = firstBScan->getNrAScans();
    auto surface =
        VolumeLayerPtr::create(static_cast<unsigned>(rows), static_cast<unsigned>(columns));
    for (int row = 0; row < rows; ++row) {
        const BScanSegmentationPtr bScan = getBScanSegmentation(row);
        check(!bScan.isNull(), getVolumeLayerPlace,
              QString("Segmentation for BScan nr %1 is null.").arg(row));
        const BScanSegmentationLayerPtr layer = bScan->getLayer(name);
        check(!layer.isNull(), getVolumeLayerPlace,
              QString("Segmentation layer for layer %1 is null.").arg(name->getIdentifier()));
        check(layer->getSize() == columns, getVolumeLayerPlace,
              QString("Mismatch between nr of Ascans (%1) and segmentation layer size (%2).")
                  .arg(columns)
                  .arg(layer->getSize()));
        const unsigned short* const positions = layer->layerData().data();
        std::copy(positions, positions + columns,
                  surface->data + static_cast<std::size_t>(row) * surface->columns);
    }
    return surface;
}

bool OCTScanSegmentation::setVolumeLayer(const VolumeLayerPtr& layer, const LayerNamePtr& name)
{
    check(!layer.isNull(), setVolumeLayerPlace, "Null surface volume layer.");
    check(!name.isNull(), setVolumeLayerPlace, "Null layer name.");
    check(!m_oct.isNull(), setVolumeLayerPlace, "Null OCT scan.");
    const int nrBScans = m_oct->getBScanCount();
    check(layer->rows == static_cast<unsigned>(nrBScans), setVolumeLayerPlace,
          QString("Mismatch between rows (%1) in surface and nr of BScans (%2)")
              .arg(layer->rows)
              .arg(nrBScans));

    ensureDecoded();
    if (m_bScanSegmentations->size() != nrBScans) {
        setEmptySegmentation();
    }
    for (int row = 0; row < nrBScans; ++row) {
        BScanSegmentationPtr& bScan = (*m_bScanSegmentations)[row];
        if (!bScan) {
            bScan = BScanSegmentationPtr::create();
        }
        bScan->addLayer(makeLayer(*layer, row, name));
    }
    return true;
}

BScanSegmentationPtr OCTScanSegmentation::getBScanSegmentation(int index) const
{
    check(!m_bScanSegmentations.isNull(), getBScanSegmentationPlace, "BScan segmentation is null.");
    // Never needed, since the vector comes with the decoding; kept for the day when it does not.
    ensureDecoded();
    // As an unsigned number, so that a negative index does not reach memory outside the vector.
    check(static_cast<unsigned>(index) < static_cast<unsigned>(m_bScanSegmentations->size()),
          getBScanSegmentationPlace, "Cannot acces BScan segmentation, index out of bounds.");
    return m_bScanSegmentations->at(index);
}

int OCTScanSegmentation::getNrOfBScans() const
{
    check(!m_bScanSegmentations.isNull(), getNrOfBScansPlace, "BScan segmentation is null.");
    // As in getBScanSegmentation.
    ensureDecoded();
    return m_bScanSegmentations->size();
}

QList<LayerNamePtr> OCTScanSegmentation::getAllLayerNames() const
{
    QList<LayerNamePtr> names;
    const int nrBScans = getNrOfBScans();
    for (int i = 0; i < nrBScans; ++i) {
        const BScanSegmentationPtr& bScan = m_bScanSegmentations->at(i);
        if (!bScan) {
            continue;
        }
        for (const LayerNamePtr& name : bScan->getAllLayerNames()) {
            // By pointer on purpose: setVolumeLayer and the decoding give all B-scans one instance.
            if (!names.contains(name)) {
                names.append(name);
            }
        }
    }
    return names;
}

SegmentationMaskPtr OCTScanSegmentation::getMask()
{
    if (!m_mask) {
        m_mask = SegmentationMaskPtr::create(m_oct);
    }
    return m_mask;
}

FoveaPosition OCTScanSegmentation::getFoveaPosition() const
{
    if (!m_bScanSegmentations) {
        initializeFromBase64String();
    }
    return m_fovea;
}

void OCTScanSegmentation::ensureDecoded() const
{
    if (!m_decoded) {
        initializeFromBase64String();
    }
}

QString OCTScanSegmentation::toBase64String() const
{
    if (!m_storedData.isEmpty()) {
        return m_storedData;
    }
    SegmentationPayload payload;
    if (m_bScanSegmentations) {
        payload.bScans = *m_bScanSegmentations;
    }
    if (m_mask) {
        payload.polygons = m_mask->getPolygons();
    }
    if (m_fovea.isSet) {
        payload.fovea = m_fovea.position;
    }
    return QString::fromLatin1(payload.toBytes().toBase64());
}

void OCTScanSegmentation::setStoredData(const QString& base64)
{
    m_storedData = base64;
    m_bScanSegmentations.reset();
    m_mask.reset();
    m_fovea = FoveaPosition();
    m_decoded = false;
}

void OCTScanSegmentation::initializeFromBase64String() const
{
    // Nothing of the object changes before the whole text has been understood.
    const SegmentationPayload payload =
        SegmentationPayload::fromBytes(QByteArray::fromBase64(m_storedData.toUtf8()));
    const auto mask = SegmentationMaskPtr::create(m_oct);
    for (const QPolygonF& polygon : payload.polygons) {
        mask->addPolygon(polygon);
    }

    m_bScanSegmentations = QSharedPointer<QVector<BScanSegmentationPtr>>::create(payload.bScans);
    m_mask = mask;
    m_fovea = FoveaPosition();
    if (payload.fovea) {
        m_fovea = {*payload.fovea, true};
        Trace() << "OCTScanSegmentation::initializeFromBase64String: fovea position (X,Z) at "
                << m_fovea.position.x << " x " << m_fovea.position.y;
    } else {
        Trace() << "OCTScanSegmentation::initializeFromBase64String: no fovea position saved";
    }
    m_storedData.clear();
    m_decoded = true;
}

CaError OCTScanSegmentation::doSave(DataTreeNode* node, DataSaveContext& context)
{
    Trace() << doSavePlace.sourcePath << "::" << doSavePlace.function;
    const CaError error = ProcessData::doSave(node, context);
    if (error != CaError::nullError) {
        return error;
    }
    Trace() << "done saving base";
    if (!m_oct.isNull()) {
        // A scan that cannot be stored must not take its segmentation along.
        Data::saveToNode(m_oct.data(), node->createChild(scanChild), context);
    }
    node->setAttribute(versionAttribute, "1");
    node->setAttribute(dataAttribute, toBase64String());
    Trace() << "done";
    return CaError::nullError;
}

CaError OCTScanSegmentation::doLoad(DataTreeNode* node, DataLoadContext& context)
{
    const CaError error = ProcessData::doLoad(node, context);
    if (error != CaError::nullError) {
        return error;
    }
    if (node->getType() != typeName().toQString()) {
        return CaError::nullError;
    }
    const QString data = node->getAttribute(dataAttribute);
    setStoredData(data);
    if (data.isEmpty()) {
        return CaError("ID0", "Data attribute must not be empty", QString());
    }
    if (DataTreeNode* const child = node->getChild(scanChild)) {
        m_oct = loadScan(child, context);
        check(!m_oct.isNull(), doLoadPlace, "OCT scan is null after loading.");
    }
    return CaError::nullError;
}

} // namespace kelp::oct

namespace {

class OCTScanSegmentationFactory : public CaFactory<Data>::Factory
{
public:
    Data* createInstance() const override { return new kelp::oct::OCTScanSegmentation; }
};

[[maybe_unused]] const int registeredAtStart = createOCTScanSegmentationFactory();

} // namespace

int createOCTScanSegmentationFactory()
{
    static const bool registered = [] {
        qRegisterMetaType<OCTScanSegPtr>("OCTScanSegPtr");
        createOCTDescriptions();
        return Data::getFactory().registerFactory(
            kelp::oct::OCTScanSegmentation::typeName().toQString(),
            std::make_shared<OCTScanSegmentationFactory>());
    }();
    static_cast<void>(registered);
    return 1;
}
