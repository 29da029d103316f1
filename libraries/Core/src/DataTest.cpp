#include "DataPointer.h"
#include "DataTreeNode.h"
#include "Patient.h"

#include <gtest/gtest.h>

namespace {

QStringList texts(const Data& data)
{
    QList<kelp::URI> uris;
    data.getUris(uris);
    QStringList result;
    for (const kelp::URI& uri : uris) {
        result.append(uri.toString());
    }
    return result;
}

TEST(Data, HasAUniqueGuid)
{
    const DataPointer<Data> first(new Data);
    const DataPointer<Data> second(new Data);
    EXPECT_FALSE(first->getGUID().isEmpty());
    EXPECT_NE(first->getGUID(), second->getGUID());
    EXPECT_EQ(DataTreeNode::makeIdValid(first->getGUID()), first->getGUID());
}

TEST(Data, GivesTheScansUriFirstAndNumberedOnesByNumber)
{
    const DataPointer<Data> item(new Data);
    for (const char* const key : {"SliceImage10", "SliceImage2", "Aaa", "SliceImage0", "Zzz",
                                  "OCTScanURI", "SliceImage9", "SliceImage", "SliceImage100"}) {
        ASSERT_EQ(item->setUri(key, kelp::URI(key)), CaError::nullError);
    }
    EXPECT_EQ(texts(*item),
              (QStringList{"OCTScanURI", "Aaa", "SliceImage", "SliceImage0", "SliceImage2",
                           "SliceImage9", "SliceImage10", "SliceImage100", "Zzz"}));
    EXPECT_EQ(QStringList(item->getUriKeys()), texts(*item));
}

TEST(Data, AUriIsReplacedByItsKeyAndAnEmptyKeyRefused)
{
    const DataPointer<Data> item(new Data);
    EXPECT_EQ(item->setUri("k", kelp::URI("a")), CaError::nullError);
    EXPECT_EQ(item->setUri("k", kelp::URI("b")), CaError::nullError);
    EXPECT_NE(item->setUri(QString(), kelp::URI("c")), CaError::nullError);
    EXPECT_EQ(texts(*item), QStringList{"b"});
    EXPECT_EQ(item->getUri("k").toString(), QString("b"));
    EXPECT_TRUE(item->getUri("missing").isEmpty());
    QList<kelp::URI> uris{kelp::URI("former")};
    item->getUris(uris);
    EXPECT_EQ(uris.size(), 1);
}

TEST(Data, ClassesAnswerForThemselvesAndTheirBases)
{
    const DataPointer<Study> study(new Study);
    const DataPointer<Patient> patient(new Patient);
    const DataPointer<ProcessData> result(new ProcessData);
    EXPECT_TRUE(study->isA("Study"));
    EXPECT_TRUE(study->isA("Data"));
    EXPECT_FALSE(study->isA("Patient"));
    EXPECT_TRUE(patient->isA("Patient"));
    EXPECT_TRUE(patient->isA("Data"));
    EXPECT_TRUE(result->isA("ProcessData"));
    EXPECT_FALSE(result->isA("Study"));
    EXPECT_EQ(study->getClassId(), Study::classId());
    EXPECT_EQ(patient->getClassId(), Patient::classId());
    EXPECT_EQ(result->getClassId(), ProcessData::classId());
}

TEST(Data, BulkDataAndPlainSavingSucceedByDefault)
{
    const DataPointer<Data> item(new Data);
    EXPECT_EQ(item->doBinSave(), CaError::nullError);
    EXPECT_EQ(item->doSave(), CaError::nullError);
    EXPECT_EQ(item->doLoad(), CaError::nullError);
    EXPECT_FALSE(item->hasChild("x"));
}

TEST(Data, SavingWithoutItemOrNodeIsAnError)
{
    DataSaveContext context;
    DataTreeNode node;
    const DataPointer<Data> item(new Data);
    EXPECT_NE(Data::saveToNode(nullptr, &node, context), CaError::nullError);
    EXPECT_NE(Data::saveToNode(item.data(), nullptr, context), CaError::nullError);
    EXPECT_EQ(Data::saveToNode(item.data(), &node, context), CaError::nullError);
    EXPECT_EQ(node.getType(), QString("Data"));
    EXPECT_TRUE(context.contains(item->getGUID()));
}

void countCalls(CaSubject*, void* argument, char const* name, void* listener)
{
    auto* const calls = static_cast<QStringList*>(listener);
    calls->append(QString("%1 %2").arg(name).arg(argument != nullptr));
}

TEST(Study, TakesItemsInOrderAndTellsItsObserversIfAsked)
{
    const DataPointer<Study> study(new Study);
    QStringList calls;
    study->attach(countCalls, &calls);
    const DataPointer<Data> first(new Data);
    const DataPointer<Data> second(new Data);
    EXPECT_EQ(study->addData(first.data(), "b", true), CaError::nullError);
    EXPECT_EQ(study->addData(second.data(), "a", false), CaError::nullError);
    EXPECT_EQ(study->addProcessData(new ProcessData, "c", true), CaError::nullError);
    EXPECT_EQ(calls, (QStringList{"addData 1", "addProcessData 1"}));
    EXPECT_EQ(first->getId(), QString("b"));
    QList<Data*> items;
    study->getAllData(items);
    EXPECT_EQ(items, (QList<Data*>{first.data(), second.data()}));
    study->getAllProcessData(items);
    EXPECT_EQ(items.size(), 1);
    EXPECT_TRUE(study->hasChild("a"));
    EXPECT_TRUE(study->hasChild("c"));
    EXPECT_FALSE(study->hasChild("d"));
}

TEST(Study, RefusesATakenIdAndWhatIsNoItem)
{
    const DataPointer<Study> study(new Study);
    EXPECT_EQ(study->addData(new Data, "a", false), CaError::nullError);
    const DataPointer<ProcessData> result(new ProcessData);
    result->setId("own");
    EXPECT_NE(study->addProcessData(result.data(), "a", false), CaError::nullError);
    EXPECT_EQ(result->getId(), QString("own"));
    EXPECT_NE(study->addData(nullptr, "b", false), CaError::nullError);
    EXPECT_NE(study->addData(result.data(), QString(), false), CaError::nullError);
    QList<Data*> items;
    study->getAllData(items);
    EXPECT_EQ(items.size(), 1);
}

TEST(Study, GivesItsItemsBack)
{
    const DataPointer<Study> study(new Study);
    EXPECT_EQ(study->addData(new Data, "a", false), CaError::nullError);
    EXPECT_EQ(study->addProcessData(new ProcessData, "b", false), CaError::nullError);
    EXPECT_NE(study->removeData("b"), CaError::nullError);
    EXPECT_EQ(study->removeProcessData("b"), CaError::nullError);
    EXPECT_NE(study->removeProcessData("b"), CaError::nullError);
    EXPECT_EQ(study->removeData("a"), CaError::nullError);
    EXPECT_FALSE(study->hasChild("a"));
}

TEST(Study, ReadsItsBodyOnceAtFirstUse)
{
    const DataPointer<Study> study(new Study);
    int calls = 0;
    study->setBodyLoader([&calls](Study& body) {
        ++calls;
        return body.addData(new Data, "a", false);
    });
    EXPECT_FALSE(study->isBodyLoaded());
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(study->hasChild("a"));
    QList<Data*> items;
    study->getAllData(items);
    EXPECT_EQ(items.size(), 1);
    EXPECT_EQ(calls, 1);
}

TEST(Study, KeepsTheErrorOfABodyThatCannotBeRead)
{
    const DataPointer<Study> study(new Study);
    int calls = 0;
    const CaError failure("E", "cannot be read", QString());
    study->setBodyLoader([&](Study&) {
        ++calls;
        return failure;
    });
    EXPECT_EQ(study->ensureLoaded(), failure);
    EXPECT_EQ(study->getLoadError(), failure);
    EXPECT_EQ(study->addData(new Data, "a", false), failure);
    EXPECT_EQ(study->addProcessData(new ProcessData, "a", false), failure);
    EXPECT_EQ(study->removeData("a"), failure);
    EXPECT_FALSE(study->hasChild("a"));
    EXPECT_EQ(calls, 1);
}

TEST(Patient, HoldsStudiesByTheirIds)
{
    const DataPointer<Patient> patient(new Patient);
    QStringList calls;
    patient->attach(countCalls, &calls);
    const DataPointer<Study> study(new Study);
    study->setId("DefaultStudy");
    EXPECT_EQ(patient->getStudy("DefaultStudy"), nullptr);
    EXPECT_EQ(patient->addStudy(study.data(), true), CaError::nullError);
    EXPECT_EQ(calls, QStringList{"addStudy 1"});
    EXPECT_EQ(patient->getStudy("DefaultStudy"), study.data());
    EXPECT_TRUE(patient->hasChild("DefaultStudy"));
    EXPECT_NE(patient->addStudy(study.data(), true), CaError::nullError);
    EXPECT_NE(patient->addStudy(nullptr, true), CaError::nullError);
    QList<Data*> studies;
    patient->getAllStudies(studies);
    EXPECT_EQ(studies, QList<Data*>{study.data()});
    EXPECT_EQ(patient->removeStudy("DefaultStudy"), CaError::nullError);
    EXPECT_NE(patient->removeStudy("DefaultStudy"), CaError::nullError);
}

TEST(Patient, AStudyIsRenamedToAnIdThatIsFree)
{
    const DataPointer<Patient> patient(new Patient);
    const DataPointer<Study> first(new Study);
    const DataPointer<Study> second(new Study);
    first->setId("A");
    second->setId("B");
    ASSERT_EQ(patient->addStudy(first.data(), false), CaError::nullError);
    ASSERT_EQ(patient->addStudy(second.data(), false), CaError::nullError);
    EXPECT_EQ(patient->renameStudy("A", "C", true), CaError::nullError);
    EXPECT_EQ(patient->getStudy("C"), first.data());
    EXPECT_EQ(patient->getStudy("A"), nullptr);
    EXPECT_EQ(patient->renameStudy("C", "C", true), CaError::nullError);
    EXPECT_NE(patient->renameStudy("C", "B", true), CaError::nullError);
    EXPECT_NE(patient->renameStudy("C", "", true), CaError::nullError);
    EXPECT_NE(patient->renameStudy("A", "D", true), CaError::nullError);
    EXPECT_EQ(first->getId(), QString("C"));
}

TEST(Study, AnItemIsRenamedToAnIdThatIsFree)
{
    const DataPointer<Study> study(new Study);
    const DataPointer<Data> scan(new Data);
    const DataPointer<ProcessData> result(new ProcessData);
    ASSERT_EQ(study->addData(scan.data(), "scan", false), CaError::nullError);
    ASSERT_EQ(study->addProcessData(result.data(), "result", false), CaError::nullError);
    EXPECT_EQ(study->renameItem("result", "better", true), CaError::nullError);
    EXPECT_EQ(study->renameItem("scan", "first", true), CaError::nullError);
    EXPECT_TRUE(study->hasChild("better"));
    EXPECT_TRUE(study->hasChild("first"));
    EXPECT_FALSE(study->hasChild("result"));
    EXPECT_EQ(study->renameItem("first", "first", true), CaError::nullError);
    EXPECT_NE(study->renameItem("first", "better", true), CaError::nullError);
    EXPECT_NE(study->renameItem("first", "", true), CaError::nullError);
    EXPECT_NE(study->renameItem("result", "other", true), CaError::nullError);
    EXPECT_EQ(scan->getId(), QString("first"));
    EXPECT_EQ(study->removeProcessData("better"), CaError::nullError);
}

TEST(Patient, DescribesItself)
{
    const DataPointer<Patient> patient(new Patient);
    patient->setName("Ada Lovelace");
    EXPECT_EQ(patient->toString(), QString("Ada Lovelace"));
    patient->setBirthDate(QDate(1950, 2, 3));
    EXPECT_EQ(patient->toString(),
              QString("Ada Lovelace ") + QDate(1950, 2, 3).toString(Qt::TextDate));
    EXPECT_EQ(patient->metaInformation().value("Name"), QVariant("Ada Lovelace"));
    EXPECT_EQ(patient->metaInformation().value("Birth Date"), QVariant(QDate(1950, 2, 3)));
    EXPECT_EQ(patient->metaInformation().value("Patient ID"),
              QVariant(patient->getGUID().left(8).toUpper()));
    EXPECT_NE(patient->save(nullptr), CaError::nullError);
    EXPECT_NE(patient->load(nullptr), CaError::nullError);
}

TEST(DataTreeNode, KeepsAttributesAndChildrenInTheOrderMade)
{
    DataTreeNode node("name", "Type");
    node.setAttribute("b", "1");
    node.setAttribute("a", "2");
    node.setAttribute("b", "3");
    EXPECT_EQ(node.getAttributes(), (QList<QPair<QString, QString>>{{"b", "3"}, {"a", "2"}}));
    EXPECT_TRUE(node.hasAttribute("a"));
    EXPECT_FALSE(node.hasAttribute("c"));
    EXPECT_TRUE(node.getAttribute("c").isEmpty());
    DataTreeNode* const first = node.createChild("x");
    DataTreeNode* const second = node.createChild("x");
    EXPECT_EQ(node.getChild("x"), first);
    EXPECT_EQ(node.getChildren(), (QList<DataTreeNode*>{first, second}));
    EXPECT_FALSE(node.hasChild("y"));
    EXPECT_EQ(node.getChild("y"), nullptr);
}

TEST(DataTreeNode, MakesIdsOfLettersDigitsAndThreeSigns)
{
    EXPECT_EQ(DataTreeNode::makeIdValid("Segment_2024.01.31-10:15"),
              QString("Segment_2024.01.31-10_15"));
    EXPECT_EQ(DataTreeNode::makeIdValid("a b/c\\d\ne"), QString("a_b_c_d_e"));
    EXPECT_EQ(DataTreeNode::makeIdValid(QString::fromUtf8("M\xc3\xbcller")),
              QString::fromUtf8("M\xc3\xbcller"));
    EXPECT_EQ(DataTreeNode::makeIdValid(QString()), QString());
}

} // namespace
