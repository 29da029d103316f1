#pragma once

#include "AppBase.h"
#include "OCTModule.h"
#include "OCTScanControlWidget.h"
#include "StorePlugins.h"
#include "TestExport.h"
#include "TestRetina.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <memory>

/// What the tests of the tabs share.
namespace moduletest {

/// An application with a patient and a study on a store of its own, in place of the patient
/// manager.
class ModuleApplication : public testing::Test
{
protected:
    void SetUp() override
    {
        createFileIOFactory();
        createXMLDataTreeIOFactory();
        ASSERT_TRUE(m_folder.isValid());
        ASSERT_EQ(DataIOManager::openStore(path(QStringLiteral("store"))).toString(), QString());
        m_application = std::make_unique<AppBase>(m_argumentCount, nullptr, nullptr, false, false);
        m_patient = new Patient;
        m_patient->setName(QStringLiteral("Ada Example"));
        m_patient->setId(QStringLiteral("Ada"));
        m_study = addStudy(QStringLiteral("Visit1"));
        AppBase::setCurrent(m_patient, m_study);
    }
    void TearDown() override
    {
        m_study = nullptr;
        m_patient = nullptr;
        m_application.reset();
        DataIOManager::closeStore();
    }

    QString path(const QString& name) const { return m_folder.path() + QLatin1Char('/') + name; }
    DataPointer<Study> addStudy(const QString& id)
    {
        const DataPointer<Study> study(new Study);
        study->setId(id);
        EXPECT_EQ(m_patient->addStudy(study.data(), true).toString(), QString());
        return study;
    }
    OCTScanPtr addScan(const QString& id, const OCTScanPtr& scan)
    {
        EXPECT_EQ(m_study->addData(scan.data(), id, true).toString(), QString());
        return scan;
    }
    OCTScanPtr addScan(const QString& id, const QString& pattern = QStringLiteral("Volume"))
    {
        kelp::oct::test::Retina retina = pattern == QStringLiteral("Volume")
                                             ? kelp::oct::test::Retina()
                                             : kelp::oct::test::singleBScanRetina(pattern);
        return addScan(id, retina.makeScan());
    }
    /// A scan on disk one of whose images is gone.
    OCTScanPtr addDamagedScan(const QString& id)
    {
        const QString xml = kelp::oct::test::writeTestExport(m_folder.path());
        EXPECT_TRUE(QFile::remove(path(QStringLiteral("b1.png"))));
        return addScan(id, kelp::oct::test::makeTestExportScan(xml));
    }
    OCTScanSegPtr addSegmentation(const QString& id, const OCTScanPtr& scan)
    {
        const OCTScanSegPtr segmentation(new kelp::oct::OCTScanSegmentation(scan));
        EXPECT_EQ(m_study->addProcessData(segmentation.data(), id, true).toString(), QString());
        return segmentation;
    }
    QStringList segmentationIds() const
    {
        QList<Data*> items;
        m_study->getAllProcessData(items);
        QStringList ids;
        for (const Data* const item : items) {
            ids.append(item->getId());
        }
        return ids;
    }

    int m_argumentCount = 0;
    QTemporaryDir m_folder;
    std::unique_ptr<AppBase> m_application;
    DataPointer<Patient> m_patient;
    DataPointer<Study> m_study;
    kelp::oct::ActiveDataItems m_items;
};

inline QPushButton* findButton(QWidget& widget, const QString& text)
{
    for (auto* const button : widget.findChildren<QPushButton*>()) {
        if (button->text() == text) {
            return button;
        }
    }
    return nullptr;
}

/// With the mouse; fails the test unless the button can be pressed.
inline void press(QWidget& widget, const QString& text)
{
    QPushButton* const button = findButton(widget, text);
    ASSERT_TRUE(button) << text.toStdString();
    ASSERT_TRUE(button->isEnabled()) << text.toStdString();
    QTest::mouseClick(button, Qt::LeftButton);
}

inline QListWidgetItem* findItem(QListWidget& list, const QString& text)
{
    const QList<QListWidgetItem*> found = list.findItems(text, Qt::MatchExactly);
    return found.isEmpty() ? nullptr : found.first();
}

inline void doubleClickScan(QWidget& tab, const QString& id)
{
    auto* const list = tab.findChild<QListWidget*>(QStringLiteral("dataSelectionList"));
    ASSERT_TRUE(list);
    QListWidgetItem* const item = findItem(*list, id);
    ASSERT_TRUE(item) << id.toStdString();
    const QPoint place = list->visualItemRect(item).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
}

inline void clickSegmentation(QWidget& tab, const QString& id)
{
    auto* const list = tab.findChild<QListWidget*>(QStringLiteral("segmentationList"));
    ASSERT_TRUE(list);
    QListWidgetItem* const item = findItem(*list, id);
    ASSERT_TRUE(item) << id.toStdString();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(item).center());
}

inline QStringList listedSegmentations(QWidget& tab)
{
    const auto* const list = tab.findChild<QListWidget*>(QStringLiteral("segmentationList"));
    QStringList ids;
    for (int row = 0; row < list->count(); ++row) {
        ids.append(list->item(row)->text());
    }
    return ids;
}

/// A tab whose views write down what they are told, and fail at will.
class RecordingTab : public kelp::oct::OCTModule
{
public:
    explicit RecordingTab(kelp::oct::ActiveDataItems& items)
        : OCTModule(QStringLiteral("Recording"), &items), m_widget(new QWidget)
    {
        auto* const layout = new QVBoxLayout(m_widget);
        layout->addWidget(m_controlWidget);
        m_view = new QWidget;
        layout->addWidget(m_view);
        setHintTarget(m_view);
        layout->addWidget(makeNextStepLabel());
        m_widget->resize(400, 900);
        m_widget->show();
    }
    ~RecordingTab() override { delete m_widget; }

    QWidget* getMainWidget() override { return m_widget; }
    void setOCTScan(OCTScanPtr scan) override
    {
        note(QStringLiteral("scan ") + (scan ? scan->getId() : QStringLiteral("null")));
    }
    void setOCTScanSegmentation(OCTScanSegPtr segmentation) override
    {
        note(QStringLiteral("segmentation ") + segmentation->getId());
    }
    void clearOCT() override { note(QStringLiteral("clear")); }

    OCTScanPtr scan() const { return m_octScan; }
    OCTScanSegPtr segmentation() const { return m_octScanSegmentation; }
    kelp::oct::OCTScanControlWidget& panel() { return *m_controlWidget; }
    QString hintText() const { return hint(); }

    QStringList record;
    QString failing; ///< the beginning of what fails

private:
    void note(const QString& what)
    {
        record.append(what);
        if (!failing.isEmpty() && what.startsWith(failing)) {
            throw kelp::IOFailure("on purpose");
        }
    }

    QPointer<QWidget> m_widget;
    QWidget* m_view = nullptr;
};

} // namespace moduletest
