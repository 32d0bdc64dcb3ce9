#include "krheaplot.h"

#include "krbase.h"

#include <cstdlib>

// Blocks lie at lines of the caches; a page has so many of them.
static constexpr size_t lines = 4096 / krCacheLine;

krHeapLot::krHeapLot(const char* number)
    : m_wanted(number != nullptr),
      m_random(number == nullptr ? 1 : static_cast<std::minstd_rand::result_type>(std::strtoul(number, nullptr, 10))) {
}

size_t krHeapLot::draw() {
    if (m_wanted) {
        // The old one goes when the new one stands: else that would take its place.
        m_block = std::vector<char>(krCacheLine * (1 + m_random() % lines));
    }
    return m_block.size();
}
