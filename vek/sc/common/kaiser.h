// Kaiser's window, for filters that are computed at load.
#pragma once

#include <algorithm>
#include <cmath>

namespace vek {

class Kaiser {
public:
    explicit Kaiser(double beta) : m_beta(beta), m_middle(bessel(beta)) {}

    /// The window at the part u of half its length, -1..1; 1 in the middle.
    double operator()(double u) const { return bessel(m_beta * std::sqrt(std::max(0.0, 1 - u * u))) / m_middle; }

private:
    // Modified Bessel function of the first kind, order 0.
    static double bessel(double x) {
        double sum = 1;
        double term = 1;
        for (int k = 1; term > 1e-17 * sum; ++k) {
            term *= x * x / (4.0 * k * k);
            sum += term;
        }
        return sum;
    }

    double m_beta;
    double m_middle;
};

} // namespace vek
