#include "krheaplot.h"

#include <cstdlib>

// Blocks lie at lines of 64 bytes; a page has 64 of them.
static constexpr size_t lineBytes = 64;
static constexpr size_t lines = 64;

krHeapLot::krHeapLot(const char* number)
    : m_wanted(number != nullptr),
      m_random(number == nullptr ? 1 : static_cast<std::minstd_rand::result_type>(std::strtoul(number, nullptr, 10))) {
}

size_t krHeapLot::draw() {
    if (m_wanted) {
        // The old one goes when the new one stands: else that would take its place.
        m_block = std::vector<char>(lineBytes * (1 + m_random() % lines));
    }
    return m_block.size();
}
