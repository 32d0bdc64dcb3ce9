// Every function that answers with a status refuses a null pointer, whichever of its arguments it is.
#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>
#include <utility>

#include "veks.h"
#include "veksc.h"

namespace {

alignas(64) unsigned char g_room[1 << 16];

// An argument that nothing is wrong with at first sight, memory for a pointer, a small number else; or a null pointer.
template <class Arg>
Arg argument([[maybe_unused]] bool null) {
    if constexpr (std::is_pointer_v<Arg>) {
        return null ? nullptr : reinterpret_cast<Arg>(g_room);
    } else if constexpr (std::is_class_v<Arg>) {
        return Arg{};
    } else if constexpr (std::is_enum_v<Arg>) {
        return static_cast<Arg>(1);
    } else {
        return static_cast<Arg>(10);
    }
}

// Stands outside the templates, of which there is one a signature: they shall compile quickly.
void expectRefused(const char* name, std::size_t number, VekStatus status) {
    EXPECT_EQ(status, vekStsNullPtrErr) << name << ", argument " << number;
}

template <class... Args, std::size_t... I>
void expectNullsRefused(const char* name, VekStatus (*function)(Args...), std::index_sequence<I...>) {
    constexpr bool isPointer[] = {std::is_pointer_v<Args>...};
    for (std::size_t nulled = 0; nulled < sizeof...(Args); ++nulled) {
        if (isPointer[nulled]) {
            expectRefused(name, nulled + 1, function(argument<Args>(I == nulled)...));
        }
    }
}

template <class... Args>
void expectNullsRefused(const char* name, VekStatus (*function)(Args...)) {
    expectNullsRefused(name, function, std::index_sequence_for<Args...>{});
}

TEST(VekRefusals, NoFunctionTakesANullPointer) {
#define EVERY_FUNCTION(name) expectNullsRefused(#name, name);
#include "every_function.inc"
#undef EVERY_FUNCTION
}

} // namespace
