// Contents of test vectors: constants, uniform random numbers, ramps and the Jaehne signal. The random generator is the
// program's own, so that a run is repeatable on every platform.
#include "vkvector.h"

#include "vktypes.h"

#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

// Half the root of the greatest value: the product of two such values can't overflow.
const double MAXABS_32F = std::sqrt(static_cast<double>(std::numeric_limits<float>::max())) * 0.5;
const double MAXABS_64F = std::sqrt(std::numeric_limits<double>::max()) * 0.5;

constexpr double two63 = 9223372036854775808.0;
constexpr double minAbs32f = 1.1754943508222875e-38;
constexpr double minAbs64f = 2.2250738585072014e-308;
constexpr double halfPi = 1.5707963267948966;

// The congruential part of the generator and the scale of its 32 bits.
constexpr unsigned int lcgFactor = 69069;
constexpr unsigned int lcgTerm = 1013904243;
constexpr unsigned int lcgStart = 1131199209;
constexpr unsigned int borrowTerm = 18;
constexpr double scale32 = 2.3283064365387e-10;

constexpr int defaultSequence = 256;
constexpr int lastMode = setSeq;

template <class T>
constexpr vkType typeOf() {
    constexpr int width = static_cast<int>(sizeof(T)) * 8;
    constexpr int kind = std::is_floating_point_v<T> ? vkFloat : std::is_signed_v<T> ? vkSigned : 0;
    return static_cast<vkType>(width | kind);
}

// Both parts of a complex element.
template <class T>
void storePair(T* data, int index, T value) {
    vkStore(data, 2 * index, value);
    vkStore(data, 2 * index + 1, value);
}

template <class T>
void setReal(T* data, int count, double re) {
    const T value = vkConvert<T>(re);
    for (int i = 0; i < count; ++i) {
        vkStore(data, i, value);
    }
}

template <class T>
void setComplex(T* data, int count, double re, double im) {
    const T real = vkConvert<T>(re);
    const T imag = vkConvert<T>(im);
    for (int i = 0; i < count; ++i) {
        vkStore(data, 2 * i, real);
        vkStore(data, 2 * i + 1, imag);
    }
}

// Subtract with borrow, combined with a linear congruential generator.
template <class T>
void setRandUniform(T* data, int count, double lo, double hi, unsigned int* seed) {
    lo = std::fmax(lo, vkVector::getMinValue(typeOf<T>()));
    hi = std::fmin(hi, vkVector::getMaxValue(typeOf<T>()));
    const double scale = (hi - lo) * scale32;
    const double middle = (hi + lo) * 0.5;
    unsigned int x2 = *seed;
    unsigned int x1 = x2 * lcgFactor + lcgTerm;
    unsigned int x0 = x1 * lcgFactor + lcgTerm;
    unsigned int y = lcgStart;
    unsigned int borrow = ~0U;
    for (int i = 0; i < count; ++i) {
        y = y * lcgFactor + lcgTerm;
        unsigned int t = x1 - x0 + borrow;
        const bool borrows = (t >> 31) != 0;
        borrow = borrows ? ~0U : 0U;
        if (borrows) {
            t -= borrowTerm;
        }
        vkStore(data, i, vkConvert<T>(static_cast<int>(y + t) * scale + middle));
        x0 = x1;
        x1 = x2;
        x2 = t;
    }
    *seed = x2;
}

template <class T, class Put>
void putSequence(int count, double first, double last, double step, double wrap, Put put) {
    first = std::fmax(first, vkVector::getMinValue(typeOf<T>()));
    last = std::fmin(last, vkVector::getMaxValue(typeOf<T>()));
    double x = first;
    for (int i = 0; i < count; ++i) {
        put(i, vkConvert<T>(x));
        x += step;
        if (x > last) {
            x = wrap != 0 ? first : last;
        }
    }
}

template <class T>
void setRealSeq(T* data, int count, double first, double last, double step, double wrap) {
    putSequence<T>(count, first, last, step, wrap, [data](int i, T x) { vkStore(data, i, x); });
}

