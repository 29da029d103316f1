#include "GuardedApplication.h"

#include "DialogDriver.h"
#include "Waiting.h"
#include "kelpCheck.h"
#include "kelpException.h"

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

/// Lets the driver answer what comes up.
void waitUntilAnswered(const DialogDriver& dialogs)
{
    EXPECT_TRUE(waiting::until([&dialogs] { return dialogs.pending() == 0; }));
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
    for (int repaint = 0; repaint < 3; ++repaint) {
        const int before = thrower.paints;
        thrower.update();
        EXPECT_TRUE(waiting::until([&] { return thrower.paints > before; }));
        // A box would be posted by the paint event, and the driver would refuse it.
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(dialogs.messages().size(), 1);
}

} // namespace

int main(int argc, char** argv)
{
    ::testing::InitGoogleMock(&argc, argv);
    // However slowly a busy machine paints, it does so within this time of its box.
    constexpr qint64 hourMs = 3600000;
    const kelp::GuardedApplication application(argc, argv, hourMs);
    return RUN_ALL_TESTS();
}
