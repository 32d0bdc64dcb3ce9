// Where on the heap a test's data come to lie.
#pragma once

#include <random>
#include <vector>

/// What tests before leave on the heap, down to the digits of their figures, settles where the data of the next one lie
/// within a page, and some functions take 3 % more where reads seem to meet writes a page away. Who compares two
/// programs must not take that for their difference: with a number in KR_HEAP_LOT a block of a size drawn by lot stands
/// before the data of each test.
class krHeapLot {
public:
    /// `number` as text, from which all is drawn; null draws nothing.
    explicit krHeapLot(const char* number);
    /// Puts another block in place of the one that stands there; returns its bytes, 0 if nothing is drawn.
    size_t draw();

private:
    bool m_wanted;
    std::minstd_rand m_random;
    std::vector<char> m_block;
};
