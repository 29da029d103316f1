#include "OCTScan.h"

#include "BScanCircular.h"
#include "BScanLine.h"
#include "OCTDecoder.h"
#include "kelpCheck.h"
#include "kelpTrace.h"

using namespace kelp::oct;

namespace {

constexpr char sourcePath[] = "libraries/OCTScan/src/data/OCTScan";
constexpr char className[] = "OCTScan";

QSharedPointer<OCTScanPattern> patternFromText(const QString& text)
{
    const QSharedPointer<OCTScanPattern> known[] = {
        QSharedPointer<OCTScanPatternVolume>::create(),
        QSharedPointer<OCTScanPatternSingleBScan>::create(),
        QSharedPointer<OCTScanPatternCircularBScan>::create(),
        QSharedPointer<OCTScanPatternStar>::create()};
    for (const auto& pattern : known) {
        if (pattern->toString() == text) {
            return pattern;
        }
    }
    return QSharedPointer<OCTScanPatternUnknown>::create();
}

QSharedPointer<AnatomicalTarget> targetFromText(const QString& text)
{
    const QSharedPointer<AnatomicalTarget> known[] = {QSharedPointer<RightEye>::create(),
                                                      QSharedPointer<LeftEye>::create(),
                                                      QSharedPointer<BothEyes>::create()};
    for (const auto& target : known) {
        if (target->toString() == text) {
            return target;
        }
    }
    return QSharedPointer<UnknownEye>::create();
}

class OCTScanFactory : public CaFactory<Data>::Factory
{
public:
    Data* createInstance() const override { return new OCTScan; }
};

// A scan in a stored tree can be made whether or not the program has called the function.
[[maybe_unused]] const int registeredAtStart = createOCTScanFactory();

} // namespace

OCTScan::OCTScan() : m_pattern(QSharedPointer<OCTScanPatternUnknown>::create()) {}

OCTScan::~OCTScan() = default;

_kelp::StringMixer OCTScan::classId()
{
    return className;
}

_kelp::StringMixer OCTScan::getClassId() const
{
    return classId();
}

bool OCTScan::isA(const _kelp::StringMixer& classIdAsked) const
{
    return classIdAsked == classId() || Data::isA(classIdAsked);
}

void OCTScan::ensureLoaded()
{
    if (!m_loaded) {
        doBinLoad();
    }
}

void OCTScan::doBinLoad()
{
    constexpr kelp::Place place{sourcePath, "OCTScan::doBinLoad"};
    m_loadProblem.clear();
    QList<kelp::URI> uris;
    getUris(uris);
    kelp::check(!uris.isEmpty(), place, "no URI set!");
    const auto decoder = OCTDecoder::getOCTDecoder(uris.first().codecScheme());
    kelp::check(decoder != nullptr, place, "Could not get a decent decoder.");
    decoder->setUris(uris);
    const bool decoded = decoder->decode();
    m_loadProblem = decoder->getFailureReason();
    if (!m_loadProblem.isEmpty()) {
        kelp::Trace() << m_loadProblem;
    }
    kelp::check(decoded, place,
                QString("Could not decode OCT with URIs %1").arg(uris.first().toString()));
    takeOver(*decoder);
    m_loaded = true;
}

void OCTScan::takeOver(const OCTDecoder& decoder)
{
    m_metaInfo = decoder.getMetaInfo();
    kelp::Trace() << "OCTScan meta info size: " << m_metaInfo.size();
    kelp::Trace() << "OCTScan scan pattern: " << decoder.getScanPattern();
    kelp::Trace() << "OCTScan anatomical target: " << decoder.getAnatomicalTarget();
    const unsigned count = decoder.getNumberOfBscans();
    kelp::Trace() << "found " << count;

    m_bScans.clear();
    kelp::Trace() << "detecting type ob CScan: ";
    m_pattern = patternFromText(decoder.getScanPattern());
    for (unsigned i = 0; i < count; ++i) {
        appendBScan(decoder, i);
    }
    m_target = targetFromText(decoder.getAnatomicalTarget());
    m_localizer.reset();
    if (decoder.hasLocalizer()) {
        m_localizer = QSharedPointer<Localizer>::create();
        m_localizer->setImage(decoder.getLocalizerImage());
        m_localizer->setMetaInfo(decoder.getLocalizerMetaInfo());
        m_localizer->setSpacing(decoder.getLocalizerSpacing());
    }
}

void OCTScan::appendBScan(const OCTDecoder& decoder, unsigned index)
{
    const QList<Vector2d>& positions = decoder.getBScanPositions(index);
    const double axialResolution = decoder.getBScanAxialResolution(index);
    const QSharedPointer<kelp::Image> image = decoder.getBScanImage(index);
    QSharedPointer<BScan> bScan;
    if (hasPattern<OCTScanPatternVolume, OCTScanPatternSingleBScan, OCTScanPatternStar>()) {
        kelp::Trace() << "handling Volume or Single BScan";
        bScan = QSharedPointer<BScanLine>::create(positions, axialResolution, image);
    } else if (hasPattern<OCTScanPatternCircularBScan>()) {
        kelp::Trace() << "handling Circular BScan";
        bScan = QSharedPointer<BScanCircular>::create(positions, axialResolution, image);
    } else {
        throw kelp::NotImplemented(
            kelp::locatedText({sourcePath, "OCTScan::doBinLoad"},
                              QString("OCT of type %1 is not supported").arg(patternText())));
    }
    bScan->setMetaInfo(decoder.getBScanMetaInfo(index));
    m_bScans.append(bScan);
}

QSharedPointer<BScan> OCTScan::getBScan(unsigned index) const
{
    return bScanAt(index);
}

const QSharedPointer<BScan>& OCTScan::bScanAt(unsigned index) const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::getBScan"};
    kelp::check(index < static_cast<unsigned>(m_bScans.size()), place, "index out of bounds");
    return m_bScans.at(static_cast<int>(index));
}

QList<QSharedPointer<kelp::Image>> OCTScan::getBScanImages() const
{
    QList<QSharedPointer<kelp::Image>> images;
    for (const auto& bScan : m_bScans) {
        images.append(bScan->getImage());
    }
    return images;
}

QList<QSharedPointer<kelp::Image>> OCTScan::getBScanImagesCoarse(double xScale, double yScale) const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::getBScanImagesCoarse"};
    QList<QSharedPointer<kelp::Image>> images;
    for (const auto& bScan : m_bScans) {
        kelp::check(!bScan.isNull(), place, QString("BScan %1 is null").arg(images.size()));
        images.append(bScan->getScaledImage(xScale, yScale));
    }
    return images;
}

QList<QSharedPointer<const kelp::Image>> OCTScan::getBScanImagesConst() const
{
    constexpr kelp::Place place{sourcePath, "OCTScan::getBScanImagesConst"};
    QList<QSharedPointer<const kelp::Image>> images;
    for (const auto& bScan : m_bScans) {
        kelp::check(!bScan.isNull(), place, QString("BScan %1 is null").arg(images.size()));
        images.append(bScan->getImage());
    }
    return images;
}

int createOCTScanFactory()
{
    static const bool registered = [] {
        qRegisterMetaType<OCTScanPtr>("OCTScanPtr");
        return Data::getFactory().registerFactory(className,
                                                  std::make_shared<const OCTScanFactory>());
    }();
    static_cast<void>(registered);
    return 1;
}

// Here rather than in one file with all others, so that a program links only what it uses.
#include "moc_OCTScan.cpp"
