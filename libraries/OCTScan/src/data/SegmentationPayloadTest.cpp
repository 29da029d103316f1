#include "SegmentationPayload.h"

#include "SegmentationTestTools.h"

#include <gmock/gmock.h>

#include <cstring>
#include <random>

using namespace kelp::oct;
using namespace kelp::oct::test;
using testing::HasSubstr;

namespace {

/// Bytes of the stored form put together by hand, most significant byte first.
class Bytes
{
public:
    Bytes& number(qint64 value, int size)
    {
        for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
            m_bytes.append(static_cast<char>((value >> shift) & 0xFF));
        }
        return *this;
    }
    /// Also remembers where the counts stand.
    Bytes& count(int value)
    {
        m_counts.append(m_bytes.size());
        return number(value, 4);
    }
    Bytes& text(const char* latin)
    {
        const QString content = QString::fromLatin1(latin);
        number(2 * content.size(), 4);
        for (const QChar character : content) {
            number(character.unicode(), 2);
        }
        return *this;
    }
    Bytes& layer(const char* identifier, std::initializer_list<int> positions)
    {
        text(identifier).count(static_cast<int>(positions.size()));
        for (const int position : positions) {
            number(position, 2);
        }
        return *this;
    }
    Bytes& real(double value)
    {
        qint64 bits = 0;
        static_assert(sizeof(bits) == sizeof(value));
        std::memcpy(&bits, &value, sizeof(bits));
        return number(bits, 8);
    }

    const QByteArray& bytes() const { return m_bytes; }
    const QList<int>& counts() const { return m_counts; }

private:
    QByteArray m_bytes;
    QList<int> m_counts;
};

/// Two B-scans of three A-scans with every kind of field.
Bytes exampleBytes()
{
    Bytes example;
    example.count(2);
    example.count(2).layer("ILM", {1, 300, 65535}).layer("ILMcoarse", {0, 0, 7});
    example.count(1).layer("ILM", {4, 5, 6});
    example.count(2);
    example.count(3).real(-0.5).real(-0.5).real(1.25).real(-0.5).real(0.0).real(0.05);
    example.count(0);
    example.real(2.5).real(-3.5);
    return example;
}

OCTScanPtr exampleScan()
{
    static const OCTScanPtr scan = makeTestScan(lineScan(3, 4, 2));
    return scan;
}

QString base64(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toBase64());
}

OCTScanSegPtr makeStored(const QByteArray& bytes)
{
    OCTScanSegPtr segmentation = new OCTScanSegmentation(exampleScan());
    segmentation->setStoredData(base64(bytes));
    return segmentation;
}

OCTScanSegPtr makeDecoded(const QByteArray& bytes)
{
    OCTScanSegPtr segmentation = makeStored(bytes);
    segmentation->ensureDecoded();
    return segmentation;
}

QByteArray bytesOf(const OCTScanSegPtr& segmentation)
{
    return QByteArray::fromBase64(segmentation->toBase64String().toLatin1());
}

std::vector<int> positionsOf(const BScanSegmentation& bScan, const LayerNamePtr& name)
{
    const auto data = bScan.getLayer(name)->getLayerData();
    return {data.data(), data.data() + data.size()};
}

TEST(SegmentationPayload, OfThreeEmptyBScansIsFiveCounts)
{
    const OCTScanSegPtr segmentation = new OCTScanSegmentation(makeTestScan(lineScan(4, 8, 3)));
    EXPECT_EQ(bytesOf(segmentation), Bytes().count(3).count(0).count(0).count(0).count(0).bytes());
    EXPECT_EQ(bytesOf(segmentation).size(), 20);
}

TEST(SegmentationPayload, IsWrittenByteForByte)
{
    const OCTScanSegPtr segmentation = new OCTScanSegmentation(exampleScan());
    const auto add = [&](int bScan, const LayerNamePtr& name, std::initializer_list<int> values) {
        BScanSegmentationLayer::LayerData data(values.size());
        std::copy(values.begin(), values.end(), data.data());
        segmentation->getBScanSegmentation(bScan)->addLayer(
            QSharedPointer<BScanSegmentationLayer>::create(data, name));
    };
    add(0, LayerNameILM::create(), {1, 300, 65535});
    add(0, LayerNameILMCoarse::create(), {0, 0, 7});
    add(1, LayerNameILM::create(), {4, 5, 6});
    segmentation->getMask()->addPolygon(
        QPolygonF(QVector<QPointF>{QPointF(-0.5, -0.5), QPointF(1.25, -0.5), QPointF(0.0, 0.05)}));
    segmentation->getMask()->addPolygon(QPolygonF());
    segmentation->setFoveaPosition({{2.5, -3.5}, true});
    EXPECT_EQ(bytesOf(segmentation), exampleBytes().bytes());
    EXPECT_FALSE(segmentation->toBase64String().contains('\n'));
}

