#include "CompareCommand.h"

int main(int argc, char** argv)
{
    return kelp::compare::runCommand(argc, argv);
}
