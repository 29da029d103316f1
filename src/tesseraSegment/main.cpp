#include "Command.h"
#include "ScanWorker.h"

#include <cstring>

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], kelp::command::workerArgument) == 0) {
        return kelp::command::runScanWorker(argc, argv);
    }
    return kelp::command::runCommand(argc, argv);
}
