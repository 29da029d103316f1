#include "kelpKeyEventTransition.h"

#include "Waiting.h"

#include <QSignalSpy>
#include <QState>
#include <QStateMachine>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

namespace {

using kelp::KeyEventTransition;

/// Two states; Shift pressed in the widget leads from the first to the second, its release back.
class KeyTransitions : public ::testing::Test
{
protected:
    KeyTransitions()
    {
        m_down =
            new KeyEventTransition(&m_widget, QEvent::KeyPress, Qt::Key_Shift, &m_idle, &m_picking);
        m_up = new KeyEventTransition(&m_widget, QEvent::KeyRelease, Qt::Key_Shift, &m_picking,
                                      &m_idle);
    }
    void SetUp() override
    {
        m_machine.addState(&m_idle);
        m_machine.addState(&m_picking);
        m_machine.setInitialState(&m_idle);
        m_machine.start();
        ASSERT_TRUE(waiting::until([this] { return isIn(m_idle); }));
    }
    void TearDown() override
    {
        // The states are members: the machine must not own them.
        m_machine.stop();
        m_machine.removeState(&m_idle);
        m_machine.removeState(&m_picking);
    }

    bool isIn(QAbstractState& state) const { return m_machine.configuration().contains(&state); }

    void sendKey(QEvent::Type type, int key, Qt::KeyboardModifiers modifiers, QWidget& target)
    {
        QKeyEvent event(type, key, modifiers);
        QCoreApplication::sendEvent(&target, &event);
        QCoreApplication::processEvents();
    }

    QWidget m_widget;
    QWidget m_otherWidget;
    QState m_idle;
    QState m_picking;
    QStateMachine m_machine;
    KeyEventTransition* m_down = nullptr;
    KeyEventTransition* m_up = nullptr;
};

TEST_F(KeyTransitions, ArePassedWhateverTheModifiersAndTellOfIt)
{
    QSignalSpy down(m_down, SIGNAL(triggered()));
    QSignalSpy up(m_up, SIGNAL(triggered()));
    sendKey(QEvent::KeyPress, Qt::Key_Shift, Qt::ShiftModifier | Qt::AltModifier, m_widget);
    EXPECT_TRUE(isIn(m_picking));
    EXPECT_EQ(down.size(), 1);
    sendKey(QEvent::KeyRelease, Qt::Key_Shift, Qt::ControlModifier, m_widget);
    EXPECT_TRUE(isIn(m_idle));
    EXPECT_EQ(up.size(), 1);
}

TEST_F(KeyTransitions, MindTheKeyTheKindOfEventAndTheWidget)
{
    sendKey(QEvent::KeyPress, Qt::Key_Control, Qt::NoModifier, m_widget);
    EXPECT_TRUE(isIn(m_idle));
    sendKey(QEvent::KeyRelease, Qt::Key_Shift, Qt::NoModifier, m_widget);
    EXPECT_TRUE(isIn(m_idle));
    sendKey(QEvent::KeyPress, Qt::Key_Shift, Qt::NoModifier, m_otherWidget);
    EXPECT_TRUE(isIn(m_idle));
    sendKey(QEvent::KeyPress, Qt::Key_Shift, Qt::NoModifier, m_widget);
    EXPECT_TRUE(isIn(m_picking));
}

} // namespace
