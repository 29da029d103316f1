#include "OCTScanSegmentation.h"

#include "DataTreeNode.h"
#include "SegmentationTestTools.h"

#include <gmock/gmock.h>

using namespace kelp::oct;
using namespace kelp::oct::test;
using kelp::Assertion;
using testing::HasSubstr;

namespace {

constexpr char prefix[] = "OCTScan/src/data/OCTScanSegmentation::kelp::oct::OCTScanSegmentation::";

OCTScanSegPtr makeSegmentation(int aScans = 4, int bScans = 3)
{
    return new OCTScanSegmentation(makeTestScan(lineScan(aScans, 8, bScans)));
}

VolumeLayerPtr stairs(unsigned rows = 3, unsigned columns = 4)
{
    return makeSurface(rows, columns, [](unsigned r, unsigned c) { return 10 * r + c; });
}

QStringList namesOf(const OCTScanSegPtr& segmentation)
{
    QStringList names;
    for (const LayerNamePtr& name : segmentation->getAllLayerNames()) {
        names.append(name->getIdentifier());
    }
    return names;
}

std::vector<int> valuesOf(const VolumeLayerPtr& surface)
{
    return {surface->begin(), surface->end()};
}

/// A segmentation as it is after loading: text, no vector.
OCTScanSegPtr makeStored(const OCTScanPtr& scan, const QString& text)
{
    OCTScanSegPtr segmentation = new OCTScanSegmentation(scan);
    segmentation->setStoredData(text);
    return segmentation;
}

TEST(OCTScanSegmentation, IsEmptyForANewScan)
{
    const TraceCapture trace;
    const OCTScanPtr scan = makeUnloadedTestScan(lineScan(4, 8, 3));
    const OCTScanSegPtr segmentation = new OCTScanSegmentation(scan);
    EXPECT_TRUE(scan->isLoaded());
    EXPECT_EQ(segmentation->getOCT(), scan);
    EXPECT_EQ(segmentation->getNrOfBScans(), 3);
    EXPECT_TRUE(segmentation->getBScanSegmentation(2)->getAllLayers().isEmpty());
    EXPECT_TRUE(segmentation->getAllLayerNames().isEmpty());
    EXPECT_FALSE(segmentation->getFoveaPosition().isSet);
    EXPECT_EQ(segmentation->getFoveaPosition().position, CoordOnLocalizer(0.0, 0.0));
    EXPECT_EQ(segmentation->getMask()->getMaskMatrix()->rows, 3U);
    EXPECT_THAT(trace.text(), HasSubstr("OCTScanSegmentation::initializeFromBase64String: no fovea "
                                        "position saved\n"));
}

TEST(OCTScanSegmentation, RefusesANullScan)
{
    EXPECT_EQ(messageOf<Assertion>([] { OCTScanSegmentation{OCTScanPtr()}; }),
              QString(prefix) + "OCTScanSegmentation: Null OCT scan.");
    OCTScanSegmentation fresh;
    EXPECT_EQ(messageOf<Assertion>([&] { fresh.setEmptySegmentation(); }),
              QString(prefix) + "setEmptySegmentation: Null OCT scan.");
    EXPECT_EQ(messageOf<Assertion>([&] { fresh.getVolumeLayer(LayerNameILM::create()); }),
              QString(prefix) + "getVolumeLayer: Null OCT scan.");
    EXPECT_EQ(messageOf<Assertion>([&] { fresh.setVolumeLayer(stairs(), LayerNameILM::create()); }),
              QString(prefix) + "setVolumeLayer: Null OCT scan.");
}

TEST(OCTScanSegmentation, TellsItsClass)
{
    const OCTScanSegmentation segmentation;
    EXPECT_EQ(OCTScanSegmentation::typeName(), "OCTScanSegmentation");
    EXPECT_EQ(segmentation.getClassId(), "OCTScanSegmentation");
    EXPECT_TRUE(segmentation.isA("OCTScanSegmentation"));
    EXPECT_TRUE(segmentation.isA("ProcessData"));
    EXPECT_TRUE(segmentation.isA("Data"));
    EXPECT_FALSE(segmentation.isA("OCTScan"));
    EXPECT_EQ(QMetaType::type("OCTScanSegPtr"), qMetaTypeId<OCTScanSegPtr>());
}

TEST(OCTScanSegmentation, IsMadeByTheRegistryOfClasses)
{
    EXPECT_EQ(createOCTScanSegmentationFactory(), 1);
    EXPECT_EQ(createOCTScanSegmentationFactory(), 1);
    const DataPointer<Data> made = Data::getFactory().create("OCTScanSegmentation");
    ASSERT_FALSE(made.isNull());
    EXPECT_EQ(made->getClassId(), "OCTScanSegmentation");
}

TEST(OCTScanSegmentation, GivesBackTheSurfacesThatWereSet)
{
    const OCTScanSegPtr segmentation = makeSegmentation();
    const VolumeLayerPtr surface = stairs();
    EXPECT_TRUE(segmentation->setVolumeLayer(surface, LayerNameILM::create()));
    (*surface)(1, 1) = 99;
    const VolumeLayerPtr read = segmentation->getVolumeLayer(LayerNameILM::create());
    EXPECT_EQ(valuesOf(read), valuesOf(stairs()));
    (*read)(1, 1) = 98;
    EXPECT_EQ(valuesOf(segmentation->getVolumeLayer(LayerNameILM::create())), valuesOf(stairs()));
}

TEST(OCTScanSegmentation, ReplacesASurfaceOfEqualName)
{
    const OCTScanSegPtr segmentation = makeSegmentation();
    segmentation->setVolumeLayer(stairs(), LayerNameILM::create());
    segmentation->setVolumeLayer(stairs(), LayerNameBM::create());
    segmentation->setVolumeLayer(makeFlatSurface(3, 4, 6), LayerNameILM::create());
    EXPECT_EQ(namesOf(segmentation), QStringList({"BM", "ILM"}));
    EXPECT_EQ(valuesOf(segmentation->getVolumeLayer(LayerNameILM::create())),
              std::vector<int>(12, 6));
}

TEST(OCTScanSegmentation, ListsNamesByFirstAppearanceAndInstance)
{
    const OCTScanSegPtr segmentation = makeSegmentation();
    const LayerNamePtr bm = LayerNameBM::create();
    const auto add = [&](int bScan, const LayerNamePtr& name) {
        segmentation->getBScanSegmentation(bScan)->addLayer(
            QSharedPointer<BScanSegmentationLayer>::create(BScanSegmentationLayer::LayerData(4),
                                                           name));
    };
    add(1, bm);
    add(2, LayerNameILM::create());
    add(2, bm);
    EXPECT_EQ(namesOf(segmentation), QStringList({"BM", "ILM"}));
    // Another instance of an equal name counts as another one: instances are compared here.
    add(0, LayerNameBM::create());
    EXPECT_EQ(namesOf(segmentation), QStringList({"BM", "BM", "ILM"}));
}

TEST(OCTScanSegmentation, KeepsMaskAndFoveaWhenLayersAreEmptied)
{
    const OCTScanSegPtr segmentation = makeSegmentation();
    segmentation->setVolumeLayer(stairs(), LayerNameILM::create());
    segmentation->getMask()->addPolygon(makeRectangle(-1, -1, 1, 1));
    segmentation->setFoveaPosition({{1.5, 2.5}, true});
    segmentation->setEmptySegmentation();
    EXPECT_TRUE(segmentation->getAllLayerNames().isEmpty());
    EXPECT_EQ(segmentation->getNrOfBScans(), 3);
    EXPECT_EQ(segmentation->getMask()->getPolygons().size(), 1);
    EXPECT_TRUE(segmentation->getFoveaPosition().isSet);
}

TEST(OCTScanSegmentation, RefusesASurfaceOfAnotherRowCount)
{
    const OCTScanSegPtr segmentation = makeSegmentation();
    segmentation->setVolumeLayer(stairs(), LayerNameILM::create());
    const QString before = segmentation->toBase64String();
    EXPECT_EQ(messageOf<Assertion>(
                  [&] { segmentation->setVolumeLayer(stairs(2), LayerNameBM::create()); }),
              QString(prefix) +
                  "setVolumeLayer: Mismatch between rows (2) in surface and nr of BScans (3)");
    EXPECT_EQ(messageOf<Assertion>(
                  [&] { segmentation->setVolumeLayer(VolumeLayerPtr(), LayerNameBM::create()); }),
              QString(prefix) + "setVolumeLayer: Null surface volume layer.");
    EXPECT_EQ(messageOf<Assertion>([&] { segmentation->setVolumeLayer(stairs(), LayerNamePtr()); }),
              QString(prefix) + "setVolumeLayer: Null layer name.");
    EXPECT_EQ(segmentation->toBase64String(), before);
}

TEST(OCTScanSegmentation, SaysWhatIsWrongWithASurface)
{
    const OCTScanSegPtr segmentation = makeSegmentation();
    EXPECT_EQ(messageOf<Assertion>([&] { segmentation->getVolumeLayer(LayerNamePtr()); }),
              QString(prefix) + "getVolumeLayer: Null layer name.");
    EXPECT_THAT(messageOf<Assertion>([&] {
                    segmentation->getVolumeLayer(LayerNameGCL::create());
                }).toStdString(),
                HasSubstr("Coult not find layer with name GCL"));
    // Its columns are not compared when it is set.
    segmentation->setVolumeLayer(stairs(3, 9), LayerNameGCL::create());
    EXPECT_EQ(
        messageOf<Assertion>([&] { segmentation->getVolumeLayer(LayerNameGCL::create()); }),
        QString(prefix) +
            "getVolumeLayer: Mismatch between nr of Ascans (4) and segmentation layer size (9).");
}

TEST(OCTScanSegmentation, TellsABScanOutsideItself)
{
    const OCTScanSegPtr segmentation = makeSegmentation();
    const QString outside = QString(prefix) + "getBScanSegmentation: Cannot acces BScan "
                                              "segmentation, index out of bounds.";
    EXPECT_EQ(messageOf<Assertion>([&] { segmentation->getBScanSegmentation(3); }), outside);
    EXPECT_EQ(messageOf<Assertion>([&] { segmentation->getBScanSegmentation(-1); }), outside);
}

TEST(OCTScanSegmentation, WantsDecodingBeforeBScansAreRead)
{
    const QString text = makeSegmentation()->toBase64String();
    const OCTScanSegPtr stored = makeStored(makeTestScan(lineScan(4, 8, 3)), text);
    EXPECT_EQ(messageOf<Assertion>([&] { stored->getNrOfBScans(); }),
              QString(prefix) + "getNrOfBScans: BScan segmentation is null.");
    EXPECT_EQ(messageOf<Assertion>([&] { stored->getBScanSegmentation(0); }),
              QString(prefix) + "getBScanSegmentation: BScan segmentation is null.");
    EXPECT_EQ(messageOf<Assertion>([&] { stored->getVolumeLayer(LayerNameILM::create()); }),
              QString(prefix) + "getBScanSegmentation: BScan segmentation is null.");
    stored->ensureDecoded();
    EXPECT_EQ(stored->getNrOfBScans(), 3);
}

TEST(OCTScanSegmentation, DecodesByItselfWhereItIsWrittenOrAskedForTheFovea)
{
    const OCTScanPtr scan = makeTestScan(lineScan(4, 8, 3));
    const OCTScanSegPtr source = new OCTScanSegmentation(scan);
    source->setVolumeLayer(stairs(), LayerNameILM::create());
    source->setFoveaPosition({{1.5, 2.5}, true});
    const QString text = source->toBase64String();

    const OCTScanSegPtr asked = makeStored(scan, text);
    EXPECT_TRUE(asked->getFoveaPosition().isSet);
    EXPECT_EQ(asked->getFoveaPosition().position, CoordOnLocalizer(1.5, 2.5));
    EXPECT_EQ(asked->getNrOfBScans(), 3);

    const OCTScanSegPtr written = makeStored(scan, text);
    written->setVolumeLayer(stairs(), LayerNameBM::create());
    EXPECT_EQ(namesOf(written), QStringList({"ILM", "BM"}));

    const OCTScanSegPtr emptied = makeStored(scan, text);
    emptied->setEmptySegmentation();
    EXPECT_TRUE(emptied->getAllLayerNames().isEmpty());
    EXPECT_TRUE(emptied->getFoveaPosition().isSet);
}

TEST(OCTScanSegmentation, StartsAnewWhenTheStoredBScansAreOthers)
{
    const OCTScanSegPtr small = makeSegmentation(4, 2);
    small->setVolumeLayer(stairs(2), LayerNameBM::create());
    const OCTScanSegPtr stored =
        makeStored(makeTestScan(lineScan(4, 8, 3)), small->toBase64String());
    stored->ensureDecoded();
    EXPECT_EQ(stored->getNrOfBScans(), 2);
    EXPECT_THROW(stored->getVolumeLayer(LayerNameBM::create()), Assertion);
    stored->setVolumeLayer(stairs(), LayerNameILM::create());
    EXPECT_EQ(stored->getNrOfBScans(), 3);
    EXPECT_EQ(namesOf(stored), QStringList({"ILM"}));
}

TEST(OCTScanSegmentation, MakesItsMaskWhenThereIsNone)
{
    const OCTScanSegPtr stored =
        makeStored(makeTestScan(lineScan(4, 8, 3)), makeSegmentation()->toBase64String());
    const SegmentationMaskPtr mask = stored->getMask();
    ASSERT_FALSE(mask.isNull());
    EXPECT_EQ(stored->getMask(), mask);
}

TEST(OCTScanSegmentation, RebuildsTheMaskFromItsPolygons)
{
    const OCTScanPtr scan = makeTestScan(lineScan(4, 8, 3));
    const OCTScanSegPtr source = new OCTScanSegmentation(scan);
    source->getMask()->addPolygon(makeRectangle(-1, -1, 1, 0.05));
    const OCTScanSegPtr stored = makeStored(scan, source->toBase64String());
    stored->ensureDecoded();
    EXPECT_EQ(stored->getMask()->getPolygons(), source->getMask()->getPolygons());
    EXPECT_THAT(*stored->getMask()->getMaskRow(0), testing::Each(true));
    EXPECT_THAT(*stored->getMask()->getMaskRow(1), testing::Each(false));
}

/// A segmentation with its scan in a tree of its own.
class StoredTree : public testing::Test
{
protected:
    StoredTree()
    {
        m_segmentation->setVolumeLayer(stairs(), LayerNameILM::create());
        m_segmentation->setFoveaPosition({{1.5, -2.5}, true});
    }

