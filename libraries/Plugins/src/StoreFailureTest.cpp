#include "StoreTestSupport.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace storetest;

class StoreFailure : public StoreFixture
{
protected:
    /// A stored patient, whose files the test then damages.
    DataPointer<Patient> storedPatient(const QString& name)
    {
        const DataPointer<Patient> patient = makePatient(name);
        EXPECT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
        return patient;
    }
};

const std::vector<QByteArray> damagedContents{
    "",
    "no xml at all",
    "<html><body>404</body></html>",
    "<?xml version=\"1.0\"?><tesseraTree version=\"1\"><node name=\"\" type=\"Pat",
    "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY b \"c\">]><tesseraTree version=\"1\"/>",
    "<?xml version=\"1.0\"?><tesseraTree version=\"99\"><node/></tesseraTree>"};

TEST_F(StoreFailure, ADamagedPatientFileIsNamedAndLeftAloneAndTheOthersStayUsable)
{
    const QString broken = patientFile(m_folder, storedPatient("Broken"));
    storedPatient("Whole");
    for (const QByteArray& content : damagedContents) {
        DataIOManager::closeStore();
        writeFile(broken, content);
        reopen();
        ASSERT_EQ(patients().size(), 1);
        EXPECT_EQ(patients().front()->getName(), QString("Whole"));
        EXPECT_TRUE(firstStudy()->hasChild("5"));
        ASSERT_EQ(DataIOManager::getProblems().size(), 1);
        const QString text = DataIOManager::getProblems().front().toString();
        EXPECT_TRUE(text.contains(broken) && text.contains("line ")) << text.toStdString();
        EXPECT_EQ(DataIOManager::storePatient(DataPointer<Patient>(patients().front())),
                  CaError::nullError);
        EXPECT_EQ(readFile(broken), content);
    }
}

TEST_F(StoreFailure, ADamagedPatientFileIsNotWrittenOver)
{
    const DataPointer<Patient> patient = storedPatient("A");
    writeFile(patientFile(m_folder, patient), "damaged by someone");
    patient->setName("B");
    const CaError error = DataIOManager::storePatient(patient);
    EXPECT_TRUE(error.toString().contains(patientFile(m_folder, patient)));
    EXPECT_EQ(readFile(patientFile(m_folder, patient)), QByteArray("damaged by someone"));
}

TEST_F(StoreFailure, AnUnreadableStudyGivesItsReasonTakesNothingAndIsNotWrittenOver)
{
    storedPatient("A");
    const QString file = studyFile(m_folder, *firstStudy());
    for (const QByteArray& content : damagedContents) {
        DataIOManager::closeStore();
        writeFile(file, content);
        reopen();
        const QString text = firstStudy()->ensureLoaded().toString();
        EXPECT_TRUE(text.contains(file)) << text.toStdString();
        QList<Data*> items;
        firstStudy()->getAllData(items);
        EXPECT_TRUE(items.isEmpty());
        EXPECT_EQ(firstStudy()->addData(new Scan, "6", false), firstStudy()->getLoadError());
        patients().front()->setRemark(QString::number(content.size()));
        EXPECT_EQ(DataIOManager::storePatient(DataPointer<Patient>(patients().front())),
                  CaError::nullError);
        EXPECT_EQ(readFile(file), content);
    }
}

TEST_F(StoreFailure, AMissingStudyFileIsNamedAndTheRestStaysUsable)
{
    storedPatient("A");
    storedPatient("B");
    DataIOManager::closeStore();
    reopen();
    const QString file = studyFile(m_folder, *firstStudy());
    ASSERT_TRUE(QFile::remove(file));
    const QString text = firstStudy()->ensureLoaded().toString();
    EXPECT_TRUE(text.contains(file) && text.contains("No such file")) << text.toStdString();
    EXPECT_TRUE(patients()[1]->getStudy("DefaultStudy")->hasChild("5"));
    // Its items are gone; a file without them must not be made of it.
    EXPECT_NE(DataIOManager::storePatient(DataPointer<Patient>(patients().front())),
              CaError::nullError);
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(StoreFailure, AStudyFileOfAnotherStudyIsRefused)
{
    storedPatient("A");
    storedPatient("B");
    reopen();
    const QString first = studyFile(m_folder, *firstStudy());
    const QString second = studyFile(m_folder, *patients()[1]->getStudy("DefaultStudy"));
    writeFile(first, readFile(second));
    EXPECT_TRUE(firstStudy()->ensureLoaded().toString().contains("another study"));
}

TEST_F(StoreFailure, ACopyOfAPatientFileIsNoSecondPatient)
{
    const DataPointer<Patient> patient = storedPatient("A");
    ASSERT_TRUE(QFile::copy(patientFile(m_folder, patient), m_folder + "/patients/copy.xml"));
    reopen();
    EXPECT_EQ(patients().size(), 1);
    ASSERT_EQ(DataIOManager::getProblems().size(), 1);
    EXPECT_TRUE(DataIOManager::getProblems().front().toString().contains("copy.xml"));
}

TEST_F(StoreFailure, AStudyNameThatLeavesTheFolderIsRefused)
{
    const DataPointer<Patient> patient = storedPatient("A");
    const QString file = patientFile(m_folder, patient);
    DataIOManager::closeStore();
    const QByteArray guid = patient->getStudy("DefaultStudy")->getGUID().toUtf8();
    writeFile(file, readFile(file).replace(guid, "../../elsewhere"));
    reopen();
    EXPECT_TRUE(patients().isEmpty());
    ASSERT_EQ(DataIOManager::getProblems().size(), 1);
    EXPECT_TRUE(DataIOManager::getProblems().front().toString().contains("no valid GUID"));
}

TEST_F(StoreFailure, APlaceBelowAFileIsRefusedWithTheReason)
{
    writeFile(m_directory.filePath("file"), "x");
    const CaError error = DataIOManager::openStore(m_directory.filePath("file/store"));
    EXPECT_NE(error, CaError::nullError);
    EXPECT_TRUE(error.toString().contains("file/store")) << error.toString().toStdString();
    EXPECT_TRUE(error.toString().contains("Not a directory")) << error.toString().toStdString();
    // The store that was open stays so.
    EXPECT_EQ(DataIOManager::storeFolder(), m_folder);
}

/// Writing beyond this many bytes of a file fails with the system's "File too large", as a full
/// disk fails with its own reason.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        m_formerHandler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limited{bytes, m_former.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_formerHandler);
    }

