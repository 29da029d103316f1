#include "ExchangeTestSupport.h"

#include <QRegularExpression>

namespace {

using namespace exchangetest;
using namespace storetest;

class PatientExport : public ExchangeFixture
{
};

DataTreeNode& treeOf(const QString& path, DataTreeNode& root)
{
    EXPECT_EQ(XMLDataTree::read(readFile(path), root), CaError::nullError);
    return root;
}

TEST_F(PatientExport, WritesAFolderNamedExportAndDigitsAndNothingElse)
{
    storePatient("Ann");
    const QString first = exportAll();
    const QString second = exportAll();
    EXPECT_NE(first, second);
    const QRegularExpression form("^Export__[0-9]+$");
    EXPECT_EQ(entriesOf(stick()).size(), 2);
    for (const QString& name : entriesOf(stick())) {
        EXPECT_TRUE(form.match(name).hasMatch()) << name.toStdString();
        EXPECT_TRUE(kelp::exchange::isExportFolder(stick() + '/' + name));
    }
    EXPECT_FALSE(kelp::exchange::isExportFolder(stick()));
}

TEST_F(PatientExport, TreesPointAtTheCopiesRelativeToTheFolder)
{
    const DataPointer<Patient> patient = storePatient("Ann");
    const QString folder = exportAll();
    const Study& study = *patient->getStudy("DefaultStudy");
    DataTreeNode body;
    treeOf(folder + "/studies/" + study.getGUID() + ".xml", body);
    QStringList uris;
    std::function<void(const DataTreeNode&)> collect = [&](const DataTreeNode& node) {
        for (const auto& [name, value] : node.getAttributes()) {
            if (isUriAttribute(name)) {
                uris.append(value);
            }
        }
        for (const DataTreeNode* const child : node.getChildren()) {
            collect(*child);
        }
    };
    collect(body);
    const QString place = "files/" + patient->getGUID() + "/HRA_XML_Ann";
    EXPECT_EQ(uris, (QStringList{"file++hra:" + place + "/e.xml?seriesId=5",
                                 "file++dummy:" + QString(place + "/b0.png").replace('/', '\\'),
                                 "file++dummy:" + QString(place + "/b1.png").replace('/', '\\')}));
    EXPECT_EQ(readFile(folder + '/' + place + "/b1.png"), QByteArray("Ann has b1.png"));
}

TEST_F(PatientExport, LeavesTheStoreAndItsObjectsAsTheyAre)
{
    const DataPointer<Patient> patient = storePatient("Ann");
    const auto filesBefore = filesOf(onlyScanOf(*patient));
    const auto storeBefore = contentOf(DataIOManager::storeFolder());
    exportAll();
    EXPECT_EQ(filesOf(onlyScanOf(*patient)), filesBefore);
    EXPECT_EQ(contentOf(DataIOManager::storeFolder()), storeBefore);
}

TEST_F(PatientExport, CarriesFilesFromOutsideTheStoreAndFoldersOfTheSameName)
{
    const DataPointer<Patient> patient = storePatientWithFiles("Ann", path("camera/scans"));
    QDir().mkpath(path("other/scans"));
    writeFile(path("other/scans/e.xml"), "another");
    onlyScanOf(*patient).setUri("SliceImage2",
                                kelp::URI("file++dummy:" + path("other/scans/e.xml")));
    const Report report = exportPatients({patient}, stick(), {});
    EXPECT_EQ(report.problems, QStringList());
    EXPECT_EQ(report.files, 4);
    const QString place = report.folder + "/files/" + patient->getGUID();
    QList<QByteArray> contents;
    for (const QString& folder : entriesOf(place)) {
        contents.append(readFile(place + '/' + folder + "/e.xml"));
    }
    EXPECT_EQ(contents.size(), 2);
    EXPECT_TRUE(contents.contains("another"));
    EXPECT_TRUE(contents.contains("Ann has e.xml"));
}

TEST_F(PatientExport, CountsEachFileOnceAndSaysWhatItWrote)
{
    const DataPointer<Patient> patient = storePatient("Ann");
    onlyScanOf(*patient).setUri("SliceImage2", onlyScanOf(*patient).getUri("SliceImage1"));
    const Report report = exportPatients({patient}, stick(), {});
    EXPECT_EQ(report.files, 3);
    EXPECT_EQ(report.bytes, 13 + 14 + 14);
    EXPECT_EQ(report.carried, QStringList("Ann"));
    EXPECT_EQ(report.summary(), "Exported 1 patient with 3 files (41 bytes) to\n" + report.folder);
}

TEST_F(PatientExport, AScanWithoutItsImagesIsExportedWithWhatIsThereAndSaysSo)
{
    const DataPointer<Patient> patient = storePatient("Ann");
    const QString missing = binary() + "/HRA_XML_Ann/b0.png";
    QFile::remove(missing);
    // A folder in place of a file cannot be read either.
    const QString folder = binary() + "/HRA_XML_Ann/b1.png";
    QFile::remove(folder);
    QDir().mkpath(folder);
    const Report report = exportPatients({patient}, stick(), {});
    EXPECT_EQ(report.carried, QStringList("Ann"));
    EXPECT_EQ(report.files, 1);
    ASSERT_EQ(report.problems.size(), 2);
    EXPECT_TRUE(report.problems[0].contains("Ann") && report.problems[0].contains(missing));
    EXPECT_TRUE(report.problems[1].contains(folder));
    EXPECT_TRUE(report.summary().contains(report.problems[0]));
    const Manifest manifest = Manifest::read(report.folder);
    const QString place = "files/" + patient->getGUID() + "/HRA_XML_Ann/";
    EXPECT_TRUE(manifest.isMissing(place + "b0.png"));
    EXPECT_TRUE(manifest.isMissing(place + "b1.png"));
    EXPECT_FALSE(manifest.isMissing(place + "e.xml"));
}

TEST_F(PatientExport, APatientWhoseStudyCannotBeReadStaysBehindAndTheOthersGo)
{
    const QString damaged = studyFile(path("here"), *storePatient("Ann")->getStudy("DefaultStudy"));
    storePatient("Bob");
    DataIOManager::closeStore();
    writeFile(damaged, "<tesseraTree");
    open("here");
    const Report report = exportPatients(allPatients(), stick(), {});
    EXPECT_EQ(report.carried, QStringList("Bob"));
    ASSERT_EQ(report.problems.size(), 1);
    EXPECT_TRUE(report.problems[0].startsWith("Ann was not exported: "));
    EXPECT_TRUE(report.problems[0].contains(damaged));
    EXPECT_EQ(Manifest::read(report.folder).getPatients().size(), 1);
}

TEST_F(PatientExport, WithoutAnyPatientLeavesNoFolder)
{
    const Report report = exportPatients({}, stick(), {});
    EXPECT_EQ(report.folder, QString());
    EXPECT_EQ(report.summary(), QString("Nothing was exported."));
    EXPECT_EQ(entriesOf(stick()), QStringList());
}

TEST_F(PatientExport, CarriesChangesThatAreNotStoredYet)
{
    const DataPointer<Patient> patient = storePatient("Ann");
    patient->setRemark("changed");
    patient->getStudy("DefaultStudy")->addData(new Scan, "new", false);
    const QString folder = exportAll();
    open("there");
    importPatients(folder, {}, {});
    ASSERT_EQ(allPatients().size(), 1);
    EXPECT_EQ(allPatients().front()->getRemark(), QString("changed"));
    EXPECT_TRUE(allPatients().front()->getStudy("DefaultStudy")->hasChild("new"));
}

TEST_F(PatientExport, CancelledAtAnyStepItLeavesNothingBehind)
{
    storePatient("Ann");
    storePatient("Bob");
    int steps = 0;
    const kelp::exchange::Progress count = [&steps](int done, int all, const QString& what) {
        EXPECT_LE(done, all);
        EXPECT_FALSE(what.isEmpty());
        ++steps;
        return true;
    };
    QDir(exportPatients(allPatients(), stick(), count).folder).removeRecursively();
    EXPECT_GE(steps, 8) << "each patient and each file";
    for (int last = 0; last < steps; ++last) {
        int left = last;
        const Report report = exportPatients(
            allPatients(), stick(), [&left](int, int, const QString&) { return left-- > 0; });
        EXPECT_TRUE(report.cancelled) << last;
        EXPECT_EQ(report.folder, QString());
        EXPECT_EQ(report.carried, QStringList());
        EXPECT_EQ(entriesOf(stick()), QStringList()) << last;
        EXPECT_TRUE(report.summary().contains("Cancelled"));
    }
}

TEST_F(PatientExport, TheProgressGrowsToItsEnd)
{
    storePatient("Ann");
    storePatient("Bob");
    int former = -1;
    int end = 0;
    exportPatients(allPatients(), stick(), [&](int done, int all, const QString&) {
        EXPECT_GE(done, former);
        former = done;
        end = all;
        return true;
    });
    EXPECT_EQ(former, end);
}

TEST_F(PatientExport, SaysWhyItCannotWriteThere)
{
    storePatient("Ann");
    writeFile(path("file"), "no folder");
    for (const QString& destination : {path("file"), path("gone"), QString()}) {
        try {
            exportPatients(allPatients(), destination, {});
            ADD_FAILURE() << destination.toStdString();
        } catch (const kelp::IOFailure& failure) {
            EXPECT_TRUE(failure.getMessage().contains(destination)) << failure.what();
        }
    }
    EXPECT_EQ(readFile(path("file")), QByteArray("no folder"));
}

} // namespace
