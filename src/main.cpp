#include "AppBase.h"
#include "ApplicationAssembly.h"

int main(int argc, char** argv)
{
    kelp::oct::registerFactories();
    auto* const application = new AppBase(argc, argv, nullptr, false, false);
    kelp::oct::assembleApplication(*application);
    const int exitCode = application->run();
    delete application;
    return exitCode;
}
