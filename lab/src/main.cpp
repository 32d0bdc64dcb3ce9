// The entry point: the table of commands.
#include "program.h"

int main(int argc, char** argv) {
    krlab::Program program;
    return program.main(argc, argv);
}