TEST(SegmentationPayload, IsReadBack)
{
    const TraceCapture trace;
    const OCTScanSegPtr segmentation = makeDecoded(exampleBytes().bytes());
    EXPECT_EQ(segmentation->getNrOfBScans(), 2);
    const BScanSegmentationPtr first = segmentation->getBScanSegmentation(0);
    EXPECT_THAT(positionsOf(*first, LayerNameILM::create()), testing::ElementsAre(1, 300, 65535));
    EXPECT_THAT(positionsOf(*first, LayerNameILMCoarse::create()), testing::ElementsAre(0, 0, 7));
    EXPECT_EQ(segmentation->getMask()->getPolygons().size(), 2);
    EXPECT_THAT(*segmentation->getMask()->getMaskRow(0), testing::ElementsAre(true, true, true));
    EXPECT_EQ(segmentation->getFoveaPosition().position, CoordOnLocalizer(2.5, -3.5));
    EXPECT_THAT(trace.text(), HasSubstr("OCTScanSegmentation::initializeFromBase64String: fovea "
                                        "position (X,Z) at 2.5 x -3.5\n"));
    EXPECT_EQ(bytesOf(segmentation), exampleBytes().bytes());
}

TEST(SegmentationPayload, GivesAllBScansTheRegistrysNames)
{
    const OCTScanSegPtr segmentation = makeDecoded(exampleBytes().bytes());
    EXPECT_THAT(segmentation->getAllLayerNames(),
                testing::ElementsAre(LayerName::fromIdentifier("ILM"),
                                     LayerName::fromIdentifier("ILMcoarse")));
}

TEST(SegmentationPayload, WithoutFoveaSaysSo)
{
    const TraceCapture trace;
    QByteArray bytes = exampleBytes().bytes();
    bytes.chop(16);
    EXPECT_FALSE(makeDecoded(bytes)->getFoveaPosition().isSet);
    EXPECT_THAT(trace.text(), HasSubstr("OCTScanSegmentation::initializeFromBase64String: no fovea "
                                        "position saved\n"));
    EXPECT_THAT(trace.text(), testing::Not(HasSubstr("fovea position (X,Z)")));
}

TEST(SegmentationPayload, LosesOnlyLayersOfUnknownNames)
{
    for (const char* const unknown : {"ILMCoarse", "invalid", "", "Some Future Layer"}) {
        SCOPED_TRACE(unknown);
        Bytes bytes;
        bytes.count(1).count(3).layer("BM", {1, 2, 3}).layer(unknown, {4, 5, 6, 7, 8});
        bytes.layer("ILM", {9, 8, 7}).count(0);
        const OCTScanSegPtr segmentation = makeDecoded(bytes.bytes());
        const BScanSegmentationPtr bScan = segmentation->getBScanSegmentation(0);
        EXPECT_EQ(bScan->getAllLayers().size(), 2);
        EXPECT_THAT(positionsOf(*bScan, LayerNameBM::create()), testing::ElementsAre(1, 2, 3));
        EXPECT_THAT(positionsOf(*bScan, LayerNameILM::create()), testing::ElementsAre(9, 8, 7));
        EXPECT_EQ(bytesOf(segmentation), Bytes()
                                             .count(1)
                                             .count(2)
                                             .layer("BM", {1, 2, 3})
                                             .layer("ILM", {9, 8, 7})
                                             .count(0)
                                             .bytes());
    }
}

TEST(SegmentationPayload, KeepsTheLastOfTwoLayersOfOneName)
{
    Bytes bytes;
    bytes.count(1).count(2).layer("BM", {1}).layer("BM", {2}).count(0);
    const auto bScan = makeDecoded(bytes.bytes())->getBScanSegmentation(0);
    EXPECT_THAT(positionsOf(*bScan, LayerNameBM::create()), testing::ElementsAre(2));
}

TEST(SegmentationPayload, TakesNegativeCountsForNone)
{
    EXPECT_EQ(makeDecoded(Bytes().count(-1).count(0).bytes())->getNrOfBScans(), 0);
    EXPECT_TRUE(
        makeDecoded(Bytes().count(1).count(-5).count(-7).bytes())->getAllLayerNames().isEmpty());
    Bytes negativePositions;
    negativePositions.count(1).count(1).text("ILM").count(-2).count(0);
    EXPECT_EQ(makeDecoded(negativePositions.bytes())
                  ->getBScanSegmentation(0)
                  ->getLayer(LayerNameILM::create())
                  ->getSize(),
              0);
}

