// States in memory of the caller: the size, the start, and the copies in and out, as the address need not be aligned.
#pragma once

#include <cstdint>
#include <cstring>

#include "vekdefs.h"

namespace vek {

/// The bytes of a state.
template <class State>
VekStatus stateSize(int* pSize) {
    if (pSize == nullptr) {
        return vekStsNullPtrErr;
    }
    *pSize = static_cast<int>(sizeof(State));
    return vekStsNoErr;
}

/// A state with the mark of its kind, which tells memory that has had its start.
template <class Content, uint32_t kind>
struct Marked {
    static constexpr uint32_t kMark = kind;

    uint32_t mark = kind;
    Content content;

    static VekStatus size(int* pSize) { return stateSize<Marked>(pSize); }
    static VekStatus init(void* memory) { return start(memory, Marked{}); }
    static VekStatus init(void* memory, const Content& content) { return start(memory, Marked{kind, content}); }
    bool take(const void* memory) {
        std::memcpy(static_cast<void*>(this), memory, sizeof *this);
        return mark == kind;
    }
    void give(void* memory) const { std::memcpy(memory, this, sizeof *this); }

    /// Calls work(content) on a copy of the state at `memory`, which then goes back there.
    template <class Work>
    static VekStatus with(void* memory, Work work) {
        Marked state;
        if (!state.take(memory)) {
            return vekStsStateErr;
        }
        work(state.content);
        state.give(memory);
        return vekStsNoErr;
    }

private:
    static VekStatus start(void* memory, const Marked& fresh) {
        if (memory == nullptr) {
            return vekStsNullPtrErr;
        }
        std::memcpy(memory, &fresh, sizeof fresh);
        return vekStsNoErr;
    }
};

} // namespace vek
