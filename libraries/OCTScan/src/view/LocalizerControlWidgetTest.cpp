#include "LocalizerControlWidget.h"

#include "ExpectFailure.h"
#include "LocalizerGraphicsViewer.h"
#include "MouseEvents.h"
#include "PanelTestTools.h"

#include <QLCDNumber>
#include <QLabel>
#include <QSignalSpy>
#include <QSlider>
#include <QToolButton>

#include <gtest/gtest.h>

using namespace kelp;
using namespace kelp::oct;
using namespace kelp::oct::test;

namespace {

QList<int> firstArguments(const QSignalSpy& spy)
{
    QList<int> arguments;
    for (const QList<QVariant>& emission : spy) {
        arguments.append(emission.value(0).toInt());
    }
    return arguments;
}

class LocalizerControlWidgetTest : public testing::Test
{
protected:
    LocalizerControlWidgetTest() { showReady(m_control); }

    OCTScanPtr volume(int bScans) { return makeTestScan(lineScan(16, 4, bScans)); }
    /// All of the control tells the same B-scan.
    void expectAt(int index, int count)
    {
        EXPECT_EQ(m_control.getActiveSlice(), index);
        EXPECT_EQ(m_control.getViewer()->getActiveSlice(), index);
        EXPECT_EQ(m_slider.value(), index);
        EXPECT_EQ(m_slider.maximum(), count - 1);
        EXPECT_EQ(m_number.intValue(), index + 1);
        EXPECT_EQ(m_left.isEnabled(), index > 0);
        EXPECT_EQ(m_right.isEnabled(), index < count - 1);
    }
    void press(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&widget, key, modifiers);
    }

    LocalizerControlWidget m_control;
    QToolButton& m_left = childOf<QToolButton>(m_control, "previousBScan");
    QToolButton& m_right = childOf<QToolButton>(m_control, "nextBScan");
    QSlider& m_slider = childOf<QSlider>(m_control, "bScanSlider");
    QLCDNumber& m_number = childOf<QLCDNumber>(m_control, "bScanNumber");
    QSignalSpy m_bScans{&m_control, SIGNAL(bScanSelected(int))};
};

} // namespace

TEST_F(LocalizerControlWidgetTest, WithoutAScanNothingPages)
{
    EXPECT_FALSE(m_left.isEnabled());
    EXPECT_FALSE(m_right.isEnabled());
    EXPECT_FALSE(m_slider.isEnabled());
    QTest::mouseClick(&m_left, Qt::LeftButton);
    QTest::mouseClick(&m_right, Qt::LeftButton);
    press(*m_control.getViewer(), Qt::Key_Right);
    mouseevents::turnWheel(*m_control.getViewer()->viewport(), mouseevents::wheelDown,
                           Qt::ControlModifier);
    m_control.setActiveSlice(0);
    EXPECT_EQ(m_bScans.size(), 0);
    EXPECT_EQ(m_control.getActiveSlice(), -1);
}

TEST_F(LocalizerControlWidgetTest, TheViewerIsOfFixedSizeBelowItsLabel)
{
    EXPECT_EQ(m_control.getViewer()->size(), QSize(250, 250));
    EXPECT_EQ(m_control.findChild<QLabel*>()->text(), QStringLiteral("Localizer:"));
    m_control.setOCT(volume(3));
    const double zoom = m_control.getViewer()->getZoom();
    mouseevents::turnWheel(*m_control.getViewer()->viewport(), mouseevents::wheelDown,
                           Qt::NoModifier);
    EXPECT_DOUBLE_EQ(m_control.getViewer()->getZoom(), zoom);
}

TEST_F(LocalizerControlWidgetTest, StartsAtTheMiddleBScanAndTellsNothing)
{
    m_control.setOCT(volume(5));
    expectAt(2, 5);
    m_control.setOCT(volume(1));
    expectAt(0, 1);
    EXPECT_FALSE(m_slider.isEnabled());
    EXPECT_EQ(m_bScans.size(), 0);
}

TEST_F(LocalizerControlWidgetTest, TheArrowsStepByOneWithinBounds)
{
    m_control.setOCT(volume(3));
    m_control.setActiveSlice(0);
    expectAt(0, 3);
    QTest::mouseClick(&m_left, Qt::LeftButton);
    for (int click = 0; click < 3; ++click) {
        QTest::mouseClick(&m_right, Qt::LeftButton);
    }
    expectAt(2, 3);
    QTest::mouseClick(&m_left, Qt::LeftButton);
    expectAt(1, 3);
    EXPECT_EQ(firstArguments(m_bScans), (QList<int>{1, 2, 1}));
}

TEST_F(LocalizerControlWidgetTest, SettingTheSliceKeepsAllInStepAndTellsNothing)
{
    m_control.setOCT(volume(5));
    m_control.setActiveSlice(4);
    expectAt(4, 5);
    m_control.setActiveSlice(5);
    m_control.setActiveSlice(-1);
    expectAt(4, 5);
    EXPECT_EQ(m_bScans.size(), 0);
}

