// The cache-state iterator: the check of the sizes, the retries, and the change of an int parameter.
#include "krcache.h"

#include "krlib.h"

#include <climits>

namespace {

constexpr int inCache = 0;
constexpr int outOfCache = 1;
constexpr int maxTries = 11;
constexpr double firstLowFactor = 0.1;
constexpr double lastLowFactor = 0.01;
constexpr double factorTolerance = 0.0001;
constexpr double inCacheShare = 0.9;
constexpr double outOfCacheShare = 1.05;

int toBytes(double size) {
    return size < INT_MAX ? static_cast<int>(size) : INT_MAX;
}

} // namespace

krCacheIterator::krCacheIterator(krParameter& parm, krObject* object, krCacheSetFunc setFunc)
    : krIterator<int>("cacheIterator"), m_parm(&parm), m_object(object), m_lowFactor(firstLowFactor),
      m_setFunc(setFunc) {
    setList({inCache, outOfCache});
}

krString krCacheIterator::valueString() const {
    return m_parm->valueString();
}

krString krCacheIterator::defaultString() const {
    return m_parm->defaultString();
}

krString krCacheIterator::validString() const {
    return m_parm->validString();
}

krString krCacheIterator::description() const {
    return m_parm->description();
}

krString krCacheIterator::prompt() const {
    return m_parm->prompt();
}

void krCacheIterator::toOStream(krOStream& stream) const {
    m_parm->toOStream(stream);
}

void krCacheIterator::toCStream(krCStream& stream) const {
    m_parm->toCStream(stream);
}

void krCacheIterator::fromIStream(krIStream& stream) {
    m_parm->fromIStream(stream);
}

bool krCacheIterator::nextValue() {
    m_tries = 0;
    m_info.assign("");
    m_lowFactor = firstLowFactor;
    return krIterator<int>::nextValue() && m_parm->firstValue();
}

int krCacheIterator::cacheSize() const {
    int size = 0;
    return kr_vekGetMaxCacheSizeB(&size) == 0 ? size : 0;
}

int krCacheIterator::getObjectSize() const {
    return m_object ? m_object->objectSize() : 0;
}

int krCacheIterator::getTotalSize() const {
    long long total = 0;
    int size = 0;
    for (void* block = krMallocFirst(&size, nullptr); block; block = krMallocNext(&size, nullptr)) {
        total += size;
    }
    return total < INT_MAX ? static_cast<int>(total) : INT_MAX;
}

int krCacheIterator::lowSize() const {
    return toBytes(cacheSize() * (value() == inCache ? m_lowFactor : outOfCacheShare));
}

int krCacheIterator::highSize() const {
    return value() == inCache ? toBytes(cacheSize() * inCacheShare) : INT_MAX;
}

krString krCacheIterator::getComment() const {
    switch (value()) {
    case inCache:
        return "inCache";
    case outOfCache:
        return "outofCache";
    default:
        return "";
    }
}

void krCacheIterator::outputInfo() const {
    if (g_ostrm.outLevel() < PERF) {
        g_ostrm << ERR << m_info << msgEnd;
    }
}

// Lowers the floor of the in-cache window once; when it is down already, no further retry is left.
bool krCacheIterator::dropLowFactor() {
    if (m_lowFactor - factorTolerance <= lastLowFactor) {
        m_tries = maxTries + 1;
        return false;
    }
    m_lowFactor = lastLowFactor;
    return true;
}

bool krCacheIterator::validateSize() {
    m_objectSize = getObjectSize();
    m_totalSize = getTotalSize();
    if (m_objectSize == 0) {
        m_objectSize = m_totalSize;
    }
    const bool tooSmall = m_objectSize < lowSize();
    const bool tooBig = m_totalSize > highSize();
    if (!tooSmall && !tooBig) {
        m_tries = 0;
        m_info.assign("");
        return true;
    }
    const krString head = krString("      ") + getComment() + " try: cacheParm=" + m_parm->valueString();
    krString text;
    if (tooSmall) {
        text << head << (m_object ? " objectSize=" : " totalSize=") << m_objectSize << " < " << lowSize() << "\n";
    }
    if (tooBig) {
        text << head << " totalSize=" << m_totalSize << " > " << highSize() << "\n";
    }
    m_info += text;
    g_ostrm << PERF << text << msgEnd;
    if (tooSmall && tooBig) {
        dropLowFactor();
    } else if (m_tries >= 2 && tooSmall && m_wasTooBig && dropLowFactor()) {
        return validateSize();
    }
    m_wasTooBig = tooBig;
    return false;
}

bool krCacheIterator::repeatValue() {
    ++m_tries;
    return m_tries <= maxTries && setNewValue();
}

bool krCacheIterator::setNewValue() {
    const int high = highSize();
    const bool tooBig = m_totalSize > high;
    const int size = tooBig ? m_totalSize : m_objectSize;
    const int bound = tooBig ? high : lowSize();
    const bool stepwise = m_tries > 1;
    return m_setFunc ? m_setFunc(m_parm, size, bound, stepwise) : setNewValueToParm(size, bound, stepwise);
}

bool krCacheIterator::setNewValueToParm(int /*size*/, int /*bound*/, bool /*stepwise*/) {
    return false;
}

int krCacheIterator::shifted(int value, int count) {
    if (count <= 0) {
        return count > -31 ? value >> -count : 0;
    }
    const long long wide = count < 31 ? static_cast<long long>(value) << count : LLONG_MAX;
    return wide <= INT_MAX ? static_cast<int>(wide) : 0;
}

template <>
bool krCacheIteratorInt::updateValue(int& value, int size, int bound, bool stepwise) {
    int count = 0;
    if (stepwise) {
        count = size < bound ? 1 : -1;
    } else {
        estimate(
            size, bound, [&count] { ++count; }, [&count] { --count; });
    }
    value = shifted(value, count);
    return value > 0;
}
