// The entry point: the table of commands.
#include "program.h"

int main(int argc, char** argv) {
    krlab::Program program;
    krlab::addRun(program);
    krlab::addAb(program);
    krlab::addCompare(program);
    krlab::addCheck(program);
    krlab::addReplay(program);
    krlab::addResume(program);
    krlab::addTidy(program);
    krlab::addDoctor(program);
    krlab::addReport(program);
    krlab::addCount(program);
    krlab::addHistory(program);
    krlab::addWatch(program);
    krlab::addBudget(program);
    krlab::addFleet(program);
    return program.main(argc, argv);
}
