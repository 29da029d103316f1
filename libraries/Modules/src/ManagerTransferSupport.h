#pragma once

#include "ExchangeManifest.h"
#include "ManagerTestSupport.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QRegularExpression>

namespace managertest {

/// The manager with three patients, each with a scan of one file, and a folder that exports go to.
class TransferFixture : public ManagerFixture
{
protected:
    void SetUp() override
    {
        ManagerFixture::SetUp();
        for (const char* const name : {"Ada", "Grace", "Lise"}) {
            store(makePatientWithFile(name, 100));
        }
        m_target = QDir(m_directory.path()).canonicalPath() + "/target";
        ASSERT_TRUE(QDir().mkpath(m_target));
        m_dialogs.leaveAlone("QProgressDialog");
        start();
    }

    /// Born on 3 February 1950, with a study and a file of this many bytes of the store's own.
    DataPointer<Patient> makePatientWithFile(const QString& name, int bytes)
    {
        const QString path = m_folder + "/binary/" + name + "/e.xml";
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(bytes, name.front().toLatin1()));
        const DataPointer<Patient> patient = makePatient(name, QDate(1950, 2, 3));
        QList<Data*> scans;
        addStudy(*patient, name + "_visit")->getAllData(scans);
        EXPECT_EQ(scans.front()->setUri("OCTScanURI", kelp::URI("file++hra:" + path)),
                  CaError::nullError);
        return patient;
    }

    /// Leaves the store and the manager for those of another computer, which are empty.
    void goToAnotherComputer()
    {
        m_module.reset();
        AppBase::setCurrent(nullptr, nullptr);
        DataIOManager::closeStore();
        m_folder = QDir(m_directory.path()).canonicalPath() + "/there";
        ASSERT_EQ(DataIOManager::openStore(m_folder).toString(), QString());
        start();
        ASSERT_EQ(listedNames(), QStringList());
    }

    /// Keeps the text of the report that comes at the end.
    void expectReport(const QString& title)
    {
        m_dialogs.expect([this, title](QDialog& dialog) {
            const auto* const box = qobject_cast<QMessageBox*>(&dialog);
            if (!box) {
                ADD_FAILURE() << "no report but " << dialog.windowTitle().toStdString();
                dialog.reject();
                return;
            }
            EXPECT_EQ(box->windowTitle(), title);
            m_report = box->text();
            m_reportIcon = box->icon();
            DialogDriver::click(dialog, "OK");
        });
    }

    /// Exports all patients of the list; the folder made.
    QString exportAll()
    {
        m_dialogs.expect([this](QDialog& dialog) {
            DialogDriver::click(dialog, "Select All");
            type(dialog, "exportFolder", m_target);
            DialogDriver::click(dialog, "Export");
        });
        expectReport("Export");
        click("exportButton");
        return onlyExport();
    }

    QString onlyExport()
    {
        const QStringList made = QDir(m_target).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        EXPECT_EQ(made.size(), 1) << made.join(", ").toStdString();
        EXPECT_TRUE(QRegularExpression("^Export__[0-9]+$").match(made.value(0)).hasMatch())
            << made.value(0).toStdString();
        return m_target + '/' + made.value(0);
    }

    /// The questions are those about patients that are here already.
    void importFolder(
        const QString& folder, const std::function<void()>& expectQuestions = [] {})
    {
        m_report.clear();
        m_dialogs.expectFileDialog(folder);
        expectQuestions();
        expectReport("Import");
        click("importButton");
    }

    static DataPointer<Patient> patientNamed(const QString& name)
    {
        QList<Patient*> patients;
        DataIOManager::getPatientList(patients);
        for (Patient* const patient : qAsConst(patients)) {
            if (patient->getName() == name) {
                return patient;
            }
        }
        return nullptr;
    }

    QString m_target;
    QString m_report;
    QMessageBox::Icon m_reportIcon = QMessageBox::NoIcon;
    DialogDriver m_dialogs;
};

} // namespace managertest
