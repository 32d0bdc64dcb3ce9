// How a chain of calls looks at their statuses: a test fails by one that is not good. A program that runs the chains
// for another purpose defines these three before it includes them.
#pragma once

#include <cstddef>
#include <vector>

#ifndef GOOD
#include <gtest/gtest.h>

#define GOOD(call) EXPECT_EQ(vekStsNoErr, call)
/// A call whose warnings do not matter.
#define DONE(call) static_cast<void>(call)
#define SAME(one, other) EXPECT_EQ(one, other)
#endif

#include "vekdefs.h"

/// Memory of the size that `getSize` tells, for a state.
template <class GetSize>
std::vector<char> stateBytes(GetSize getSize) {
    int size = 0;
    SAME(vekStsNoErr, getSize(&size));
    return std::vector<char>(static_cast<std::size_t>(size));
}
