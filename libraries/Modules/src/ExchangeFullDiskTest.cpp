#include "ExchangeTestSupport.h"

#include <csignal>
#include <sys/resource.h>

namespace {

using namespace exchangetest;
using namespace storetest;

/// No file may grow beyond this as long as the object lives: a disk that is full after so many
/// bytes.
class SizeLimit
{
public:
    explicit SizeLimit(rlim_t bytes) : m_formerHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_former);
        rlimit limit = m_former;
        limit.rlim_cur = bytes;
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;
    ~SizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_formerHandler);
    }

private:
    rlimit m_former = {};
    void (*m_formerHandler)(int);
};

constexpr int largeImage = 200'000;
constexpr rlim_t room = 100'000;

class ExchangeOnFullDisk : public ExchangeFixture
{
protected:
    void storePatientWithLargeImage(const QString& name)
    {
        storePatient(name);
        writeFile(binary() + "/HRA_XML_" + name + "/b1.png", QByteArray(largeImage, 'x'));
    }
};

TEST_F(ExchangeOnFullDisk, AnExportSaysWhatCouldNotBeWrittenAndLeavesNothing)
{
    storePatientWithLargeImage("Ann");
    {
        const SizeLimit limit(room);
        try {
            exportPatients(allPatients(), stick(), {});
            ADD_FAILURE();
        } catch (const kelp::IOFailure& failure) {
            EXPECT_TRUE(failure.getMessage().startsWith("Could not write file "));
            EXPECT_TRUE(failure.getMessage().contains("b1.png")) << failure.what();
        }
    }
    EXPECT_EQ(entriesOf(stick()), QStringList());
    EXPECT_EQ(exportPatients(allPatients(), stick(), {}).carried, QStringList("Ann"));
}

TEST_F(ExchangeOnFullDisk, AnImportKeepsTheWholePatientsAndLeavesNothingOfTheNext)
{
    storePatient("Small");
    const QString small = exportAll();
    storePatientWithLargeImage("Large");
    const QString both = exportAll();
    open("there");
    const SizeLimit limit(room);
    EXPECT_EQ(importPatients(small, {}, {}).carried, QStringList("Small"));
    const auto before = contentOf(DataIOManager::storeFolder());
    const Report report = importPatients(both, {}, {});
    EXPECT_EQ(report.present, QStringList("Small"));
    EXPECT_EQ(report.carried, QStringList());
    ASSERT_EQ(report.problems.size(), 1);
    EXPECT_TRUE(report.problems[0].startsWith("Large was not imported. Could not write file "));
    EXPECT_TRUE(report.problems[0].endsWith(" The import ended there."));
    EXPECT_EQ(contentOf(DataIOManager::storeFolder()), before);
    EXPECT_EQ(entriesOf(binary()), QStringList("HRA_XML_Small"));
}

} // namespace
