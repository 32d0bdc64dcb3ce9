// Memory for a state of the library, as a caller with no thought of alignment would give it.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vekdefs.h"

/// A state at an odd address, of the size that `getSize` tells for these parameters.
template <class State>
class StateMemory {
public:
    template <class GetSize, class... Parameters>
    explicit StateMemory(GetSize getSize, Parameters... parameters) {
        int size = 0;
        EXPECT_EQ(vekStsNoErr, getSize(parameters..., &size));
        m_bytes.resize(static_cast<std::size_t>(size) + 1);
    }
    // Where a State* is asked for: the tests call the functions as users do.
    operator State*() // NOLINT(google-explicit-constructor)
    {
        return reinterpret_cast<State*>(m_bytes.data() + 1);
    }

    /// What no init has been at.
    void clear() { m_bytes.assign(m_bytes.size(), 0); }

private:
    std::vector<std::uint8_t> m_bytes;
};
