#include "GuardedApplication.h"

#include "DialogDriver.h"
#include "kelpCheck.h"
#include "kelpException.h"

#include <QElapsedTimer>
#include <QPushButton>
#include <QTest>
#include <QWidget>

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

/// Throws from its event handlers.
class Thrower : public QWidget
{
protected:
    void mousePressEvent(QMouseEvent*) override { throw kelp::IOFailure("the scan is gone"); }
    void keyPressEvent(QKeyEvent*) override { throw std::runtime_error("out of something"); }
};

/// Throws the same at every paint event.
class PaintThrower : public QWidget
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override
    {
        ++paints;
        throw kelp::Assertion("cannot paint");
    }
};

void becomeFree()
{
    constexpr int longEnoughMs = 300;
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < longEnoughMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
}

/// Lets the driver answer what comes up.
void waitUntilAnswered(const DialogDriver& dialogs)
{
    constexpr int longestMs = 5000;
    QElapsedTimer timer;
    timer.start();
    while (dialogs.pending() > 0 && timer.elapsed() < longestMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
}

TEST(GuardedApplication, AnExceptionFromAnEventHandlerIsShownAndTheProgramGoesOn)
{
    Thrower thrower;
    thrower.show();
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Unexpected Problem"),
                                    QStringLiteral("the scan is gone"));
    QTest::mouseClick(&thrower, Qt::LeftButton);
    waitUntilAnswered(dialogs);
    dialogs.expectMessageContaining(QStringLiteral("Unexpected Problem"),
                                    QStringLiteral("out of something"));
    QTest::keyClick(&thrower, Qt::Key_A);
    waitUntilAnswered(dialogs);
}

TEST(GuardedApplication, AWidgetThatCannotPaintDoesNotKeepTheUserInBoxes)
{
    PaintThrower thrower;
    thrower.resize(100, 100);
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Unexpected Problem"),
                                    QStringLiteral("cannot paint"));
    thrower.show();
    waitUntilAnswered(dialogs);
    const int before = thrower.paints;
    for (int repaint = 0; repaint < 3; ++repaint) {
        thrower.update();
        becomeFree();
    }
    EXPECT_GT(thrower.paints, before);
    EXPECT_EQ(dialogs.messages().size(), 1);
}

} // namespace

int main(int argc, char** argv)
{
    ::testing::InitGoogleMock(&argc, argv);
    const kelp::GuardedApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
