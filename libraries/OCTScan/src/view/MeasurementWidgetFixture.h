#pragma once

#include "MeasurementTestTools.h"
#include "MeasurementWidget.h"
#include "QTableWidgetSelectedToClipboard.h"
#include "Waiting.h"
#include "kelpSettings.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSettings>
#include <QSlider>

#include <gmock/gmock.h>

namespace kelp::oct::test {

/// The widget on the screen, as it is with settings that were never changed.
class Measurement : public ::testing::Test
{
protected:
    Measurement() { m_widget.resize(980, 700); }

    void SetUp() override
    {
        m_widget.show();
        ASSERT_TRUE(waiting::untilExposed(m_widget));
    }
    void TearDown() override { forgetSettings(); }

    static void forgetSettings()
    {
        QSettings settings(QSettings::IniFormat, QSettings::UserScope, "Tessera", "Tessera");
        settings.remove(QStringLiteral("Gui/thicknessMap"));
    }

    template <typename Widget>
    static Widget& find(const QWidget& parent, const char* name)
    {
        auto* const widget = parent.findChild<Widget*>(QString::fromUtf8(name));
        EXPECT_TRUE(widget) << name;
        return *widget;
    }
    template <typename Widget>
    Widget& find(const char* name) const
    {
        return find<Widget>(m_widget, name);
    }

    void show(const MeasuredScan& measured)
    {
        m_widget.setOCT(measured.scan);
        m_widget.setSegmentation(measured.segmentation);
    }

    OCTMeasurementViewer& viewer() const { return *m_widget.getViewer(); }
    ViewerMouse mouse() const { return {viewer()}; }
    QTableWidgetSelectedToClipboard& table() const
    {
        return find<QTableWidgetSelectedToClipboard>("thicknessTable");
    }
    QString cell(int row, int column) const { return table().item(row, column)->text(); }
    QStringList cells() const
    {
        QStringList result;
        for (int row = 0; row < table().rowCount(); ++row) {
            for (int column = 0; column < table().columnCount(); ++column) {
                result.append(cell(row, column));
            }
        }
        return result;
    }
    QPoint middleOf(int row, int column) const
    {
        return table().visualItemRect(table().item(row, column)).center();
    }
    QString note() const
    {
        const auto& label = find<QLabel>("measurementNote");
        return label.isVisible() ? label.text() : QString();
    }
    QString coverageNote() const
    {
        const auto& label = find<QLabel>("coverageNote");
        return label.isVisible() ? label.text() : QString();
    }
    static void focus(QWidget& widget) { EXPECT_TRUE(waiting::untilFocused(widget)); }

    MeasurementWidget m_widget;
};

} // namespace kelp::oct::test
