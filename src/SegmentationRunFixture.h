#pragma once

#include "OCTAutoSegmentationModule.h"

#include "DialogDriver.h"
#include "OCTModuleTestSupport.h"
#include "SegUpdateDialog.h"
#include "Waiting.h"
#include "kelpSettings.h"

#include <QCheckBox>
#include <QMessageBox>
#include <QTextEdit>

#include <algorithm>

namespace moduletest {

using kelp::oct::OCTAutoSegmentationModule;
using kelp::oct::SegUpdateDialog;

/// Runs of the automatic segmentation through the tab.
class SegmentationRun : public ModuleApplication
{
protected:
    void SetUp() override
    {
        ModuleApplication::SetUp();
        kelp::Settings::set(QStringLiteral("testSegmentationEnabled"), QVariant(m_testOptions));
        m_tab = std::make_unique<OCTAutoSegmentationModule>(
            &m_items, QStringLiteral("OCT Auto-Segmentation"));
        m_tab->getMainWidget()->resize(1260, 760);
        m_tab->getMainWidget()->show();
        m_dialog = widget().findChild<SegUpdateDialog*>();
        ASSERT_TRUE(m_dialog);
    }
    void TearDown() override
    {
        m_tab.reset();
        kelp::Settings::set(QStringLiteral("testSegmentationEnabled"), QVariant(false));
        ModuleApplication::TearDown();
    }
    QWidget& widget() { return *m_tab->getMainWidget(); }
    /// Shows a new segmentation of the scan.
    void choose(const OCTScanPtr& scan)
    {
        addScan(QStringLiteral("scan1"), scan);
        m_tab->activate();
        doubleClickScan(widget(), QStringLiteral("scan1"));
        press(widget(), QStringLiteral("New Segmentation"));
        ASSERT_TRUE(waiting::until([] { return !AppBase::hasUnsavedChanges(); }));
    }
    OCTScanSegPtr segmentation() const
    {
        QList<Data*> items;
        m_study->getAllProcessData(items);
        return dynamic_cast<kelp::oct::OCTScanSegmentation*>(items.value(0));
    }
    std::vector<std::string> layers() const
    {
        std::vector<std::string> identifiers;
        for (const kelp::oct::LayerNamePtr& name : segmentation()->getAllLayerNames()) {
            identifiers.push_back(name->getIdentifier().toStdString());
        }
        std::sort(identifiers.begin(), identifiers.end());
        return identifiers;
    }
    bool waitForLabel(const QString& text) const
    {
        return waiting::until(
            [&] { return m_dialog->findChild<QLabel*>()->text().startsWith(text); });
    }
    std::string log() const
    {
        return m_dialog->findChild<QTextEdit*>()->toPlainText().toStdString();
    }
    void setMasks(bool etdrs, bool center)
    {
        widget().findChild<QCheckBox*>(QStringLiteral("useETDRSMask"))->setChecked(etdrs);
        widget().findChild<QCheckBox*>(QStringLiteral("useCenterMask"))->setChecked(center);
    }
    void run(const QString& button)
    {
        press(widget(), button);
        ASSERT_TRUE(waitForLabel(QStringLiteral("Segmentation success")));
        EXPECT_FALSE(m_dialog->isVisible());
    }

    /// The run's own dialog closes by itself, perhaps before it can be seen.
    static void expectRunFailure(DialogDriver& dialogs, const QString& part)
    {
        dialogs.expect([&dialogs, part](QDialog& dialog) {
            if (qobject_cast<SegUpdateDialog*>(&dialog)) {
                dialogs.expectMessageContaining(QStringLiteral("Segmentation Failure: "), part);
                return;
            }
            EXPECT_EQ(dialog.windowTitle().toStdString(), "Segmentation Failure: ");
            const auto* const box = qobject_cast<QMessageBox*>(&dialog);
            EXPECT_TRUE(box && box->text().contains(part));
            DialogDriver::click(dialog, QStringLiteral("OK"));
        });
    }

    bool m_testOptions = true; ///< to be set before SetUp
    std::unique_ptr<OCTAutoSegmentationModule> m_tab;
    SegUpdateDialog* m_dialog = nullptr;
};

} // namespace moduletest