/// What QDataStream itself reads where nothing bounds a count: the plain rule.
SegmentationPayload plainlyRead(const QByteArray& bytes)
{
    QDataStream stream(bytes);
    SegmentationPayload payload;
    qint32 nrBScans = 0;
    stream >> nrBScans;
    for (qint32 i = 0; i < nrBScans; ++i) {
        auto bScan = BScanSegmentationPtr::create();
        qint32 nrLayers = 0;
        stream >> nrLayers;
        for (qint32 k = 0; k < nrLayers; ++k) {
            QString identifier;
            qint32 nrPositions = 0;
            stream >> identifier >> nrPositions;
            BScanSegmentationLayer::LayerData data(
                static_cast<std::size_t>(std::max(0, nrPositions)));
            for (std::size_t p = 0; p < data.size(); ++p) {
                qint16 position = 0;
                stream >> position;
                data[p] = static_cast<unsigned short>(position);
            }
            const LayerNamePtr name = LayerName::fromIdentifier(identifier);
            if (name->getIdentifier() != "invalid") {
                bScan->addLayer(QSharedPointer<BScanSegmentationLayer>::create(data, name));
            }
        }
        payload.bScans.append(bScan);
    }
    qint32 nrPolygons = 0;
    stream >> nrPolygons;
    for (qint32 i = 0; i < nrPolygons; ++i) {
        qint32 nrPoints = 0;
        stream >> nrPoints;
        QPolygonF polygon;
        for (qint32 k = 0; k < nrPoints; ++k) {
            double x = 0.0;
            double y = 0.0;
            stream >> x >> y;
            polygon.append(QPointF(x, y));
        }
        payload.polygons.append(polygon);
    }
    if (!stream.atEnd()) {
        double x = 0.0;
        double z = 0.0;
        stream >> x >> z;
        payload.fovea = CoordOnLocalizer(x, z);
    }
    return payload;
}

TEST(SegmentationPayload, CutAtAnyByteReadsAsZerosToTheEndOfItsCounts)
{
    const QByteArray whole = exampleBytes().bytes();
    for (int size = 0; size <= whole.size(); ++size) {
        const QByteArray cut = whole.left(size);
        EXPECT_EQ(bytesOf(makeDecoded(cut)), plainlyRead(cut).toBytes()) << size << " bytes";
    }
}

TEST(SegmentationPayload, CutInsideALayerKeepsItsLength)
{
    QByteArray bytes = Bytes().count(2).count(1).layer("ILM", {1, 2, 3}).bytes();
    bytes.chop(3);
    const OCTScanSegPtr segmentation = makeDecoded(bytes);
    EXPECT_THAT(positionsOf(*segmentation->getBScanSegmentation(0), LayerNameILM::create()),
                testing::ElementsAre(1, 0, 0));
    EXPECT_TRUE(segmentation->getBScanSegmentation(1)->getAllLayers().isEmpty());
    EXPECT_FALSE(segmentation->getFoveaPosition().isSet);
}

TEST(SegmentationPayload, RefusesCountsThatNothingCouldFill)
{
    const struct
    {
        QByteArray bytes;
        const char* what;
    } cases[] = {
        {Bytes().count(0x7FFFFFFF).bytes(), "2147483647 B-scans, but only 0 bytes follow."},
        {Bytes().count(1).count(1).text("ILM").count(0x7FFFFFFF).bytes(),
         "2147483647 positions, but only 0 bytes follow."},
        {Bytes().count(0).count(100000).count(0).bytes(),
         "100000 polygons, but only 4 bytes follow."},
        {Bytes().count(0).count(1).count(0x10000000).bytes(),
         "268435456 polygon points, but only 0 bytes follow."},
    };
    for (const auto& [bytes, what] : cases) {
        const OCTScanSegPtr segmentation = makeStored(bytes);
        EXPECT_EQ(messageOf<kelp::ParsingError>([&] { segmentation->ensureDecoded(); }),
                  QString("The stored segmentation is damaged: it announces %1").arg(what));
        // Nothing is lost by having looked.
        EXPECT_EQ(segmentation->toBase64String(), base64(bytes));
        EXPECT_THROW(segmentation->getFoveaPosition(), kelp::ParsingError);
        EXPECT_THROW(segmentation->getNrOfBScans(), kelp::Assertion);
    }
}

TEST(SegmentationPayload, KeepsItsTextWhenTheScanHasNoPositionsForItsPolygons)
{
    OCTScanSegPtr segmentation = new OCTScanSegmentation(makeTestScan(lineScan(3, 4, 1)));
    segmentation->setStoredData(base64(exampleBytes().bytes()));
    EXPECT_THROW(segmentation->ensureDecoded(), kelp::Assertion);
    EXPECT_EQ(segmentation->toBase64String(), base64(exampleBytes().bytes()));
}