template <class T>
void setCplxSeq(T* data, int count, double first, double last, double step, double wrap) {
    putSequence<T>(count, first, last, step, wrap, [data](int i, T x) { storePair(data, i, x); });
}

template <class T>
T jaehneAt(int i, double factor, double magnitude, double offset) {
    return vkConvert<T>(magnitude * std::sin(factor * i * i) + offset);
}

template <class T>
void setRealJaehne(T* data, int count, double magnitude, double offset) {
    const double factor = halfPi / count;
    for (int i = 0; i < count; ++i) {
        vkStore(data, i, jaehneAt<T>(i, factor, magnitude, offset));
    }
}

template <class T>
void setCplxJaehne(T* data, int count, double magnitude, double offset) {
    const double factor = halfPi / count;
    for (int i = 0; i < count; ++i) {
        storePair(data, i, jaehneAt<T>(i, factor, magnitude, offset));
    }
}

struct Limits {
    vkType type;
    double min;
    double max;
    double minAbs;
};

bool findLimits(vkType type, Limits& found) {
    const Limits table[] = {
        {vk8u, 0, 255, 1},
        {vk16u, 0, 65535, 1},
        {vk32u, 0, 4294967295.0, 1},
        {vk64u, 0, two63, 1},
        {vk8s, -128, 127, 1},
        {vk16s, -32768, 32767, 1},
        {vk32s, -2147483648.0, 2147483647, 1},
        {vk64s, -two63, two63, 1},
        {vk32f, -MAXABS_32F, MAXABS_32F, minAbs32f},
        {vk64f, -MAXABS_64F, MAXABS_64F, minAbs64f},
    };
    for (const Limits& row : table) {
        if (row.type == vkRealOf(type)) {
            found = row;
            return true;
        }
    }
    return false;
}

} // namespace

double vkVector::getMinValue(vkType type) {
    Limits limits;
    return findLimits(type, limits) ? limits.min : 0;
}

double vkVector::getMaxValue(vkType type) {
    Limits limits;
    return findLimits(type, limits) ? limits.max : 1;
}

double vkVector::getMinAbsValue(vkType type) {
    Limits limits;
    return findLimits(type, limits) ? limits.minAbs : 1;
}

double vkVector::minValue() const {
    Limits limits;
    return findLimits(m_type, limits) ? limits.min : 1;
}

double vkVector::maxValue() const {
    return getMaxValue(m_type);
}

double rnd() {
    const unsigned int low = static_cast<unsigned int>(std::rand()) & 0xFFFFU;
    const unsigned int high = static_cast<unsigned int>(std::rand()) & 0xFFFFU;
    return low | high << 16;
}

double rndMax() {
    return vkVector::getMaxValue(vk32u);
}

void vkVector::setDataConst(void* data, int count, double re, double im) const {
    vkWithComponent(m_type, [&](auto component) {
        auto* parts = static_cast<decltype(component)*>(data);
        if (vkIsComplex(m_type)) {
            setComplex(parts, count, re, im);
        } else {
            setReal(parts, count, re);
        }
    });
}

void vkVector::setDataRandom(void* data, int count, double lo, double hi) const {
    const int numbers = vkIsComplex(m_type) ? 2 * count : count;
    vkWithComponent(m_type, [&](auto component) {
        setRandUniform(static_cast<decltype(component)*>(data), numbers, lo, hi, &m_seed);
    });
}

void vkVector::setDataSequence(void* data, int count, double first, double last, double step, double wrap) const {
    vkWithComponent(m_type, [&](auto component) {
        auto* parts = static_cast<decltype(component)*>(data);
        if (vkIsComplex(m_type)) {
            setCplxSeq(parts, count, first, last, step, wrap);
        } else {
            setRealSeq(parts, count, first, last, step, wrap);
        }
    });
}

bool vkVector::updateJaehneMagn(double& magnitude, double& offset) const {
    if (magnitude < 0) {
        return false;
    }
    const double min = minValue();
    const double max = maxValue();
    magnitude = std::fmin(magnitude, (max - min) * 0.5);
    offset = (m_type & (vkSigned | vkFloat)) != 0 ? 0 : (min + max) * 0.5;
    return true;
}

