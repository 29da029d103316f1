#include "GuardedApplication.h"

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    ::testing::InitGoogleMock(&argc, argv);
    // Dialogs of a desktop's own would be out of a test's reach.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const kelp::GuardedApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
