// Every function that answers with a status refuses a null pointer, whichever of its arguments it is.
#include <gtest/gtest.h>

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "veks.h"
#include "veksc.h"

namespace {

alignas(64) unsigned char g_room[1 << 16];

// An argument that nothing is wrong with at first sight: memory for a pointer, a small number else.
template <class Arg>
Arg plain() {
    if constexpr (std::is_pointer_v<Arg>) {
        return reinterpret_cast<Arg>(g_room);
    } else if constexpr (std::is_class_v<Arg>) {
        return Arg{};
    } else if constexpr (std::is_enum_v<Arg>) {
        return static_cast<Arg>(1);
    } else {
        return static_cast<Arg>(10);
    }
}

template <std::size_t I, class... Args>
void expectNullRefused(const char* name, VekStatus (*function)(Args...)) {
    std::tuple<Args...> args{plain<Args>()...};
    if constexpr (std::is_pointer_v<std::tuple_element_t<I, std::tuple<Args...>>>) {
        std::get<I>(args) = nullptr;
        EXPECT_EQ(std::apply(function, args), vekStsNullPtrErr) << name << ", argument " << I + 1;
    }
}

template <class... Args>
void expectNullsRefused(const char* name, VekStatus (*function)(Args...)) {
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        (expectNullRefused<I>(name, function), ...);
    }
    (std::index_sequence_for<Args...>{});
}

TEST(VekRefusals, NoFunctionTakesANullPointer) {
#define EVERY_FUNCTION(name) expectNullsRefused(#name, name);
#include "every_function.inc"
#undef EVERY_FUNCTION
}

} // namespace