TEST(SegmentationPayload, MayBeAnyText)
{
    for (const char* const text : {"", "?", "no base64 at all", "\xC3\xA4", "AAAA", "====", "A"}) {
        OCTScanSegPtr segmentation = new OCTScanSegmentation(exampleScan());
        segmentation->setStoredData(QString::fromUtf8(text));
        EXPECT_NO_THROW(segmentation->ensureDecoded()) << text;
    }
}

/// Uses everything of a segmentation that came out of a store. nrBytes: what it was read from.
void exercise(const OCTScanSegPtr& segmentation, int nrBytes)
{
    segmentation->ensureDecoded();
    // At most one list of B-scans, positions, polygons and points each goes on past the end, by
    // the 65,536 elements that are always believed.
    constexpr int mostInvented = 65536 * (4 + 2 + 4 + 16);
    EXPECT_LE(bytesOf(segmentation).size(), nrBytes + mostInvented);
    for (const LayerNamePtr& name : segmentation->getAllLayerNames()) {
        try {
            segmentation->getVolumeLayer(name);
        } catch (const kelp::Assertion&) {
            // A layer may be missing on a B-scan or have another length.
        }
    }
    const QByteArray again = bytesOf(segmentation);
    EXPECT_EQ(bytesOf(makeDecoded(again)), again) << "what is written again does not read back";
    segmentation->setVolumeLayer(makeFlatSurface(2, 3, 9), LayerNameBM::create());
    EXPECT_EQ((*segmentation->getVolumeLayer(LayerNameBM::create()))(1, 2), 9);
}

/// Whether the mutated payload could be decoded.
bool survives(const QByteArray& bytes)
{
    const OCTScanSegPtr segmentation = makeStored(bytes);
    try {
        exercise(segmentation, bytes.size());
        return true;
    } catch (const kelp::Exception& exception) {
        EXPECT_THAT(exception.what(), HasSubstr("The stored segmentation is damaged: "));
        EXPECT_EQ(segmentation->toBase64String(), base64(bytes));
        return false;
    }
}

TEST(SegmentationPayloadMutations, EveryCountMayBeAnyNumber)
{
    const TraceCapture quiet;
    const Bytes example = exampleBytes();
    int nrSurvivors = 0;
    int nrMutations = 0;
    for (const int place : example.counts()) {
        for (const qint64 value :
             {-2147483648LL, -2147483647LL, -65536LL,    -2LL,       -1LL,        0LL,
              1LL,           4LL,           5LL,         100LL,      255LL,       65535LL,
              65536LL,       65537LL,       1000000LL,   16777216LL, 268435456LL, 1073741823LL,
              1073741824LL,  2147483646LL,  2147483647LL}) {
            QByteArray bytes = example.bytes();
            bytes.replace(place, 4, Bytes().number(value, 4).bytes());
            nrSurvivors += survives(bytes) ? 1 : 0;
            ++nrMutations;
        }
    }
    EXPECT_GT(nrSurvivors, 0);
    EXPECT_LT(nrSurvivors, nrMutations);
}

/// One to four changes: a bit, a byte, a count, a cut, a piece doubled or taken out.
QByteArray mutated(const Bytes& example, std::mt19937& random)
{
    const auto below = [&random](int limit) {
        return std::uniform_int_distribution<int>(0, std::max(0, limit - 1))(random);
    };
    QByteArray bytes = example.bytes();
    for (int changes = 1 + below(4); changes > 0 && !bytes.isEmpty(); --changes) {
        const int place = below(bytes.size());
        switch (below(6)) {
        case 0:
            bytes[place] = static_cast<char>(bytes[place] ^ (1 << below(8)));
            break;
        case 1:
            bytes[place] = static_cast<char>(below(256));
            break;
        case 2: {
            const int count = example.counts()[below(example.counts().size())];
            bytes.replace(count, 4, Bytes().number(static_cast<qint64>(random()), 4).bytes());
            break;
        }
        case 3:
            bytes.truncate(place);
            break;
        case 4:
            bytes.insert(place, bytes.mid(below(bytes.size()), below(40)));
            break;
        default:
            bytes.remove(place, below(20));
            break;
        }
    }
    return bytes;
}

TEST(SegmentationPayloadMutations, ThousandsOfDamagedTextsEndInAClearMessageAtMost)
{
    const TraceCapture quiet;
    const Bytes example = exampleBytes();
    std::mt19937 random(31);
    int nrSurvivors = 0;
    constexpr int nrMutations = 4000;
    for (int i = 0; i < nrMutations; ++i) {
        SCOPED_TRACE(i);
        nrSurvivors += survives(mutated(example, random)) ? 1 : 0;
    }
    EXPECT_GT(nrSurvivors, nrMutations / 4);
    EXPECT_LT(nrSurvivors, nrMutations);
}

} // namespace
