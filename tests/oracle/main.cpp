#include "kernellevels.h"

int main(int argc, char** argv) {
    return kernellevels::runTests(argc, argv, {"G726Oracle"});
}
