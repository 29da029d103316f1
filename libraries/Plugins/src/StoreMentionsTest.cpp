#include "StoreTestSupport.h"

#include "StoreMentions.h"

namespace {

using namespace storetest;

class StoreMentionsTest : public StoreFixture
{
protected:
    QSet<QString> mentioned(const QStringList& words)
    {
        QSet<QString> found;
        EXPECT_EQ(DataIOManager::findMentions(words, found).toString(), QString());
        return found;
    }
};

TEST_F(StoreMentionsTest, WordsOfStoredItemsAreFoundWithoutLoadingAStudy)
{
    const DataPointer<Patient> patient = makePatient("Ada");
    auto* const study = patient->getStudy("DefaultStudy");
    const DataPointer<Scan> scan(new Scan);
    scan->setUri("OCTScanURI", kelp::URI("file++hra:/s/binary/HRA_XML_1_1/e.xml?seriesId=5"));
    scan->setUri("SliceImage0", kelp::URI("file++dummy:\\s\\binary\\HRA_XML_1_1\\a-1.tif"));
    ASSERT_EQ(study->addData(scan.data(), "6", false), CaError::nullError);
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    reopen();
    EXPECT_EQ(mentioned({"HRA_XML_1_1", "a-1.tif", "e.xml", "b.tif"}),
              (QSet<QString>{"HRA_XML_1_1", "a-1.tif", "e.xml"}));
    EXPECT_FALSE(firstStudy()->isBodyLoaded());
}

TEST_F(StoreMentionsTest, APartOfALongerWordIsNoMention)
{
    writeFile(m_folder + "/studies/any.xml", "/HRA_XML_1_10/ba-1.tif a-1.tiff");
    EXPECT_EQ(mentioned({"HRA_XML_1_1", "a-1.tif"}), QSet<QString>());
    writeFile(m_folder + "/studies/other.xml", "x HRA_XML_1_10 HRA_XML_1_1");
    EXPECT_EQ(mentioned({"HRA_XML_1_1", "a-1.tif"}), QSet<QString>{"HRA_XML_1_1"});
}

TEST_F(StoreMentionsTest, DamagedStudiesCountToo)
{
    writeFile(m_folder + "/studies/damaged.xml", "<tree HRA_XML_1_1/");
    EXPECT_EQ(mentioned({"HRA_XML_1_1"}), QSet<QString>{"HRA_XML_1_1"});
}

TEST_F(StoreMentionsTest, AFolderThatIsGoneIsAnErrorAndNotAnAbsence)
{
    ASSERT_TRUE(QDir(m_folder + "/studies").removeRecursively());
    QSet<QString> found;
    EXPECT_NE(DataIOManager::findMentions({"a"}, found), CaError::nullError);
    DataIOManager::closeStore();
    EXPECT_NE(DataIOManager::findMentions({"a"}, found), CaError::nullError);
}

} // namespace
