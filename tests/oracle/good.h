// How a chain of calls looks at their statuses: a test fails by one that is not good. A program that runs the chains
// for another purpose defines these three before it includes them.
#pragma once

#ifndef GOOD
#include <gtest/gtest.h>

#define GOOD(call) EXPECT_EQ(vekStsNoErr, call)
/// A call whose warnings do not matter.
#define DONE(call) static_cast<void>(call)
#define SAME(one, other) EXPECT_EQ(one, other)
#endif
