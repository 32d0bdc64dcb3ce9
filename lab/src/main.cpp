// The entry point: the table of commands.
#include "commands.h"

int main(int argc, char** argv) {
    krlab::Program program;
    krlab::addAb(program);
    return program.main(argc, argv);
}
