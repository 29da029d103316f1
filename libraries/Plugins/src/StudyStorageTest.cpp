#include "StoreTestSupport.h"

namespace {

using namespace storetest;

class StudyStorage : public ::testing::Test
{
protected:
    void SetUp() override { registerItems(); }

    static DataPointer<Study> load(DataTreeNode& node)
    {
        DataPointer<Study> study(new Study);
        DataLoadContext context;
        EXPECT_EQ(study->doLoad(&node, context).toString(), QString());
        return study;
    }

    static void save(Study& study, DataTreeNode& node)
    {
        DataSaveContext context;
        EXPECT_EQ(study.doSave(&node, context).toString(), QString());
    }

    static QList<Data*> results(Study& study)
    {
        QList<Data*> items;
        study.getAllProcessData(items);
        return items;
    }

    static QList<Data*> scans(Study& study)
    {
        QList<Data*> items;
        study.getAllData(items);
        return items;
    }

    static Data* scanOf(Data* result) { return dynamic_cast<Result&>(*result).scan.data(); }
};

/// How many nodes of the tree hold this item in full, and how many refer to it.
std::pair<int, int> countEntries(const DataTreeNode& node, const QString& guid)
{
    std::pair<int, int> count{0, 0};
    if (node.getAttribute("GUID") == guid) {
        (node.hasAttribute("Reference") ? count.second : count.first)++;
    }
    for (const DataTreeNode* const child : node.getChildren()) {
        const std::pair<int, int> below = countEntries(*child, guid);
        count.first += below.first;
        count.second += below.second;
    }
    return count;
}

TEST_F(StudyStorage, AnItemHeldTwiceIsWrittenOnceInFull)
{
    const DataPointer<Patient> patient = makePatient("A");
    Study& study = *patient->getStudy("DefaultStudy");
    DataTreeNode node;
    save(study, node);
    EXPECT_EQ(countEntries(node, scans(study).front()->getGUID()), std::make_pair(1, 1));
}

TEST_F(StudyStorage, ComesBackAsOneItemWhereTheReferenceStandsBeforeTheFullEntry)
{
    const DataPointer<Patient> patient = makePatient("A");
    DataTreeNode written;
    save(*patient->getStudy("DefaultStudy"), written);
    // The result's scan is the reference; it is moved into the section that is read first.
    DataTreeNode reordered;
    for (const QPair<QString, QString>& attribute : written.getAttributes()) {
        reordered.setAttribute(attribute.first, attribute.second);
    }
    DataTreeNode* const first = reordered.createChild("Data");
    written.getChild("ProcessData")->getChildren().front()->copyTo(*first->createChild("Item"));
    written.getChild("Data")->getChildren().front()->copyTo(*first->createChild("Item"));

    const DataPointer<Study> study = load(reordered);
    ASSERT_EQ(scans(*study).size(), 2);
    EXPECT_EQ(scanOf(scans(*study)[0]), scans(*study)[1]);
    EXPECT_EQ(scans(*study)[1]->getUri("OCTScanURI").codecScheme(), QString("hra"));
    EXPECT_TRUE(study->getItemErrors().isEmpty());
}

TEST_F(StudyStorage, AScanThatOnlyResultsHoldComesBackAsOne)
{
    const DataPointer<Patient> patient = makePatient("A");
    Study& written = *patient->getStudy("DefaultStudy");
    const DataPointer<Data> scan(scans(written).front());
    DataPointer<Result> second(new Result);
    second->scan = scan;
    ASSERT_EQ(written.addProcessData(second.data(), "Segment_2", false), CaError::nullError);
    ASSERT_EQ(written.removeData("5"), CaError::nullError);
    DataTreeNode node;
    save(written, node);
    const DataPointer<Study> study = load(node);
    ASSERT_EQ(results(*study).size(), 2);
    EXPECT_EQ(scanOf(results(*study)[0]), scanOf(results(*study)[1]));
    EXPECT_EQ(scanOf(results(*study)[0])->getGUID(), scan->getGUID());
}

TEST_F(StudyStorage, AnItemOfAnUnknownClassIsNamedAndSurvivesStoring)
{
    const DataPointer<Patient> patient = makePatient("A");
    DataTreeNode node;
    save(*patient->getStudy("DefaultStudy"), node);
    DataTreeNode* const foreign = node.getChild("ProcessData")->createChild("Item");
    foreign->setType("FromTheFuture");
    foreign->setAttribute("GUID", "abc");
    foreign->setAttribute("Id", "Future_1");
    foreign->createChild("Inner")->setAttribute("Text", "kept");

    const DataPointer<Study> study = load(node);
    EXPECT_EQ(scans(*study).size(), 1);
    EXPECT_EQ(results(*study).size(), 1);
    ASSERT_EQ(study->getItemErrors().size(), 1);
    EXPECT_TRUE(study->getItemErrors().front().toString().contains("\"FromTheFuture\""));
    EXPECT_TRUE(study->hasChild("Future_1"));
    EXPECT_NE(study->addData(new Scan, "Future_1", false), CaError::nullError);

    DataTreeNode again;
    save(*study, again);
    const DataTreeNode* const kept = again.getChild("ProcessData")->getChildren().back();
    EXPECT_EQ(kept->getType(), QString("FromTheFuture"));
    EXPECT_EQ(kept->getAttributes(), foreign->getAttributes());
    EXPECT_EQ(kept->getChild("Inner")->getAttribute("Text"), QString("kept"));
}

TEST_F(StudyStorage, ADamagedResultDoesNotTakeItsScanFromTheOthers)
{
    const DataPointer<Patient> patient = makePatient("A");
    Study& written = *patient->getStudy("DefaultStudy");
    DataPointer<Result> second(new Result);
    second->scan = DataPointer<Data>(scans(written).front());
    ASSERT_EQ(written.addProcessData(second.data(), "Segment_2", false), CaError::nullError);
    // The first result now holds the scan in full, and it is the one that cannot be read.
    ASSERT_EQ(written.removeData("5"), CaError::nullError);
    dynamic_cast<Result&>(*results(written).front()).payload = "damaged";
    DataTreeNode node;
    save(written, node);

    const DataPointer<Study> study = load(node);
    ASSERT_EQ(results(*study).size(), 1);
    ASSERT_NE(scanOf(results(*study).front()), nullptr);
    EXPECT_EQ(scanOf(results(*study).front())->getUri("OCTScanURI").codecScheme(), QString("hra"));
    ASSERT_EQ(study->getItemErrors().size(), 1);
    EXPECT_EQ(study->getItemErrors().front().getIdentifier(), QString("Damaged"));
}

TEST_F(StudyStorage, AnItemThatThrowsIsAnErrorLikeEveryOther)
{
    const DataPointer<Patient> patient = makePatient("A");
    Study& written = *patient->getStudy("DefaultStudy");
    auto& result = dynamic_cast<Result&>(*results(written).front());
    result.payload = "throws";
    DataTreeNode node;
    save(written, node);
    const DataPointer<Study> study = load(node);
    EXPECT_TRUE(results(*study).isEmpty());
    EXPECT_EQ(scans(*study).size(), 1);
    ASSERT_EQ(study->getItemErrors().size(), 1);
    EXPECT_TRUE(study->getItemErrors().front().toString().contains("null after loading"));

    result.payload = "throws on save";
    DataTreeNode again;
    DataSaveContext context;
    EXPECT_TRUE(written.doSave(&again, context).toString().contains("cannot be saved"));
}

TEST_F(StudyStorage, AnItemThatAnUnknownClassHoldsIsFoundInsideIt)
{
    const DataPointer<Patient> patient = makePatient("A");
    Study& written = *patient->getStudy("DefaultStudy");
    DataPointer<Result> second(new Result);
    second->scan = DataPointer<Data>(scans(written).front());
    ASSERT_EQ(written.addProcessData(second.data(), "Segment_2", false), CaError::nullError);
    ASSERT_EQ(written.removeData("5"), CaError::nullError);
    DataTreeNode node;
    save(written, node);
    node.getChild("ProcessData")->getChildren().front()->setType("FromTheFuture");

    const DataPointer<Study> study = load(node);
    ASSERT_EQ(results(*study).size(), 1);
    EXPECT_EQ(scanOf(results(*study).front())->getUri("OCTScanURI").codecScheme(), QString("hra"));
    EXPECT_EQ(study->getItemErrors().size(), 1);
}

TEST_F(StudyStorage, ADanglingReferenceIsNamed)
{
    const DataPointer<Patient> patient = makePatient("A");
    Study& written = *patient->getStudy("DefaultStudy");
    const QString guid = scans(written).front()->getGUID();
    DataTreeNode node;
    save(written, node);
    node.getChild("Data")->getChildren().front()->setAttribute("GUID", "other");
    const DataPointer<Study> study = load(node);
    ASSERT_EQ(study->getItemErrors().size(), 1);
    EXPECT_TRUE(study->getItemErrors().front().toString().contains(guid));
}

TEST_F(StudyStorage, LoadingASingleItemReportsWhatIsWrong)
{
    DataLoadContext context;
    CaError error;
    EXPECT_EQ(Data::loadFromNode(nullptr, context, error), nullptr);
    EXPECT_NE(error, CaError::nullError);
    DataTreeNode node("Item", "Nothing");
    EXPECT_EQ(Data::loadFromNode(&node, context, error), nullptr);
    EXPECT_EQ(error.getIdentifier(), QString("MissingGUID"));
    node.setAttribute("GUID", "g");
    EXPECT_EQ(Data::loadFromNode(&node, context, error), nullptr);
    EXPECT_TRUE(error.toString().contains("unknown class \"Nothing\""));
    node.setType("TestScan");
    const DataPointer<Data> item(Data::loadFromNode(&node, context, error));
    EXPECT_EQ(error, CaError::nullError);
    EXPECT_EQ(item->getGUID(), QString("g"));
    EXPECT_EQ(Data::loadFromNode(&node, context, error), item.data());
    node.setType("TestResult");
    EXPECT_EQ(Data::loadFromNode(&node, context, error), nullptr);
    EXPECT_EQ(error.getIdentifier(), QString("ClassMismatch"));
}

TEST_F(StudyStorage, AFailedItemLeavesTheContextClean)
{
    DataTreeNode node("Item", "TestResult");
    node.setAttribute("GUID", "g");
    node.setAttribute("Payload", "damaged");
    DataTreeNode* const scan = node.createChild("Scan");
    scan->setType("TestScan");
    scan->setAttribute("GUID", "s");
    DataLoadContext context;
    CaError error;
    EXPECT_EQ(Data::loadFromNode(&node, context, error), nullptr);
    EXPECT_EQ(error.getIdentifier(), QString("Damaged"));
    EXPECT_TRUE(context.isEmpty());
}

} // namespace
