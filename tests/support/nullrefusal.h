// What every function does with a null pointer: it refuses the call.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>
#include <utility>

#include "vekdefs.h"

namespace nullrefusal {

template <class Arg>
Arg nulledIf([[maybe_unused]] bool null, Arg arg) {
    if constexpr (std::is_pointer_v<Arg>) {
        return null ? nullptr : arg;
    } else {
        return arg;
    }
}

template <class Function, std::size_t... I, class... Args>
void expectEach(Function function, std::index_sequence<I...>, Args... args) {
    constexpr bool isPointer[] = {std::is_pointer_v<Args>...};
    for (std::size_t nulled = 0; nulled < sizeof...(Args); ++nulled) {
        if (isPointer[nulled]) {
            EXPECT_EQ(vekStsNullPtrErr, function(nulledIf(I == nulled, args)...)) << "argument " << nulled + 1;
        }
    }
}

} // namespace nullrefusal

/// A call with these arguments is refused whichever of its pointers is null.
template <class Function, class... Args>
void expectNullsRefused(Function function, Args... args) {
    nullrefusal::expectEach(function, std::index_sequence_for<Args...>{}, args...);
}
