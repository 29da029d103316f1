#include "GuardedApplication.h"
#include "kelpTrace.h"

#include <gmock/gmock.h>

#include <fstream>

int main(int argc, char** argv)
{
    ::testing::InitGoogleMock(&argc, argv);
    // Dialogs of a desktop's own would be out of a test's reach.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    // Into the test's own folder: among the thousands of lines of whole sessions nobody would find
    // the failure.
    std::ofstream traces("traces.txt");
    kelp::Trace::redirect(&traces);
    const kelp::GuardedApplication application(argc, argv);
    const int exitCode = RUN_ALL_TESTS();
    kelp::Trace::redirect(nullptr);
    return exitCode;
}
