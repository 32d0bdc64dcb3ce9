// States in the caller's memory, which has no alignment: a mark that Init has been there, and the plain data.
#pragma once

#include <cstdint>
#include <cstring>

#include "sc/common/signal_check.h"
#include "vekdefs.h"

namespace vek::g7291 {

// Data has a member `mark` and is of a kind that a copy of its bytes carries over.
template <class Data>
VekStatus stateSize(int* size) {
    if (anyNull(size)) {
        return vekStsNullPtrErr;
    }
    *size = static_cast<int>(sizeof(Data));
    return vekStsNoErr;
}

template <class Data>
VekStatus initState(void* state, uint32_t mark) {
    if (anyNull(state)) {
        return vekStsNullPtrErr;
    }
    Data data{};
    data.mark = mark;
    std::memcpy(state, &data, sizeof data);
    return vekStsNoErr;
}

// False for a state that Init has not set up.
template <class Data>
bool loadState(const void* state, uint32_t mark, Data& data) {
    std::memcpy(&data, state, sizeof data);
    return data.mark == mark;
}

template <class Data>
void storeState(void* state, const Data& data) {
    std::memcpy(state, &data, sizeof data);
}

} // namespace vek::g7291
