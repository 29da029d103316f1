#pragma once

#include "DataIOManager.h"
#include "DataTreeNode.h"
#include "ProcessData.h"
#include "StorePlugins.h"
#include "kelpException.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace storetest {

/// A data item without content of its own.
class Scan : public Data
{
public:
    _kelp::StringMixer getClassId() const override { return "TestScan"; }
};

/// A result that holds its scan, as a segmentation does.
class Result : public ProcessData
{
public:
    _kelp::StringMixer getClassId() const override { return "TestResult"; }
    using ProcessData::doLoad;
    using ProcessData::doSave;
    CaError doSave(DataTreeNode* node, DataSaveContext& context) override
    {
        const CaError error = ProcessData::doSave(node, context);
        if (scan) {
            saveToNode(scan.data(), node->createChild("Scan"), context);
        }
        node->setAttribute("Payload", payload);
        if (payload == "throws on save") {
            throw kelp::Assertion("cannot be saved");
        }
        return error;
    }
    CaError doLoad(DataTreeNode* node, DataLoadContext& context) override
    {
        CaError error = ProcessData::doLoad(node, context);
        payload = node->getAttribute("Payload");
        if (DataTreeNode* const child = node->getChild("Scan")) {
            scan = DataPointer<Data>(loadFromNode(child, context, error));
        }
        if (payload == "throws") {
            throw kelp::Assertion("null after loading");
        }
        return payload == "damaged" ? CaError("Damaged", "The payload is damaged.", "") : error;
    }

    DataPointer<Data> scan;
    QString payload;
};

template <typename T>
class Creator : public CaFactory<Data>::Factory
{
public:
    Data* createInstance() const override { return new T; }
};

inline void registerItems()
{
    Data::getFactory().registerFactory("TestScan", std::make_shared<Creator<Scan>>());
    Data::getFactory().registerFactory("TestResult", std::make_shared<Creator<Result>>());
    createFileIOFactory();
    createXMLDataTreeIOFactory();
}

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

inline void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(content);
}

/// A patient with one study of one scan and one result of it.
inline DataPointer<Patient> makePatient(const QString& name)
{
    DataPointer<Patient> patient(new Patient);
    patient->setName(name);
    patient->setId(name);
    patient->setBirthDate(QDate(1950, 2, 3));
    DataPointer<Study> study(new Study);
    study->setId("DefaultStudy");
    study->setInstitution("Clinic");
    EXPECT_EQ(patient->addStudy(study.data(), false), CaError::nullError);
    DataPointer<Scan> scan(new Scan);
    scan->setUri("OCTScanURI", kelp::URI("file++hra:/data/e.xml?seriesId=5"));
    EXPECT_EQ(study->addData(scan.data(), "5", false), CaError::nullError);
    DataPointer<Result> result(new Result);
    result->scan = scan;
    result->payload = "AAAA";
    EXPECT_EQ(study->addProcessData(result.data(), "Segment_1", false), CaError::nullError);
    return patient;
}

inline QString patientFile(const QString& folder, const DataPointer<Patient>& patient)
{
    return folder + "/patients/" + patient->getGUID() + ".xml";
}

inline QString studyFile(const QString& folder, const Study& study)
{
    return folder + "/studies/" + study.getGUID() + ".xml";
}

/// Opens a store in a folder of its own, and closes it again.
class StoreFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        registerItems();
        ASSERT_TRUE(m_directory.isValid());
        m_folder = QDir(m_directory.path()).canonicalPath() + "/store";
        ASSERT_EQ(DataIOManager::openStore(m_folder).toString(), QString());
    }
    void TearDown() override { DataIOManager::closeStore(); }

    void reopen()
    {
        DataIOManager::closeStore();
        ASSERT_EQ(DataIOManager::openStore(m_folder).toString(), QString());
    }

    QList<Patient*> patients()
    {
        QList<Patient*> list;
        EXPECT_EQ(DataIOManager::getPatientList(list), CaError::nullError);
        return list;
    }

    Study* firstStudy()
    {
        return patients().isEmpty() ? nullptr : patients().front()->getStudy("DefaultStudy");
    }

    QTemporaryDir m_directory;
    QString m_folder;
};

} // namespace storetest
