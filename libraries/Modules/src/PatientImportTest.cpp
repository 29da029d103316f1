#include "ExchangeTestSupport.h"

#include <QCryptographicHash>

namespace {

using namespace exchangetest;
using namespace storetest;

/// Imports "there" what was exported from "here".
class PatientImport : public ExchangeFixture
{
protected:
    QString exportPatientsNamed(const QStringList& names)
    {
        for (const QString& name : names) {
            storePatient(name);
        }
        const QString folder = exportAll();
        open("there");
        return folder;
    }

    /// The damaged export gives this patient's name and the reason, and leaves nothing.
    void expectRefused(const QString& folder, const QString& reason)
    {
        const Report report = importPatients(folder, {}, {});
        EXPECT_EQ(report.carried, QStringList());
        ASSERT_EQ(report.problems.size(), 1);
        EXPECT_TRUE(report.problems[0].startsWith("Ann was not imported. "))
            << report.problems[0].toStdString();
        EXPECT_TRUE(report.problems[0].contains(reason)) << report.problems[0].toStdString();
        EXPECT_TRUE(allPatients().isEmpty());
        expectEmpty(DataIOManager::storeFolder());
    }

    static QString onlyFile(const QString& folder)
    {
        const QStringList entries = entriesOf(folder);
        EXPECT_EQ(entries.size(), 1);
        return folder + '/' + entries.value(0);
    }

    static QString imageIn(const QString& folder)
    {
        return onlyFile(onlyFile(folder + "/files")) + "/b1.png";
    }

    void changeManifest(const QString& folder, const QByteArray& from, const QByteArray& to)
    {
        const QString file = folder + "/manifest.xml";
        QByteArray text = readFile(file);
        ASSERT_TRUE(text.contains(from));
        writeFile(file, text.replace(from, to));
    }