TEST_F(LocalizerControlWidgetTest, DraggingTheSliderTellsEachBScanOnce)
{
    m_control.setOCT(volume(5));
    m_slider.setSliderDown(true);
    m_slider.setSliderPosition(3);
    m_slider.setSliderPosition(3);
    m_slider.setSliderPosition(0);
    m_slider.setSliderDown(false);
    expectAt(0, 5);
    EXPECT_EQ(firstArguments(m_bScans), (QList<int>{3, 0}));
}

TEST_F(LocalizerControlWidgetTest, TheKeysPageFromTheLocalizerAndFromTheSlider)
{
    const int count = 40;
    m_control.setOCT(volume(count));
    for (QWidget* const widget :
         {static_cast<QWidget*>(m_control.getViewer()), static_cast<QWidget*>(&m_slider)}) {
        m_control.setActiveSlice(20);
        m_bScans.clear();
        for (const Qt::Key key :
             {Qt::Key_Right, Qt::Key_Down, Qt::Key_Left, Qt::Key_Up, Qt::Key_PageDown,
              Qt::Key_PageUp, Qt::Key_End, Qt::Key_Right, Qt::Key_Home, Qt::Key_Up}) {
            press(*widget, key);
        }
        EXPECT_EQ(firstArguments(m_bScans), (QList<int>{21, 22, 21, 20, 24, 20, 39, 0}));
        expectAt(0, count);
    }
}

TEST_F(LocalizerControlWidgetTest, KeysWithModifiersAreLeftToTheMainForm)
{
    m_control.setOCT(volume(5));
    press(*m_control.getViewer(), Qt::Key_PageDown, Qt::ControlModifier);
    EXPECT_EQ(m_bScans.size(), 0);
}

TEST_F(LocalizerControlWidgetTest, TheWheelPagesWithCtrlOnly)
{
    m_control.setOCT(volume(5));
    QWidget& viewport = *m_control.getViewer()->viewport();
    mouseevents::turnWheel(viewport, mouseevents::wheelDown, Qt::ControlModifier);
    mouseevents::turnWheel(m_slider, mouseevents::wheelDown, Qt::ControlModifier);
    mouseevents::turnWheel(viewport, mouseevents::wheelDown, Qt::ControlModifier);
    mouseevents::turnWheel(viewport, -mouseevents::wheelDown, Qt::ControlModifier);
    mouseevents::turnWheel(viewport, mouseevents::wheelDown, Qt::NoModifier);
    mouseevents::turnWheel(m_slider, mouseevents::wheelDown, Qt::NoModifier);
    EXPECT_EQ(firstArguments(m_bScans), (QList<int>{3, 4, 3}));
    expectAt(3, 5);
}

TEST_F(LocalizerControlWidgetTest, TheSmallStepsOfAFineWheelAddUp)
{
    m_control.setOCT(volume(5));
    for (int i = 0; i < 3; ++i) {
        mouseevents::turnWheel(*m_control.getViewer()->viewport(), mouseevents::wheelDown / 4,
                               Qt::ControlModifier);
    }
    EXPECT_EQ(m_bScans.size(), 0);
    mouseevents::turnWheel(*m_control.getViewer()->viewport(), mouseevents::wheelDown / 4,
                           Qt::ControlModifier);
    EXPECT_EQ(firstArguments(m_bScans), QList<int>{3});
}

TEST_F(LocalizerControlWidgetTest, APressOnTheLocalizerKeepsAllInStepAndTellsOnce)
{
    const OCTScanPtr scan = volume(5);
    m_control.setOCT(scan);
    const QSignalSpy aScans(&m_control, SIGNAL(aScanSelected(int)));
    QTest::mouseClick(m_control.getViewer()->viewport(), Qt::LeftButton, {},
                      seenAt(*m_control.getViewer(), {0.0, 0.4}));
    expectAt(4, 5);
    EXPECT_EQ(firstArguments(m_bScans), QList<int>{4});
    EXPECT_EQ(aScans.size(), 1);
}

TEST_F(LocalizerControlWidgetTest, ANullScanOrMaskIsRefusedAndClearingStopsThePaging)
{
    EXPECT_EQ(failure<Assertion>([this] { m_control.setOCT(OCTScanPtr()); }),
              "OCTScan/src/view/LocalizerControlWidget::kelp::oct::LocalizerControlWidget::setOCT: "
              "OCT scan is null.");
    EXPECT_EQ(
        failure<Assertion>([this] { m_control.setMask(SegmentationMaskPtr()); }),
        "OCTScan/src/view/LocalizerControlWidget::kelp::oct::LocalizerControlWidget::setMask: "
        "Segmentation mask is null.");
    m_control.setOCT(volume(5));
    m_control.clearOCT();
    EXPECT_FALSE(m_right.isEnabled());
    m_control.increaseSlice();
    EXPECT_EQ(m_bScans.size(), 0);
}
