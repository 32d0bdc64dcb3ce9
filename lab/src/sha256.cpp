#include "sha256.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <fmt/format.h>

namespace krlab {

namespace {

/// The first 32 bits of the fractional parts of the cube roots of the first 64 primes (section 4.2.2).
constexpr std::array<std::uint32_t, 64> roundWords = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

using State = std::array<std::uint32_t, 8>;

void addBlock(State& state, const unsigned char* block) {
    std::array<std::uint32_t, 64> w;
    for (size_t t = 0; t < 16; ++t) {
        w[t] = static_cast<std::uint32_t>(block[4 * t]) << 24 | static_cast<std::uint32_t>(block[4 * t + 1]) << 16 |
               static_cast<std::uint32_t>(block[4 * t + 2]) << 8 | block[4 * t + 3];
    }
    for (size_t t = 16; t < 64; ++t) {
        const std::uint32_t a = w[t - 15];
        const std::uint32_t b = w[t - 2];
        w[t] = w[t - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ (a >> 3)) + w[t - 7] +
               (std::rotr(b, 17) ^ std::rotr(b, 19) ^ (b >> 10));
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (size_t t = 0; t < 64; ++t) {
        const std::uint32_t t1 =
            h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + ((e & f) ^ (~e & g)) + roundWords[t] + w[t];
        const std::uint32_t t2 =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    const State sum = {a, b, c, d, e, f, g, h};
    for (size_t i = 0; i < sum.size(); ++i) {
        state[i] += sum[i];
    }
}

} // namespace

std::string sha256(std::string_view data) {
    State state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    const auto* bytes = reinterpret_cast<const unsigned char*>(data.data());
    size_t left = data.size();
    for (; left >= 64; left -= 64, bytes += 64) {
        addBlock(state, bytes);
    }
    // The padding: a one bit, zeros, and the length in bits; one block or two.
    std::array<unsigned char, 128> last{};
    if (left > 0) {
        std::memcpy(last.data(), bytes, left);
    }
    last[left] = 0x80;
    const size_t size = left < 56 ? 64 : 128;
    const std::uint64_t bits = static_cast<std::uint64_t>(data.size()) * 8;
    for (size_t i = 0; i < 8; ++i) {
        last[size - 1 - i] = static_cast<unsigned char>(bits >> (8 * i));
    }
    addBlock(state, last.data());
    if (size == 128) {
        addBlock(state, last.data() + 64);
    }
    std::string text;
    for (const std::uint32_t word : state) {
        text += fmt::format("{:08x}", word);
    }
    return text;
}

} // namespace krlab