    static QByteArray digestOf(const QByteArray& content)
    {
        return QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex();
    }
};

TEST_F(PatientImport, GivesTheSamePatientWithFilesBelowTheStore)
{
    const DataPointer<Patient> source = storePatient("Ann");
    source->setSex("F");
    source->setRemark(QString::fromUtf8("tall \xc3\xbc \n"));
    const QString folder = exportAll();
    const QString guid = source->getGUID();
    const QString studyGuid = source->getStudy("DefaultStudy")->getGUID();
    open("there");
    // The computer that exported is far away.
    ASSERT_TRUE(QDir(path("here")).removeRecursively());
    const QString elsewhere = path("another mount");
    ASSERT_TRUE(QDir().rename(folder, elsewhere));
    const Report report = importPatients(elsewhere, {}, {});
    EXPECT_EQ(report.problems, QStringList());
    EXPECT_EQ(report.carried, QStringList("Ann"));
    EXPECT_EQ(report.files, 3);
    EXPECT_EQ(report.summary(), QString("Imported 1 patient with 3 files (41 bytes)."));

    // As another run of the program sees it.
    open("here");
    open("there");
    ASSERT_EQ(allPatients().size(), 1);
    Patient& patient = *allPatients().front();
    EXPECT_EQ(patient.getGUID(), guid);
    EXPECT_EQ(patient.getId(), QString("Ann"));
    EXPECT_EQ(patient.getName(), QString("Ann"));
    EXPECT_EQ(patient.getBirthDate(), QDate(1950, 2, 3));
    EXPECT_EQ(patient.getSex(), QString("F"));
    EXPECT_EQ(patient.getRemark(), QString::fromUtf8("tall \xc3\xbc \n"));
    Study& study = *patient.getStudy("DefaultStudy");
    EXPECT_EQ(study.getGUID(), studyGuid);
    EXPECT_EQ(study.getInstitution(), QString("Clinic"));
    QList<Data*> results;
    study.getAllProcessData(results);
    ASSERT_EQ(results.size(), 1);
    Data& scan = onlyScanOf(patient);
    EXPECT_EQ(static_cast<Result*>(results.front())->payload, QString("AAAA"));
    EXPECT_EQ(static_cast<Result*>(results.front())->scan.data(), &scan);

    const QString place = binary() + "/HRA_XML_Ann";
    EXPECT_EQ(scan.getUri("OCTScanURI").toString(), "file++hra:" + place + "/e.xml?seriesId=5");
    EXPECT_EQ(scan.getUri("SliceImage1").toString(),
              "file++dummy:" + QString(place + "/b1.png").replace('/', '\\'));
    const auto files = filesOf(scan);
    EXPECT_EQ(readFile(files["OCTScanURI"]), QByteArray("Ann has e.xml"));
    EXPECT_EQ(readFile(files["SliceImage0"]), QByteArray("Ann has b0.png"));
    EXPECT_EQ(readFile(files["SliceImage1"]), QByteArray("Ann has b1.png"));
}

TEST_F(PatientImport, KeepsItemsThatThisProgramCannotRead)
{
    const DataPointer<Patient> source = storePatient("Ann");
    QList<Data*> results;
    source->getStudy("DefaultStudy")->getAllProcessData(results);
    static_cast<Result*>(results.front())->payload = "damaged";
    ASSERT_EQ(DataIOManager::storePatient(source), CaError::nullError);
    const QString file = "/studies/" + source->getStudy("DefaultStudy")->getGUID() + ".xml";
    const QString folder = exportAll();
    open("there");
    importPatients(folder, {}, {});
    EXPECT_TRUE(readFile(path("there") + file).contains("damaged"));
    EXPECT_TRUE(allPatients().front()->getStudy("DefaultStudy")->hasChild("Segment_1"));
    EXPECT_EQ(allPatients().front()->getStudy("DefaultStudy")->getItemErrors().size(), 1);
}

TEST_F(PatientImport, CarriesFilesOfAnyName)
{
    const QString folder = path(QString::fromUtf8("50% s\xc3\xbcre? #1%41"));
    const DataPointer<Patient> source = storetest::makePatient("Ann");
    QDir().mkpath(folder);
    writeFile(folder + "/a b%41?.xml", "odd");
    onlyScanOf(*source).setUri("OCTScanURI",
                               kelp::URI::compose("hra", folder + "/a b%41?.xml", "seriesId", "5"));
    ASSERT_EQ(DataIOManager::storePatient(source), CaError::nullError);
    const QString exported = exportAll();
    open("there");
    EXPECT_EQ(importPatients(exported, {}, {}).problems, QStringList());
    const kelp::URI uri = onlyScanOf(*allPatients().front()).getUri("OCTScanURI");
    EXPECT_TRUE(uri.path().endsWith("/a b%41?.xml"));
    EXPECT_EQ(uri.queryItem("seriesId"), QString("5"));
    EXPECT_EQ(readFile(uri.path()), QByteArray("odd"));
}

TEST_F(PatientImport, PutsFilesBesideThoseThatStandThereAlready)
{
    const QString folder = exportPatientsNamed({"Ann"});
    QDir().mkpath(binary() + "/HRA_XML_Ann");
    writeFile(binary() + "/HRA_XML_Ann/b1.png", "of another scan");
    EXPECT_EQ(importPatients(folder, {}, {}).problems, QStringList());
    EXPECT_EQ(readFile(binary() + "/HRA_XML_Ann/b1.png"), QByteArray("of another scan"));
    EXPECT_EQ(readFile(filesOf(onlyScanOf(*allPatients().front()))["SliceImage1"]),
              QByteArray("Ann has b1.png"));
}

TEST_F(PatientImport, ReplacesNothingWithoutConsent)
{
    const QString folder = exportPatientsNamed({"Ann", "Bob"});
    importPatients(folder, {}, {});
    const auto before = contentOf(DataIOManager::storeFolder());
    QStringList asked;
    const Report report = importPatients(folder, {}, [&asked](const Patient& present) {
        asked.append(present.getName());
        return Present::Keep;
    });
    EXPECT_EQ(asked, (QStringList{"Ann", "Bob"}));
    EXPECT_EQ(report.present, (QStringList{"Ann", "Bob"}));
    EXPECT_EQ(report.carried, QStringList());
    EXPECT_EQ(importPatients(folder, {}, {}).present.size(), 2) << "nobody to ask";
    EXPECT_EQ(contentOf(DataIOManager::storeFolder()), before);
    EXPECT_TRUE(report.summary().contains("There already and left unchanged: Ann, Bob"));
}

TEST_F(PatientImport, WithConsentTheListsOwnPatientTakesTheExportedContent)
{
    const QString folder = exportPatientsNamed({"Ann"});
    importPatients(folder, {}, {});
    const DataPointer<Patient> present = allPatients().front();
    present->setRemark("changed since");
    present->getStudy("DefaultStudy")->addData(new Scan, "added since", false);
    ASSERT_EQ(DataIOManager::storePatient(present), CaError::nullError);
    const Report report =
        importPatients(folder, {}, [](const Patient&) { return Present::Replace; });
    EXPECT_EQ(report.replaced, QStringList("Ann"));
    EXPECT_EQ(report.carried, QStringList());
    ASSERT_EQ(allPatients().size(), 1);
    EXPECT_EQ(allPatients().front(), present);
    EXPECT_EQ(present->getRemark(), QString());
    EXPECT_FALSE(present->getStudy("DefaultStudy")->hasChild("added since"));
    EXPECT_EQ(readFile(filesOf(onlyScanOf(*present))["SliceImage1"]), QByteArray("Ann has b1.png"));
}

TEST_F(PatientImport, CancelledAtAnyStepItLeavesWholePatientsOnly)
{
    const QString folder = exportPatientsNamed({"Ann", "Bob"});
    int steps = 0;
    importPatients(folder,
                   [&steps](int, int, const QString&) {
                       ++steps;
                       return true;
                   },
                   {});
    for (int last = 0; last < steps; ++last) {
        const QString store = QString("there%1").arg(last);
        open(store);
        int left = last;
        const Report report =
            importPatients(folder, [&left](int, int, const QString&) { return left-- > 0; }, {});
        EXPECT_TRUE(report.cancelled) << last;
        EXPECT_EQ(allPatients().size(), report.carried.size()) << last;
        EXPECT_EQ(entriesOf(binary()).size(), report.carried.size()) << last;
        EXPECT_EQ(entriesOf(path(store) + "/studies").size(), report.carried.size());
    }
}

TEST_F(PatientImport, NoticesACopyThatWasCutShort)
{
    const QString folder = exportPatientsNamed({"Ann"});
    QFile image(imageIn(folder));
    ASSERT_TRUE(image.resize(image.size() - 1));
    expectRefused(folder, image.fileName());
}

TEST_F(PatientImport, NoticesAByteThatChanged)
{
    const QString folder = exportPatientsNamed({"Ann"});
    const QString image = imageIn(folder);
    writeFile(image, "Ann has b2.png");
    expectRefused(folder, image);
}

TEST_F(PatientImport, NoticesAFileThatIsGoneOrAFolderInItsPlace)
{
    const QString folder = exportPatientsNamed({"Ann"});
    const QString image = imageIn(folder);
    ASSERT_TRUE(QFile::remove(image));
    expectRefused(folder, image);
    ASSERT_TRUE(QDir().mkpath(image));
    expectRefused(folder, image);
}

TEST_F(PatientImport, NoticesAChangedTree)
{
    const QString folder = exportPatientsNamed({"Ann"});
    for (const char* const part : {"/studies", "/patients"}) {
        const QString tree = onlyFile(folder + part);
        const QByteArray content = readFile(tree);
        writeFile(tree, content + " ");
        expectRefused(folder, tree);
        writeFile(tree, content);
    }
}

TEST_F(PatientImport, ADamagedPatientDoesNotKeepTheOthersAway)
{
    const QString folder = exportPatientsNamed({"Ann", "Bob"});
    const QStringList trees = entriesOf(folder + "/patients");
    DataTreeNode header;
    ASSERT_EQ(XMLDataTree::read(readFile(folder + "/patients/" + trees[0]), header),
              CaError::nullError);
    writeFile(folder + "/patients/" + trees[0], "");
    const Report report = importPatients(folder, {}, {});
    EXPECT_EQ(report.problems.size(), 1);
    EXPECT_EQ(report.carried.size(), 1);
    EXPECT_FALSE(report.carried.contains(header.getAttribute("Name")));
}

TEST_F(PatientImport, SaysAgainWhatWasMissingAtTheExport)
{
    storePatient("Ann");
    QFile::remove(binary() + "/HRA_XML_Ann/b0.png");
    const QString folder = exportPatients(allPatients(), stick(), {}).folder;
    open("there");
    const Report report = importPatients(folder, {}, {});
    EXPECT_EQ(report.carried, QStringList("Ann"));
    EXPECT_EQ(report.files, 2);
    ASSERT_EQ(report.problems.size(), 1);
    EXPECT_TRUE(report.problems[0].contains("b0.png"));
    // Where it would have to be put.
    EXPECT_EQ(filesOf(onlyScanOf(*allPatients().front()))["SliceImage0"],
              binary() + "/HRA_XML_Ann/b0.png");
}

TEST_F(PatientImport, RefusesAFolderThatIsNoExport)
{
    open("there");
    EXPECT_THROW(importPatients(stick(), {}, {}), kelp::IOFailure);
    EXPECT_THROW(importPatients(path("gone"), {}, {}), kelp::IOFailure);
    EXPECT_FALSE(kelp::exchange::isExportFolder(path("gone")));
}

TEST_F(PatientImport, RefusesAManifestThatIsDamagedOrNewerOrNoneOfOurs)
{
    const QString folder = exportPatientsNamed({"Ann"});
    const QString file = folder + "/manifest.xml";
    const QByteArray whole = readFile(file);
    QByteArray other = whole;
    other.replace("PatientExport", "Something");
    for (const QByteArray& content :
         {whole.left(whole.size() / 2), QByteArray(), QByteArray("<html/>"), other}) {
        writeFile(file, content);
        EXPECT_THROW(importPatients(folder, {}, {}), kelp::IOFailure) << content.toStdString();
    }
    expectEmpty(DataIOManager::storeFolder());
}

TEST_F(PatientImport, RefusesAManifestThatLeadsOutOfTheFolder)
{
    const QString folder = exportPatientsNamed({"Ann"});
    const QByteArray whole = readFile(folder + "/manifest.xml");
    for (const char* const path :
         {"../stolen", "files/../../stolen", "/etc/hostname", "files//x", "./x", "files/.."}) {
        const int at = whole.indexOf("files/");
        ASSERT_GE(at, 0);
        QByteArray changed = whole;
        changed.replace(at, whole.indexOf('<', at) - at, path);
        writeFile(folder + "/manifest.xml", changed);
        try {
            importPatients(folder, {}, {});
            ADD_FAILURE() << path;
        } catch (const kelp::IOFailure& failure) {
            EXPECT_TRUE(failure.getMessage().contains(path)) << failure.what();
        }
    }
    expectEmpty(DataIOManager::storeFolder());
}

TEST_F(PatientImport, RefusesALinkThatLeadsOutOfTheFolder)
{
    const QString folder = exportPatientsNamed({"Ann"});
    const QString image = imageIn(folder);
    writeFile(path("outside.png"), readFile(image));
    ASSERT_TRUE(QFile::remove(image));
    ASSERT_TRUE(QFile::link(path("outside.png"), image));
    expectRefused(folder, "outside of the export's folder");
}

TEST_F(PatientImport, RefusesATreeThatNamesFilesTheExportDoesNotHold)
{
    const QString folder = exportPatientsNamed({"Ann"});
    const QString tree = onlyFile(folder + "/studies");
    const QByteArray content = readFile(tree);
    for (const QByteArray& path : {QByteArray("/etc/hostname"), QByteArray("../../outside")}) {
        QByteArray changed = content;
        const int at = changed.indexOf("file++hra:") + 10;
        changed.replace(at, changed.indexOf('?', at) - at, path);
        writeFile(tree, changed);
        const QByteArray manifest = readFile(folder + "/manifest.xml");
        changeManifest(folder, digestOf(content), digestOf(changed));
        changeManifest(folder, '>' + QByteArray::number(content.size()) + '<',
                       '>' + QByteArray::number(changed.size()) + '<');
        expectRefused(folder, "The export does not list it.");
        writeFile(folder + "/manifest.xml", manifest);
    }
}

TEST_F(PatientImport, FilesGoAgainWhenThePatientCannotBeStored)
{
    const QString folder = exportPatientsNamed({"Ann"});
    const QString studies = path("there") + "/studies";
    ASSERT_TRUE(QDir().rmdir(studies));
    writeFile(studies, "a file in place of the folder");
    const Report report = importPatients(folder, {}, {});
    EXPECT_EQ(report.problems.size(), 1);
    EXPECT_TRUE(allPatients().isEmpty());
    EXPECT_EQ(entriesOf(binary()), QStringList());
    EXPECT_EQ(entriesOf(path("there") + "/patients"), QStringList());
}

TEST_F(PatientImport, EndsWhenTheStoreTakesNoMoreFiles)
{
    const QString folder = exportPatientsNamed({"Ann", "Bob"});
    ASSERT_TRUE(QDir().rmdir(binary()));
    writeFile(binary(), "a file in place of the folder");
    const Report report = importPatients(folder, {}, {});
    ASSERT_EQ(report.problems.size(), 1);
    EXPECT_TRUE(report.problems[0].contains(binary()));
    EXPECT_TRUE(report.problems[0].endsWith(" The import ended there."));
    EXPECT_TRUE(allPatients().isEmpty());
}

} // namespace