void vkVector::setVectorJaehne(void* data, int count, double magnitude) const {
    double offset = 0;
    if (!updateJaehneMagn(magnitude, offset)) {
        return;
    }
    vkWithComponent(m_type, [&](auto component) {
        auto* parts = static_cast<decltype(component)*>(data);
        if (vkIsComplex(m_type)) {
            setCplxJaehne(parts, count, magnitude, offset);
        } else {
            setRealJaehne(parts, count, magnitude, offset);
        }
    });
}

static double defaultConst(vkType type) {
    return vkIsFloat(type) ? 1.00001 : 2;
}

void vkVector::setConst() {
    setConst(defaultConst(m_type), defaultConst(m_type));
}

void vkVector::setConst(double re, double im) {
    if (m_data) {
        setDataConst(m_data, m_length, re, im);
    }
}

void vkVector::setMinValue() {
    setConst(minValue(), minValue());
}

void vkVector::setMaxValue() {
    setConst(maxValue(), maxValue());
}

void vkVector::setJaehne() {
    setJaehne(vkIsFloat(m_type) ? 1 : (maxValue() - minValue()) * 0.5);
}

void vkVector::setJaehne(double magnitude) {
    if (m_data) {
        setVectorJaehne(m_data, m_length, magnitude);
    }
}

void vkVector::setSequence(double first, double last) {
    if (m_length == 1) {
        setConst(first, 0);
    } else {
        setSequence(first, last, (last - first) / (m_length - 1), true);
    }
}

void vkVector::setSequence(double first, double last, double step, bool wrap) {
    if (m_data) {
        setDataSequence(m_data, m_length, first, last, step, wrap ? 1 : 0);
    }
}

void vkVector::setRandom() {
    if (vkIsFloat(m_type)) {
        setRandom(-1, 1);
    } else {
        setRandom(minValue(), maxValue());
    }
}

void vkVector::setRandom(double lo, double hi) {
    if (m_data) {
        setDataRandom(m_data, m_length, lo, hi);
    }
}

void vkVector::setRandom(double lo, double hi, unsigned int seed) {
    m_seed = seed;
    setRandom(lo, hi);
}

void vkVector::setVector(SetMode mode, double a, double b) {
    switch (mode) {
    case setDefault:
        setConst();
        break;
    case setZero:
        setConst(0, 0);
        break;
    case setOne:
        setConst(1, 0);
        break;
    case setMax:
        setMaxValue();
        break;
    case setMin:
        setMinValue();
        break;
    case setValue:
        setConst(a, b);
        break;
    case setRand:
        if (a == b) {
            setRandom();
        } else {
            setRandom(a, b);
        }
        break;
    case setSeq: {
        double step = (b - a) / (m_length > 0 ? m_length : defaultSequence);
        if (!vkIsFloat(m_type) && step < 1) {
            step = 1;
        }
        setSequence(a, b, step, true);
        break;
    }
    }
}

void vkVector::setIndex(int index, SetMode mode, double a, double b) {
    setElement(getPointerAt(index), mode, a, b);
}

void vkVector::setElement(void* place, SetMode mode, double a, double b) const {
    if (!place || mode < 0 || mode > lastMode) {
        return;
    }
    switch (mode) {
    case setDefault: // a new element is cleared
    case setZero:
        setDataConst(place, 1, 0, 0);
        break;
    case setOne:
        setDataConst(place, 1, 1, 0);
        break;
    case setMax:
        setDataConst(place, 1, maxValue(), maxValue());
        break;
    case setMin:
        setDataConst(place, 1, minValue(), minValue());
        break;
    case setValue:
        setDataConst(place, 1, a, b);
        break;
    case setRand:
        if (a == b) {
            setDataRandom(place, 1, minValue(), maxValue());
        } else {
            setDataRandom(place, 1, a, b);
        }
        break;
    case setSeq:
        setDataConst(place, 1, a, 0);
        break;
    }
}