private:
    rlimit m_former{};
    void (*m_formerHandler)(int) = nullptr;
};

TEST_F(StoreFailure, AWriteThatFailsHalfwayKeepsTheFormerVersionAndGivesTheReason)
{
    const DataPointer<Patient> patient = storedPatient("A");
    const QByteArray before = readFile(patientFile(m_folder, patient));
    patient->setRemark(QString(100000, 'x'));
    CaError error;
    {
        const FileSizeLimit limit(20000);
        error = DataIOManager::storePatient(patient);
    }
    EXPECT_TRUE(error.toString().contains(patientFile(m_folder, patient)));
    EXPECT_TRUE(error.toString().contains("File too large")) << error.toString().toStdString();
    EXPECT_EQ(readFile(patientFile(m_folder, patient)), before);
    EXPECT_EQ(QDir(m_folder + "/patients").entryList(QDir::Files | QDir::Hidden).size(), 1);
    EXPECT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    reopen();
    EXPECT_EQ(patients().front()->getRemark().size(), 100000);
}

/// A process of its own that opens the store, says so, and waits to be killed.
class OtherProcess
{
public:
    template <typename Work>
    explicit OtherProcess(const Work& work)
    {
        int channel[2] = {};
        EXPECT_EQ(pipe(channel), 0);
        m_id = fork();
        if (m_id == 0) {
            work([&channel](char report) { EXPECT_EQ(write(channel[1], &report, 1), 1); });
            pause();
            _exit(0);
        }
        close(channel[1]);
        EXPECT_EQ(read(channel[0], &m_report, 1), 1);
        close(channel[0]);
    }
    ~OtherProcess() { end(); }

    void end()
    {
        if (m_id > 0) {
            ::kill(m_id, SIGKILL);
            ::waitpid(m_id, nullptr, 0);
            m_id = 0;
        }
    }

    pid_t m_id = 0;
    char m_report = 0;
};

TEST_F(StoreFailure, ASecondProcessIsToldWhoHoldsTheStoreAndADeadOneHoldsNothing)
{
    DataIOManager::closeStore();
    OtherProcess other([this](const auto& report) {
        report(DataIOManager::openStore(m_folder) == CaError::nullError ? 'y' : 'n');
    });
    ASSERT_EQ(other.m_report, 'y');
    const CaError refused = DataIOManager::openStore(m_folder);
    EXPECT_EQ(refused.getIdentifier(), QString("StoreLocked"));
    EXPECT_TRUE(refused.toString().contains(m_folder));
    EXPECT_TRUE(refused.toString().contains(QString("process %1,").arg(other.m_id)))
        << refused.toString().toStdString();
    other.end();
    EXPECT_EQ(DataIOManager::openStore(m_folder).toString(), QString());
}

TEST_F(StoreFailure, AKillDuringStoringLeavesEveryFileWhole)
{
    storedPatient("A");
    for (int round = 0; round < 8; ++round) {
        DataIOManager::closeStore();
        OtherProcess writer([this](const auto& report) {
            QList<Patient*> list;
            if (DataIOManager::openStore(m_folder) != CaError::nullError ||
                DataIOManager::getPatientList(list) != CaError::nullError) {
                report('n');
                return;
            }
            const DataPointer<Patient> patient(list.front());
            Study& study = *patient->getStudy("DefaultStudy");
            report('y');
            for (int i = 0;; ++i) {
                patient->setRemark(QString(20000 + i % 7, 'r'));
                study.removeProcessData("Filler");
                auto* const filler = new Result;
                filler->payload = QString(50000 + i % 5, 'p');
                study.addProcessData(filler, "Filler", false);
                DataIOManager::storePatient(patient);
            }
        });
        ASSERT_EQ(writer.m_report, 'y');
        usleep(static_cast<useconds_t>(5000 + 7919 * round));
        writer.end();
        reopen();
        ASSERT_EQ(patients().size(), 1);
        ASSERT_TRUE(DataIOManager::getProblems().isEmpty());
        ASSERT_EQ(firstStudy()->ensureLoaded().toString(), QString());
        ASSERT_TRUE(firstStudy()->hasChild("5"));
        // What the killed process had begun is gone too.
        ASSERT_EQ(QDir(m_folder + "/patients").entryList(QDir::Files | QDir::Hidden).size(), 1);
        ASSERT_EQ(QDir(m_folder + "/studies").entryList(QDir::Files | QDir::Hidden).size(), 1);
    }
}

} // namespace
