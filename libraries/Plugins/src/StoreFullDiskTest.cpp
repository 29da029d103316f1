#include "FileIO.h"
#include "StoreTestSupport.h"
#include "kelpFileWriter.h"

#include <cerrno>

namespace {

using namespace storetest;

/// Writes that the disk still takes; negative means any number.
int writesLeft = -1;

/// Local files on a disk that is full after so many writes.
class FullDisk : public FileIO
{
public:
    CaError read(const QString& path, QByteArray& content) const override
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            return CaError("ReadFailure", path + ": " + file.errorString(), QString());
        }
        content = file.readAll();
        return CaError::nullError;
    }

    CaError write(const QString& path, const QByteArray& content) const override
    {
        if (writesLeft == 0) {
            return CaError("WriteFailure", path + ": " + qt_error_string(ENOSPC), QString());
        }
        --writesLeft;
        kelp::writeFileAtomically(path, content);
        return CaError::nullError;
    }

    CaError remove(const QString& path) const override
    {
        return QFile::remove(path) ? CaError::nullError : CaError("RemoveFailure", path, QString());
    }
};

class FullDiskFactory : public CaFactory<FileIO>::Factory
{
public:
    FileIO* createInstance() const override { return new FullDisk; }
};

class StoreOnFullDisk : public StoreFixture
{
protected:
    void SetUp() override
    {
        // Before the local files take the name.
        FileIO::getFactory().registerFactory("file", std::make_shared<FullDiskFactory>());
        writesLeft = -1;
        StoreFixture::SetUp();
    }
    void TearDown() override
    {
        writesLeft = -1;
        StoreFixture::TearDown();
    }
};

TEST_F(StoreOnFullDisk, WhereverTheDiskRunsFullTheStoreStaysReadableAndNothingStoredIsLost)
{
    constexpr int writesOfOnePatient = 4;
    for (int room = 0; room <= writesOfOnePatient; ++room) {
        const DataPointer<Patient> patient = makePatient(QString("P%1").arg(room));
        for (const char* const id : {"Second", "Third"}) {
            auto* const study = new Study;
            study->setId(id);
            ASSERT_EQ(patient->addStudy(study, false), CaError::nullError);
        }
        ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
        for (const char* const id : {"DefaultStudy", "Second", "Third"}) {
            ASSERT_EQ(patient->getStudy(id)->addData(new Scan, "new", false), CaError::nullError);
        }
        patient->setRemark("changed");

        writesLeft = room;
        const CaError error = DataIOManager::storePatient(patient);
        EXPECT_EQ(error == CaError::nullError, room == writesOfOnePatient) << room;
        EXPECT_EQ(error.toString().contains("No space left on device"), room < writesOfOnePatient);
        writesLeft = -1;

        reopen();
        EXPECT_TRUE(DataIOManager::getProblems().isEmpty());
        Patient* const read = patients().back();
        EXPECT_EQ(read->getRemark(), room == writesOfOnePatient ? QString("changed") : QString());
        int changed = 0;
        for (const char* const id : {"DefaultStudy", "Second", "Third"}) {
            ASSERT_EQ(read->getStudy(id)->ensureLoaded().toString(), QString());
            changed += static_cast<int>(read->getStudy(id)->hasChild("new"));
        }
        EXPECT_EQ(changed, std::min(room, 3));
        EXPECT_TRUE(read->getStudy("DefaultStudy")->hasChild("Segment_1"));
    }
}

TEST_F(StoreOnFullDisk, StoringAgainWithRoomCompletesWhatFailed)
{
    const DataPointer<Patient> patient = makePatient("A");
    writesLeft = 1;
    EXPECT_NE(DataIOManager::storePatient(patient), CaError::nullError);
    EXPECT_TRUE(patients().isEmpty());
    writesLeft = -1;
    EXPECT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    reopen();
    ASSERT_EQ(patients().size(), 1);
    EXPECT_TRUE(firstStudy()->hasChild("5"));
}

TEST_F(StoreOnFullDisk, WhatDidNotChangeIsNotWrittenAgain)
{
    const DataPointer<Patient> patient = makePatient("A");
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    writesLeft = 0;
    EXPECT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    patient->setRemark("changed");
    EXPECT_NE(DataIOManager::storePatient(patient), CaError::nullError);
}

} // namespace
