#include "kernellevels.h"

int main(int argc, char** argv) {
    return kernellevels::runTests(
        argc, argv, {"FixMath", "VekEveryValue", "VekG7291Spherical", "VekSymbols", "VekWbeHighIsf", "VekWbeLattice"});
}
