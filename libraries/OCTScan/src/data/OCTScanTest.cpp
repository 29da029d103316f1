#include "BScanCircular.h"
#include "BScanLine.h"
#include "ExpectFailure.h"
#include "OCTDecoder.h"
#include "TestExport.h"
#include "TraceCapture.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace kelp::oct;
using test::failure;
using test::lineScan;
using test::makeTestScan;
using test::makeUnloadedTestScan;
using test::TestScan;
using test::TraceCapture;

const std::string place = "OCTScan/src/data/OCTScan::OCTScan::";

class FailingDecoder : public OCTDecoder
{
public:
    bool decode() override
    {
        addProblem("The disk is on fire.");
        return false;
    }
};

class FailingDecoderFactory : public CaFactory<OCTDecoder>::Factory
{
    OCTDecoder* createInstance() const override { return new FailingDecoder; }
};

TEST(OCTScan, KnowsItsClass)
{
    const OCTScanPtr scan(new OCTScan);
    EXPECT_TRUE(scan->getClassId() == "OCTScan");
    EXPECT_TRUE(scan->isA("OCTScan"));
    EXPECT_TRUE(scan->isA(Data::classId()));
    EXPECT_FALSE(scan->isA("Study"));
}

TEST(OCTScan, IsEmptyAndUnknownAtFirst)
{
    const OCTScanPtr scan(new OCTScan);
    EXPECT_FALSE(scan->isLoaded());
    EXPECT_EQ(scan->getBScanCount(), 0);
    EXPECT_EQ(scan->getScanPattern()->toString(), "Unknown");
    EXPECT_TRUE(scan->getAnatomicalTarget().isNull());
    EXPECT_TRUE(scan->getLocalizer().isNull());
    EXPECT_TRUE(scan->getMetaInfo().isEmpty());
}

TEST(OCTScan, IsCreatedByNameHoweverOftenTheFactoryIsMade)
{
    EXPECT_TRUE(Data::getFactory().contains("OCTScan"));
    EXPECT_EQ(createOCTScanFactory(), 1);
    EXPECT_EQ(createOCTScanFactory(), 1);
    const DataPointer<Data> made(Data::getFactory().create("OCTScan"));
    ASSERT_FALSE(made.isNull());
    EXPECT_TRUE(made->isA("OCTScan"));
}

TEST(OCTScan, ItsPointerIsAMetaType)
{
    EXPECT_EQ(QMetaType::type("OCTScanPtr"), qMetaTypeId<OCTScanPtr>());
}

TEST(OCTScan, WithoutUriDoesNotLoad)
{
    const OCTScanPtr scan(new OCTScan);
    EXPECT_EQ(failure<kelp::Assertion>([&] { scan->doBinLoad(); }),
              place + "doBinLoad: no URI set!");
}

TEST(OCTScan, OfAnUnknownSchemeDoesNotLoad)
{
    const OCTScanPtr scan(new OCTScan);
    scan->setUri("OCTScanURI", kelp::URI("file++other:/a.xml"));
    EXPECT_EQ(failure<kelp::Assertion>([&] { scan->doBinLoad(); }),
              place + "doBinLoad: Could not get a decent decoder.");
    EXPECT_EQ(OCTDecoder::getOCTDecoder("other"), nullptr);
}

TEST(OCTScan, TellsWhyItCouldNotBeDecoded)
{
    OCTDecoder::getFactory().registerFactory("failing", std::make_shared<FailingDecoderFactory>());
    const OCTScanPtr scan(new OCTScan);
    scan->setUri("OCTScanURI", kelp::URI("file++failing:/a.xml"));
    const TraceCapture trace;
    EXPECT_EQ(failure<kelp::Assertion>([&] { scan->ensureLoaded(); }),
              place + "doBinLoad: Could not decode OCT with URIs file++failing:/a.xml");
    EXPECT_FALSE(scan->isLoaded());
    EXPECT_EQ(scan->getLoadProblem(), "The disk is on fire.");
    EXPECT_EQ(trace.lines(), QStringList{"The disk is on fire."});
}

TEST(OCTScan, PrintsWhatItLoads)
{
    TestScan contents = lineScan(3, 2, 2);
    contents.metaInfo.insert("Scan Id", "7");
    const OCTScanPtr scan = makeUnloadedTestScan(contents);
    const TraceCapture trace;
    scan->ensureLoaded();
    const QStringList wanted{"OCTScan meta info size: 1",      "OCTScan scan pattern: Volume",
                             "OCTScan anatomical target: OD",  "found 2",
                             "detecting type ob CScan: ",      "handling Volume or Single BScan",
                             "handling Volume or Single BScan"};
    EXPECT_EQ(trace.lines(), wanted);
}

TEST(OCTScan, LoadsOnceThroughEnsureLoaded)
{
    const OCTScanPtr scan = makeUnloadedTestScan(lineScan(3, 2, 2));
    scan->ensureLoaded();
    const QSharedPointer<BScan> bScan = scan->getBScan(0);
    scan->ensureLoaded();
    EXPECT_EQ(scan->getBScan(0), bScan);
    EXPECT_TRUE(scan->isLoaded());
    scan->doBinLoad();
    EXPECT_EQ(scan->getBScanCount(), 2);
    EXPECT_NE(scan->getBScan(0), bScan);
}

