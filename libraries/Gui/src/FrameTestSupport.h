#pragma once

#include "AppBase.h"
#include "QtAppModule.h"
#include "QtModuleTabSelector.h"
#include "StorePlugins.h"

#include <QLabel>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace frametest {

/// A tab that writes down what is done to it.
class RecordingModule : public QtAppModule
{
public:
    RecordingModule(const QString& name, QStringList& record)
        : QtAppModule(name, false), m_record(record), m_widget(new QLabel(name))
    {
    }
    ~RecordingModule() override
    {
        m_record.append(QStringLiteral("delete ") + getName());
        delete m_widget;
    }
    void activate() override { m_record.append(QStringLiteral("activate ") + getName()); }
    void deactivate() override { m_record.append(QStringLiteral("deactivate ") + getName()); }
    QWidget* getMainWidget() override { return m_widget; }

private:
    QStringList& m_record;
    QLabel* m_widget;
};

/// An application on a store of its own.
class FrameFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        createFileIOFactory();
        createXMLDataTreeIOFactory();
        ASSERT_TRUE(m_directory.isValid());
        m_folder = m_directory.path() + QStringLiteral("/store");
        ASSERT_EQ(DataIOManager::openStore(m_folder).toString(), QString());
        m_app = std::make_unique<AppBase>(m_argumentCount, nullptr, nullptr, false, false);
    }

    void TearDown() override
    {
        m_app.reset();
        DataIOManager::closeStore();
    }

    static DataPointer<Patient> storedPatient(const QString& name)
    {
        DataPointer<Patient> patient(new Patient);
        patient->setName(name);
        patient->setId(name);
        EXPECT_EQ(DataIOManager::storePatient(patient).toString(), QString());
        return patient;
    }

    /// The names of the patients that are on disk.
    QStringList storedNames() const
    {
        QStringList names;
        const auto io = std::unique_ptr<DataTreeIO>(DataTreeIO::getFactory().create("xml"));
        QList<DataPointer<Patient>> patients;
        DataIOManager::closeStore();
        EXPECT_EQ(io->open(m_folder).toString(), QString());
        EXPECT_EQ(io->listPatients(patients).toString(), QString());
        for (const DataPointer<Patient>& patient : patients) {
            names.append(patient->getName());
        }
        names.sort();
        return names;
    }

    int m_argumentCount = 0;
    QTemporaryDir m_directory;
    QString m_folder;
    QStringList m_record;
    std::unique_ptr<AppBase> m_app;
};

} // namespace frametest