    void save()
    {
        DataSaveContext context;
        ASSERT_EQ(Data::saveToNode(m_segmentation.data(), &m_node, context), CaError::nullError);
    }

    DataPointer<Data> load(CaError& error)
    {
        DataLoadContext context;
        return Data::loadFromNode(&m_node, context, error);
    }

    OCTScanSegPtr m_segmentation = makeSegmentation();
    DataTreeNode m_node{"Segmentation"};
};

TEST_F(StoredTree, HoldsVersionDataAndScan)
{
    const TraceCapture trace;
    save();
    EXPECT_EQ(m_node.getType(), "OCTScanSegmentation");
    EXPECT_EQ(m_node.getAttribute("kelp::oct::Segmentation::DataVersion"), "1");
    EXPECT_EQ(m_node.getAttribute("Data"), m_segmentation->toBase64String());
    ASSERT_TRUE(m_node.hasChild("OCTScan"));
    EXPECT_EQ(m_node.getChild("OCTScan")->getType(), "OCTScan");
    EXPECT_THAT(trace.text(), HasSubstr("OCTScanSegmentation::doSave\ndone saving base\n"));
    EXPECT_THAT(trace.text(), HasSubstr("\ndone\n"));
}

TEST_F(StoredTree, HasNoScanChildWithoutAScan)
{
    m_segmentation = new OCTScanSegmentation;
    save();
    EXPECT_FALSE(m_node.hasChild("OCTScan"));
    EXPECT_EQ(m_node.getAttribute("Data"), QByteArray(8, '\0').toBase64());
}

TEST_F(StoredTree, GivesTheSegmentationBack)
{
    save();
    CaError error;
    const DataPointer<Data> item = load(error);
    ASSERT_EQ(error, CaError::nullError);
    const OCTScanSegPtr loaded = dynamic_cast<OCTScanSegmentation*>(item.data());
    ASSERT_FALSE(loaded.isNull());
    EXPECT_EQ(loaded->getGUID(), m_segmentation->getGUID());
    EXPECT_EQ(loaded->getOCT()->getGUID(), m_segmentation->getOCT()->getGUID());
    EXPECT_THROW(loaded->getNrOfBScans(), Assertion) << "decoded before its first use";
    loaded->ensureDecoded();
    EXPECT_EQ(valuesOf(loaded->getVolumeLayer(LayerNameILM::create())), valuesOf(stairs()));
    EXPECT_EQ(loaded->getFoveaPosition().position, CoordOnLocalizer(1.5, -2.5));
}

TEST_F(StoredTree, KeepsTheTextOfAnUndecodedSegmentation)
{
    save();
    // Line breaks are not what the writer makes, but they decode.
    const QString odd = m_node.getAttribute("Data").insert(8, "\n ");
    m_node.setAttribute("Data", odd);
    CaError error;
    const DataPointer<Data> item = load(error);
    ASSERT_FALSE(item.isNull());
    DataTreeNode again;
    DataSaveContext context;
    ASSERT_EQ(Data::saveToNode(item.data(), &again, context), CaError::nullError);
    EXPECT_EQ(again.getAttribute("Data"), odd);

    const OCTScanSegPtr loaded = dynamic_cast<OCTScanSegmentation*>(item.data());
    loaded->ensureDecoded();
    EXPECT_EQ(loaded->toBase64String(), m_segmentation->toBase64String());
}

TEST_F(StoredTree, RefusesAnEmptyText)
{
    save();
    m_node.setAttribute("Data", QString());
    OCTScanSegPtr loaded = new OCTScanSegmentation;
    DataLoadContext context;
    const CaError error = loaded->doLoad(&m_node, context);
    EXPECT_EQ(error, CaError("ID0", "Data attribute must not be empty", QString()));
    EXPECT_TRUE(loaded->getOCT().isNull());
}

TEST_F(StoredTree, ReadsNothingFromANodeOfAnotherType)
{
    save();
    m_node.setType("SomethingElse");
    OCTScanSegPtr loaded = new OCTScanSegmentation;
    DataLoadContext context;
    EXPECT_EQ(loaded->doLoad(&m_node, context), CaError::nullError);
    EXPECT_TRUE(loaded->getOCT().isNull());
    EXPECT_EQ(loaded->toBase64String(), QString(QByteArray(8, '\0').toBase64()));
}

TEST_F(StoredTree, TellsAScanThatCannotBeLoaded)
{
    save();
    m_node.getChild("OCTScan")->setType("Study");
    OCTScanSegPtr loaded = new OCTScanSegmentation;
    DataLoadContext context;
    EXPECT_EQ(messageOf<Assertion>([&] { loaded->doLoad(&m_node, context); }),
              QString(prefix) + "doLoad: OCT scan is null after loading.");
}

TEST_F(StoredTree, DoesNotLookAtTheVersion)
{
    save();
    m_node.setAttribute("kelp::oct::Segmentation::DataVersion", "77");
    CaError error;
    const DataPointer<Data> item = load(error);
    ASSERT_FALSE(item.isNull());
    dynamic_cast<OCTScanSegmentation&>(*item).ensureDecoded();
}

} // namespace
