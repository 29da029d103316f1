#include "BatchImport.h"

#include "BatchScans.h"
#include "BatchTestSupport.h"
#include "TraceCapture.h"
#include "kelpException.h"

namespace kelp::oct {

namespace {

using test::ReportedLine;
using test::TestExportOptions;

class BatchImport : public test::BatchStoreFixture
{
protected:
    void import(const QString& xmlPath, const QString& study = QStringLiteral("DefaultStudy"))
    {
        m_lines.clear();
        importExport(xmlPath, study, [this](const QString& text, BatchLine kind) {
            m_lines.append({text, kind});
        });
    }
    const ReportedLine& line(int index) const { return m_lines.at(index); }

    QList<ReportedLine> m_lines;
};

const ReportedLine added{QStringLiteral("OCT with id 1 added to patient Eva Maria Muster.\n"),
                         BatchLine::Success};
const ReportedLine present{
    QStringLiteral("OCT with id 1 already exists for patient Eva Maria Muster.\n"),
    BatchLine::Problem};

TEST_F(BatchImport, MakesThePatientAndTheStudyAndStoresTheScan)
{
    import(writeSmallExport("a"), QStringLiteral("Cohort 7"));
    EXPECT_EQ(m_lines, QList<ReportedLine>{added});
    reopenStore();
    ASSERT_EQ(patients().size(), 1);
    const Patient& patient = *patients().first();
    EXPECT_EQ(patient.getName(), QStringLiteral("Eva Maria Muster"));
    EXPECT_EQ(patient.getId(), patient.getName());
    EXPECT_EQ(patient.getBirthDate(), QDate(1950, 6, 15));
    EXPECT_EQ(patient.getKeyText(), "Eva Maria Muster" + QDate(1950, 6, 15).toString(Qt::TextDate));
    const QList<Data*> scans = scansOf(patient, QStringLiteral("Cohort 7"));
    ASSERT_EQ(scans.size(), 1);
    auto* const scan = static_cast<OCTScan*>(scans.first());
    EXPECT_EQ(scan->getUri("OCTScanURI").queryItem("seriesId"), QStringLiteral("1"));
    // The batch lists the files as they are, without the loading widget's backslashes.
    EXPECT_TRUE(scan->getUri("SliceImage0").path().endsWith("/localizer.png"));
    scan->ensureLoaded();
    EXPECT_EQ(scan->getBScanCount(), 3);
}

TEST_F(BatchImport, OfTheSameFileTwiceCopiesItsFilesAgainAndAddsNothing)
{
    const QString path = writeSmallExport("a");
    import(path);
    import(path);
    EXPECT_EQ(m_lines, QList<ReportedLine>{present});
    EXPECT_EQ(importFolders().size(), 2);
    EXPECT_EQ(scansOf(*patients().first()).size(), 1);
    import(path, QStringLiteral("Other"));
    EXPECT_EQ(m_lines, QList<ReportedLine>{added});
    EXPECT_EQ(patients().size(), 1);
}

TEST_F(BatchImport, APatientOfTheSameNameWithAnotherBirthDateIsANewOneOfTheSameId)
{
    import(writeSmallExport("a"));
    import(writeSmallExport("b", {{ "<Year>1950</Year>", "<Year>1951</Year>" }}));
    EXPECT_EQ(m_lines, QList<ReportedLine>{added});
    reopenStore();
    ASSERT_EQ(patients().size(), 2);
    EXPECT_EQ(patients().at(0)->getId(), patients().at(1)->getId());
    EXPECT_NE(patients().at(0)->getBirthDate(), patients().at(1)->getBirthDate());
}

TEST_F(BatchImport, ReadsNamesAsLatin1)
{
    import(writeSmallExport("a", {{ "Muster", QString::fromUtf8("Müßig-Çelik") }}));
    reopenStore();
    ASSERT_EQ(patients().size(), 1);
    EXPECT_EQ(patients().first()->getName(), QString::fromUtf8("Eva Maria Müßig-Çelik"));
}

TEST_F(BatchImport, TakesSeriesOfAllTypes)
{
    for (const char* const type : {"Fast Volume", "Circle", "Star", "Section"}) {
        TestExportOptions options;
        options.type = QLatin1String(type);
        options.seriesId = options.type;
        import(writeSmallExport(options.type, {}, options));
    }
    EXPECT_EQ(scansOf(*patients().first()).size(), 4);
}

TEST_F(BatchImport, AFileThatIsNoExportIsReportedWithItsReason)
{
    const QString path = writeSmallExport("a");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<unfinished");
    file.close();
    import(path);
    ASSERT_EQ(m_lines.size(), 1);
    EXPECT_EQ(line(0), (ReportedLine{"Could not get patient information from XML file " + path +
                                         ". Reason: Could not set XML as content type.",
                                     BatchLine::Problem}));
    ASSERT_TRUE(file.remove());
    import(path);
    EXPECT_EQ(line(0), (ReportedLine{"Could not get patient information from XML file " + path +
                                         ". Reason: Error opening path to XML: " + path + ".",
                                     BatchLine::Problem}));
    EXPECT_TRUE(patients().isEmpty());
}

TEST_F(BatchImport, AnExportWithoutABirthDateIsReported)
{
    const QString path = writeSmallExport("a", {{"Birthdate", "Nothing"}});
    import(path);
    ASSERT_EQ(m_lines.size(), 1);
    EXPECT_TRUE(line(0).text.endsWith(
        "Reason: Got no birthdate from XML, the XML might not be an HRA export."));
}

TEST_F(BatchImport, WhenTheFilesCannotBeCopiedTheScanPointsAtTheSource)
{
    const QString path = writeSmallExport("a");
    const QString target = DataTreeIO::binaryDataDirUri().path();
    ASSERT_TRUE(QDir(target).removeRecursively());
    QFile inTheWay(target);
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    import(path);
    ASSERT_GE(m_lines.size(), 2);
    EXPECT_EQ(line(0),
              (ReportedLine{"Error copying files: Could not create directory " + target + "\n",
                            BatchLine::Problem}));
    EXPECT_EQ(line(1), added);
    EXPECT_EQ(scansOf(*patients().first()).first()->getUri("OCTScanURI").path(), path);
}

TEST_F(BatchImport, AScanThatTheStudyDoesNotTakeIsReported)
{
    TestExportOptions options;
    options.seriesId = QString();
    import(writeSmallExport("a", {}, options));
    ASSERT_EQ(m_lines.size(), 1);
    EXPECT_EQ(line(0).kind, BatchLine::Problem);
    EXPECT_TRUE(line(0).text.contains("could not be added to patient Eva Maria Muster. Reason: "));
}

TEST_F(BatchImport, ThePatientThatIsCurrentGetsTheScanInTheTreeThatTheUserSees)
{
    import(writeSmallExport("a"));
    const DataPointer<Patient> seen(patients().first());
    reopenStore();
    ASSERT_NE(patients().first(), seen.data());
    AppBase::setCurrent(seen, nullptr);
    TestExportOptions options;
    options.seriesId = QStringLiteral("2");
    import(writeSmallExport("b", {}, options));
    EXPECT_EQ(scansOf(*seen).size(), 2);
}

/// The store cannot be opened at all.
class BatchImportWithoutStore : public BatchImport
{
protected:
    void SetUp() override
    {
        BatchImport::SetUp();
        DataIOManager::closeStore();
        QFile file(m_store.filePath("no folder"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        m_before = qgetenv("TESSERA_STORE");
        qputenv("TESSERA_STORE", QFile::encodeName(file.fileName()));
    }
    void TearDown() override
    {
        qputenv("TESSERA_STORE", m_before);
        BatchImport::TearDown();
    }

    QByteArray m_before;
};

TEST_F(BatchImportWithoutStore, ReportsThatThePatientCannotBeHad)
{
    import(writeSmallExport("a"));
    ASSERT_EQ(m_lines.size(), 1);
    EXPECT_EQ(line(0).kind, BatchLine::Problem);
    EXPECT_TRUE(
        line(0).text.startsWith("Could not get patient with name Eva Maria Muster. Reason: "))
        << line(0);
    EXPECT_TRUE(listBatchScans().isEmpty());
}

class BatchScanList : public BatchImport
{
};

TEST_F(BatchScanList, HoldsTheScansThatNameTheirSeriesAndPrintsTheOthers)
{
    import(writeSmallExport("a"));
    Patient& patient = *patients().first();
    Study& study = *patient.getStudy(QStringLiteral("DefaultStudy"));
    auto* const nameless = new OCTScan;
    nameless->setUri("OCTScanURI", URI("file++hra:/gone.xml"));
    ASSERT_FALSE(study.addData(nameless, QStringLiteral("nameless"), true) != CaError::nullError);
    ASSERT_FALSE(study.addData(new Data, QStringLiteral("other"), true) != CaError::nullError);

    const test::TraceCapture trace;
    const QList<BatchScan> scans = listBatchScans();
    ASSERT_EQ(scans.size(), 1);
    EXPECT_EQ(scans.first().scan->getId(), QStringLiteral("1"));
    EXPECT_EQ(scans.first().study.data(), &study);
    EXPECT_EQ(scans.first().patient.data(), &patient);
    EXPECT_EQ(seriesIdOf(*scans.first().scan), QStringLiteral("1"));
    EXPECT_EQ(
        trace.lines(),
        QStringList({"patient: Eva Maria Muster", "study: DefaultStudy", "data: 1",
                     "full uri: " + scans.first().scan->getUri("OCTScanURI").toString(),
                     "series Id found: ", "data: nameless", "full uri: file++hra:/gone.xml",
                     "query not found", "data: other", "data is not OCTScan class, but Data"}));
}

TEST_F(BatchScanList, SkipsWhatSomeoneDeleted)
{
    import(writeSmallExport("a"));
    Patient& patient = *patients().first();
    delete scansOf(patient).first();
    const test::TraceCapture trace;
    EXPECT_TRUE(listBatchScans().isEmpty());
    EXPECT_EQ(trace.lines().last(), QStringLiteral("data is null"));
    delete patient.getStudy(QStringLiteral("DefaultStudy"));
    EXPECT_TRUE(listBatchScans().isEmpty());
    EXPECT_EQ(trace.lines().last(), QStringLiteral("study is null"));
}

TEST_F(BatchScanList, GivesTheCurrentPatientsOwnObject)
{
    import(writeSmallExport("a"));
    const DataPointer<Patient> seen(patients().first());
    reopenStore();
    EXPECT_NE(listBatchScans().first().patient, seen);
    AppBase::setCurrent(seen, nullptr);
    EXPECT_EQ(listBatchScans().first().patient, seen);
}

} // namespace

} // namespace kelp::oct
