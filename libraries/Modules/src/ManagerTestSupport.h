#pragma once

#include "AppBase.h"
#include "DataDescription.h"
#include "DataFactory.h"
#include "DataTreeNode.h"
#include "DialogDriver.h"
#include "ProcessData.h"
#include "QtDataConfigurationWidget.h"
#include "QtPMModule.h"
#include "StorePlugins.h"
#include "StudyTree.h"
#include "Waiting.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QTreeView>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <memory>

/// The patient manager on a store of its own, used as a user does.
namespace managertest {

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
        return error == CaError::nullError && scan
                   ? saveToNode(scan.data(), node->createChild("Scan"), context)
                   : error;
    }
    CaError doLoad(DataTreeNode* node, DataLoadContext& context) override
    {
        CaError error = ProcessData::doLoad(node, context);
        if (DataTreeNode* const child = node->getChild("Scan")) {
            scan = DataPointer<Data>(loadFromNode(child, context, error));
        }
        return error;
    }

    DataPointer<Data> scan;
};

template <typename T>
class Creator : public CaFactory<Data>::Factory
{
public:
    Data* createInstance() const override { return new T; }
};

inline DataDescription describeScan(const Data&)
{
    return {"Test scan", {{"Modality", "none"}}, nullptr};
}

inline DataDescription describeResult(const Data& data)
{
    return {"Test result", {}, dynamic_cast<const Result&>(data).scan};
}

/// Takes over what is typed into its one field; refuses an empty one.
class ScanWidget : public QtDataConfigurationWidget
{
public:
    ScanWidget(Data* item, const QString& name, QWidget* parent)
        : QtDataConfigurationWidget(item, name, parent, Qt::WindowFlags())
    {
        auto* const box = new QVBoxLayout(this);
        for (QLineEdit* const edit : {m_series, m_name}) {
            box->addWidget(edit);
        }
        m_series->setObjectName("seriesEdit");
        m_name->setObjectName("scanNameEdit");
    }
    bool apply() override
    {
        if (m_series->text().isEmpty()) {
            return false;
        }
        const kelp::URI uri("file++hra:/gone/e.xml?seriesId=" + m_series->text());
        return getData()->setUri("OCTScanURI", uri) == CaError::nullError;
    }
    QString getItemName() const override { return m_name->text(); }

private:
    QLineEdit* m_series = new QLineEdit;
    QLineEdit* m_name = new QLineEdit;
};

class ScanRegistration : public DataFactory::Registration
{
public:
    QString name() const override { return "ScanWidget"; }
    QtDataConfigurationWidget* configurationWidget(Data* data, const QString& name,
                                                   QWidget* parent) const override
    {
        return new ScanWidget(data, name, parent);
    }
};

inline void registerTestItems()
{
    Data::getFactory().registerFactory("TestScan", std::make_shared<Creator<Scan>>());
    Data::getFactory().registerFactory("TestResult", std::make_shared<Creator<Result>>());
    registerDataDescriber("TestScan", describeScan);
    registerDataDescriber("TestResult", describeResult);
    DataFactory::Registration::registerWidget(new ScanRegistration);
    linkDataToWidget("TestScan", "ScanWidget", "Test Image", 2, QString());
    createFileIOFactory();
    createXMLDataTreeIOFactory();
}

inline DataPointer<Patient> makePatient(const QString& name, const QDate& birthDate)
{
    DataPointer<Patient> patient(new Patient);
    patient->setName(name);
    patient->setId(name);
    patient->setBirthDate(birthDate);
    return patient;
}

/// A study of one scan, named like the study, and a result of it.
inline DataPointer<Study> addStudy(Patient& patient, const QString& id)
{
    DataPointer<Study> study(new Study);
    study->setId(id);
    EXPECT_EQ(patient.addStudy(study.data(), false), CaError::nullError);
    const DataPointer<Scan> scan(new Scan);
    EXPECT_EQ(study->addData(scan.data(), id + "_scan", false), CaError::nullError);
    const DataPointer<Result> result(new Result);
    result->scan = DataPointer<Data>(scan.data());
    EXPECT_EQ(study->addProcessData(result.data(), id + "_result", false), CaError::nullError);
    return study;
}

class ManagerFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        registerTestItems();
        ASSERT_TRUE(m_directory.isValid());
        m_folder = QDir(m_directory.path()).canonicalPath() + "/store";
        ASSERT_EQ(DataIOManager::openStore(m_folder).toString(), QString());
        m_app = std::make_unique<AppBase>(m_argumentCount, nullptr, nullptr, false, false);
    }

    void TearDown() override
    {
        m_module.reset();
        m_app.reset();
        DataIOManager::closeStore();
    }

    /// Shows the tab.
    void start()
    {
        m_module = std::make_unique<QtPMModule>();
        QWidget* const widget = m_module->getMainWidget();
        widget->resize(1200, 700);
        widget->show();
        ASSERT_TRUE(waiting::untilExposed(*widget));
        ASSERT_TRUE(waiting::untilActivated(*widget));
        m_module->activate();
    }

    void store(const DataPointer<Patient>& patient)
    {
        ASSERT_EQ(DataIOManager::storePatient(patient).toString(), QString());
    }

    /// What another program would find on disk.
    QList<DataPointer<Patient>> storedPatients()
    {
        const auto io = std::unique_ptr<DataTreeIO>(DataTreeIO::getFactory().create("xml"));
        QList<DataPointer<Patient>> patients;
        DataIOManager::closeStore();
        EXPECT_EQ(io->open(m_folder).toString(), QString());
        EXPECT_EQ(io->listPatients(patients).toString(), QString());
        for (const DataPointer<Patient>& patient : patients) {
            QList<Data*> studies;
            patient->getAllStudies(studies);
            for (Data* const study : studies) {
                static_cast<Study*>(study)->ensureLoaded();
            }
        }
        return patients;
    }

    QStringList storedNames()
    {
        QStringList names;
        for (const DataPointer<Patient>& patient : storedPatients()) {
            names.append(patient->getName());
        }
        return names;
    }

    template <typename Widget>
    Widget& find(const char* name)
    {
        auto* const widget = m_module->getMainWidget()->findChild<Widget*>(name);
        EXPECT_TRUE(widget) << name;
        return *widget;
    }
    QTreeView& list() { return find<QTreeView>("patientList"); }
    kelp::patients::StudyTree& tree() { return find<kelp::patients::StudyTree>("studyTree"); }
    QString details() { return find<QTextBrowser>("details").toPlainText(); }

    void click(const char* buttonName)
    {
        auto& button = find<QAbstractButton>(buttonName);
        ASSERT_TRUE(button.isVisible() && button.isEnabled()) << buttonName;
        QTest::mouseClick(&button, Qt::LeftButton);
    }

    /// With the keyboard's focus there.
    void press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        ASSERT_TRUE(waiting::untilFocused(widget));
        QTest::keyClick(&widget, key, modifiers);
    }

    QStringList listedNames()
    {
        QStringList names;
        for (int row = 0; row < list().model()->rowCount(); ++row) {
            names.append(list().model()->index(row, 0).data().toString());
        }
        return names;
    }

    void clickPatient(const QString& name, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const int row = listedNames().indexOf(name);
        ASSERT_GE(row, 0) << name.toStdString();
        const QModelIndex index = list().model()->index(row, 0);
        list().scrollTo(index);
        QTest::mouseClick(list().viewport(), Qt::LeftButton, modifiers,
                          list().visualRect(index).center());
    }

    QTreeWidgetItem* line(const QString& name)
    {
        const auto lines = tree().findItems(name, Qt::MatchExactly | Qt::MatchRecursive);
        return lines.isEmpty() ? nullptr : lines.front();
    }

    void clickLine(const QString& name, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTreeWidgetItem* const item = line(name);
        ASSERT_TRUE(item) << name.toStdString();
        tree().scrollToItem(item);
        QTest::mouseClick(tree().viewport(), Qt::LeftButton, modifiers,
                          tree().visualItemRect(item).center());
    }

    /// Types into the field of a dialog in place of what stands there.
    static void type(QDialog& dialog, const char* field, const QString& text)
    {
        auto* const edit = dialog.findChild<QLineEdit*>(field);
        ASSERT_TRUE(edit) << field;
        QTest::mouseClick(edit, Qt::LeftButton);
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Delete);
        QTest::keyClicks(edit, text);
    }

    static DialogDriver::Answer cancelIt()
    {
        return [](QDialog& dialog) { DialogDriver::click(dialog, "Cancel"); };
    }

    static QString currentPatientName()
    {
        const DataPointer<Patient> patient = AppBase::getCurrentPatient();
        return patient ? patient->getName() : QString();
    }
    static QString currentStudyName()
    {
        const DataPointer<Study> study = AppBase::getCurrentStudy();
        return study ? study->getId() : QString();
    }

    int m_argumentCount = 0;
    QTemporaryDir m_directory;
    QString m_folder;
    std::unique_ptr<AppBase> m_app;
    std::unique_ptr<QtPMModule> m_module;
};

} // namespace managertest