TEST(OCTScan, TakesOverEverythingThatTheDecoderRead)
{
    TestScan contents = lineScan(3, 2, 2);
    contents.metaInfo.insert("Scan Id", "7");
    contents.metaInfos = {{{"Quality", "30"}}, {{"Quality", "31"}}};
    contents.localizer = kelp::Image::create(kelp::MonoUInt8, {4, 4, 1});
    contents.localizerSpacing = {0.5, 0.25};
    const OCTScanPtr scan = makeTestScan(contents);
    EXPECT_EQ(scan->getMetaInfo().value("Scan Id").toString(), "7");
    EXPECT_EQ(scan->getBScan(1)->getMetaInfo().value("Quality").toString(), "31");
    EXPECT_EQ(scan->getBScan(1)->getAScanPosition(2), contents.positions.at(1).at(2));
    EXPECT_EQ(scan->getBScan(0)->getImage(), contents.images.at(0));
    EXPECT_EQ(scan->getLocalizer()->getImage(), contents.localizer);
    EXPECT_EQ(scan->getLocalizer()->getSpacing(), contents.localizerSpacing);
    EXPECT_EQ(scan->getAnatomicalTarget()->toString(), "OD");
}

TEST(OCTScan, MakesTheBScansOfItsPattern)
{
    for (const char* pattern : {"Volume", "Single BScan", "Star"}) {
        TestScan contents = lineScan(3, 2, 1);
        contents.pattern = pattern;
        const OCTScanPtr scan = makeTestScan(contents);
        EXPECT_EQ(scan->getScanPattern()->toString(), pattern);
        EXPECT_NE(dynamic_cast<BScanLine*>(scan->getBScan(0).data()), nullptr);
    }
    TestScan contents = lineScan(3, 2, 1);
    contents.pattern = "Circular BScan";
    contents.metaInfos = {{{"Quality", "30"}}};
    const TraceCapture trace;
    const OCTScanPtr scan = makeTestScan(contents);
    EXPECT_NE(dynamic_cast<BScanCircular*>(scan->getBScan(0).data()), nullptr);
    EXPECT_EQ(scan->getBScan(0)->getMetaInfo().value("Quality").toString(), "30");
    EXPECT_EQ(trace.lines().mid(5), (QStringList{"handling Circular BScan", "BScanCircular ctor"}));
}

TEST(OCTScan, OfAnUnknownPatternLoadsOnlyWithoutBScans)
{
    TestScan contents = lineScan(3, 2, 1);
    contents.pattern = "Spiral";
    const OCTScanPtr scan = makeUnloadedTestScan(contents);
    EXPECT_EQ(failure<kelp::NotImplemented>([&] { scan->doBinLoad(); }),
              place + "doBinLoad: OCT of type Unknown is not supported");
    EXPECT_FALSE(scan->isLoaded());

    TestScan empty;
    empty.pattern = "Spiral";
    const OCTScanPtr loaded = makeTestScan(empty);
    EXPECT_TRUE(loaded->isLoaded());
    EXPECT_EQ(loaded->getScanPattern()->toString(), "Unknown");
}

TEST(OCTScan, KeepsWhatItHadReadWhenABScanFails)
{
    TestScan contents = lineScan(3, 2, 3);
    contents.images[1].reset();
    contents.metaInfo.insert("Scan Id", "7");
    const OCTScanPtr scan = makeUnloadedTestScan(contents);
    EXPECT_EQ(failure<kelp::Assertion>([&] { scan->doBinLoad(); }),
              "OCTScan/src/data/BScan::kelp::oct::BScan::BScan: Image data is null.");
    EXPECT_FALSE(scan->isLoaded());
    EXPECT_EQ(scan->getBScanCount(), 1);
    EXPECT_EQ(scan->getMetaInfo().value("Scan Id").toString(), "7");
}

TEST(OCTScan, KnowsTheEyesByTheirText)
{
    for (const char* target : {"OS", "OD", "OU"}) {
        TestScan contents = lineScan(2, 2, 1);
        contents.target = target;
        EXPECT_EQ(makeTestScan(contents)->getAnatomicalTarget()->toString(), target);
    }
    for (const char* target : {"", "R", "Undefined"}) {
        TestScan contents = lineScan(2, 2, 1);
        contents.target = target;
        EXPECT_EQ(makeTestScan(contents)->getAnatomicalTarget()->toString(), "O_Unknown");
    }
}

TEST(OCTScan, BScansAreBoundsChecked)
{
    const OCTScanPtr scan = makeTestScan(lineScan(3, 2, 2));
    for (const unsigned index : {2u, static_cast<unsigned>(-1)}) {
        EXPECT_EQ(failure<kelp::Assertion>([&] { scan->getBScan(index); }),
                  place + "getBScan: index out of bounds");
    }
}

TEST(OCTScan, ImagesAreSharedOrReduced)
{
    const OCTScanPtr scan = makeTestScan(lineScan(4, 6, 2));
    ASSERT_EQ(scan->getBScanImages().size(), 2);
    EXPECT_EQ(scan->getBScanImages().at(1), scan->getBScan(1)->getImage());
    EXPECT_EQ(scan->getBScanImagesConst().at(1).data(), scan->getBScan(1)->getImage().data());
    const auto coarse = scan->getBScanImagesCoarse(0.5, 0.34);
    ASSERT_EQ(coarse.size(), 2);
    EXPECT_EQ(coarse.at(1)->getDimensions(), (kelp::Vector3<int>{2, 2, 1}));
}

} // namespace
