// The test behind kelvarrig.h: parameters, vectors, and the life of a line.
#include "krown.h"

#include "kr.h"
#include "krcputick.h"
#include "krexcept.h"
#include "krio.h"
#include "krstream.h"

#include <algorithm>
#include <climits>
#include <cstring>

krOwnTest* krOwnTest::s_current = nullptr;
// Of the process: filled before main.
static krNameCells s_nameCells = nullptr;

int krRegNameCells(krNameCells cells) {
    s_nameCells = cells;
    return 1;
}

namespace kr {

Param::Param(const char* name, const Steps& walk) : krStepIterator<int>(name), m_walk(walk) {
}

Param::Param(const char* name, std::initializer_list<int> values) : krStepIterator<int>(name), m_list(values) {
}

void Param::define() {
    if (m_list.empty()) {
        set(m_walk.first, m_walk.last, m_walk.step, m_walk.oper);
        return;
    }
    setList({});
    for (const int value : m_list) {
        add(value);
    }
}

Size::Size(int fixed) : m_value([fixed] { return fixed; }) {
}

Size::Size(Param& parm) : m_value([&parm] { return static_cast<int>(parm); }), m_params{&parm} {
}

static int compute(int left, char oper, int right) {
    if (oper == '/' && right == 0) {
        throw krException(krString("a size is divided by zero"));
    }
    const long long a = left;
    const long long b = right;
    const long long exact = oper == '+' ? a + b : oper == '-' ? a - b : oper == '*' ? a * b : a / b;
    return static_cast<int>(std::clamp<long long>(exact, INT_MIN, INT_MAX));
}

Size Size::combine(const Size& left, char oper, const Size& right) {
    Size result([left, oper, right] { return compute(left.value(), oper, right.value()); });
    result.m_params = left.m_params;
    result.m_params.insert(result.m_params.end(), right.m_params.begin(), right.m_params.end());
    return result;
}

// A generator without a state: an element is what its place makes it, in whatever order vectors are filled.
double detail::spread(int stream, int index) {
    unsigned long long bits =
        (static_cast<unsigned long long>(static_cast<unsigned>(stream) + 1U) << 32) + static_cast<unsigned>(index);
    bits *= 0x9E3779B97F4A7C15ULL;
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9ULL;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBULL;
    bits ^= bits >> 31;
    return static_cast<double>(bits >> 11) * 0x1p-53;
}

krString Data::objectInfo() const {
    return krFormat("kr::Vector length=%d size=%d", count(), m_bytes);
}

bool Data::create() {
    release();
    const long long bytes = static_cast<long long>(m_size.value()) * m_elementBytes;
    if (bytes < 1 || bytes > INT_MAX) {
        return memError(static_cast<int>(std::clamp<long long>(bytes, INT_MIN, INT_MAX)));
    }
    const int stream = krTest::m_vectorNum;
    m_memory = krTest::allocate(static_cast<int>(bytes), krGetAlignByByte() ? -1 : -m_elementBytes, this);
    if (m_memory == nullptr) {
        return false;
    }
    m_bytes = static_cast<int>(bytes);
    fill(stream);
    return true;
}

void Data::release() {
    if (m_memory != nullptr) {
        krTest::deallocate(m_memory);
    }
    m_memory = nullptr;
    m_bytes = 0;
    m_copy.clear();
}

bool Data::reserveCopy() {
    const auto* bytes = static_cast<const unsigned char*>(m_memory);
    m_copy.assign(bytes, bytes + m_bytes);
    return m_bytes > 0;
}

bool Data::setReservedCopy() {
    if (m_memory == nullptr || m_copy.empty()) {
        return false;
    }
    std::memcpy(m_memory, m_copy.data(), m_copy.size());
    return true;
}

Measure::Measure(const detail::Name& name, detail::Code code) : m_test(new krOwnTest(name, std::move(code))) {
    krRegTest(m_test);
}

Measure& Measure::grid(std::initializer_list<Param*> params) {
    m_test->addParams(params, true);
    return *this;
}

Measure& Measure::data(std::initializer_list<Data*> vectors) {
    m_test->addData(vectors);
    return *this;
}

Measure& Measure::before(std::function<bool()> prepare) {
    m_test->setSetup(std::move(prepare));
    return *this;
}

Measure& Measure::elements(const Size& count, const char* unit) {
    m_test->setElements(count, unit);
    return *this;
}

Measure& Measure::flops(const Size& count) {
    m_test->setFlops(count);
    return *this;
}

Measure& Measure::teardown(std::function<void()> clean) {
    m_test->setTeardown(std::move(clean));
    return *this;
}

Measure& Measure::returnsValue() {
    m_test->setReturnsValue();
    return *this;
}

} // namespace kr

// Runs what the user wrote: an exception of any type leaves as the one that the harness contains.
template <class Section>
static auto contained(Section section) {
    try {
        return section();
    } catch (const krException&) {
        throw;
    } catch (const std::exception& thrown) {
        throw krException(krString(thrown.what()));
    } catch (...) {
        throw krException(krString("of an unknown type"));
    }
}

krOwnTest::krOwnTest(const kr::detail::Name& name, kr::detail::Code code)
    : krTest(call, code.prepare == nullptr ? nullptr : prepare, loop, statistic, name.text,
             krString(name.file).getFileTitle(), "kr::measure"),
      m_code(std::move(code)) {
    addParams(m_code.params, false);
    addData(m_code.data);
}

void krOwnTest::addParams(const std::vector<kr::Param*>& params, bool inFront) {
    for (kr::Param* parm : params) {
        const auto known = std::find(m_grid.begin(), m_grid.end(), parm);
        if (inFront) {
            if (known != m_grid.end()) {
                m_grid.erase(known);
            }
            m_grid.insert(m_grid.begin() + static_cast<std::ptrdiff_t>(m_inFront++), parm);
        } else if (known == m_grid.end()) {
            m_grid.push_back(parm);
        }
    }
}

void krOwnTest::addData(const std::vector<kr::Data*>& data) {
    for (kr::Data* vector : data) {
        if (std::find(m_data.begin(), m_data.end(), vector) == m_data.end()) {
            m_data.push_back(vector);
            addParams(vector->size().params(), false);
        }
    }
}

void krOwnTest::setElements(const kr::Size& count, const char* unit) {
    m_elements = count;
    m_unit = unit;
    addParams(count.params(), false);
}

void krOwnTest::setFlops(const kr::Size& count) {
    m_flops = count;
    addParams(count.params(), false);
}

krResult krOwnTest::run() {
    s_current = this;
    return krTest::run();
}

// The parameter that the cache states may change: the first that sizes a vector.
kr::Param* krOwnTest::cacheParam() const {
    for (const kr::Data* vector : m_data) {
        if (!vector->size().params().empty()) {
            return vector->size().params().front();
        }
    }
    return nullptr;
}

bool krOwnTest::canStart() {
    if (!m_code.optimised) {
        g_ostrm << WARN << "-- Warning: " << m_srcName
                << " was compiled without optimisation: these are not the clocks of a release\n"
                << msgEnd;
    }
    const kr::Param* sized = cacheParam();
    for (kr::Param* parm : m_grid) {
        parm->define();
        if (parm == sized) {
            regCacheParm(*parm, nullptr);
        } else {
            m_parms.append(parm);
        }
    }
    return true;
}

bool krOwnTest::initData() {
    return contained([this] {
        const bool made = std::all_of(m_data.begin(), m_data.end(), [](kr::Data* vector) { return vector->create(); });
        if (!made || m_elements.value() < 1) {
            putTextError(krDataFail);
            raiseResult(krDataFail);
            return false;
        }
        m_ready = true;
        if (m_setup && !m_setup()) {
            return false;
        }
        m_code.resolve(m_code.state.get());
        return true;
    });
}

void krOwnTest::flushData() {
    if (m_ready && m_teardown) {
        contained([this] { m_teardown(); });
    }
    release();
}

// Behind a fault the line's vectors are still there.
void krOwnTest::endTest() {
    release();
}

void krOwnTest::release() {
    m_ready = false;
    std::for_each(m_data.rbegin(), m_data.rend(), [](kr::Data* vector) { vector->release(); });
}

double krOwnTest::getDivisor() {
    return m_elements.value();
}

double krOwnTest::getFlops() {
    return m_flops.value();
}

void krOwnTest::funcToCstrm() {
    if (s_nameCells != nullptr) {
        s_nameCells(m_name);
    } else {
        g_cstrm << m_name << ""
                << "";
    }
}

krResult krOwnTest::loop(int calls, long long* clocks) {
    return s_current->timeLoop(calls, clocks);
}

krResult krOwnTest::statistic(int* calls, long long* minClocks) {
    return s_current->timeCalls(calls, minClocks);
}

int krOwnTest::call() {
    return s_current->callOnce();
}

int krOwnTest::prepare() {
    contained([] { s_current->m_code.prepare(s_current->m_code.state.get()); });
    return 0;
}

int krOwnTest::callOnce() {
    const int status = contained([this] { return m_code.call(m_code.state.get()); });
    return m_returnsValue ? 0 : status;
}

// A call beforehand, then the loop; the last status counts.
krResult krOwnTest::timeLoop(int calls, long long* clocks) {
    const void* state = m_code.state.get();
    int status = 0;
    *clocks = contained([&]() -> long long {
        if (m_code.prepare != nullptr) {
            m_code.prepare(state);
        }
        status = m_code.call(state);
        if (calls < 1) {
            return 0;
        }
        return krCpuTicker::getClockFactor() * static_cast<long long>(m_code.loop(state, calls, &status));
    });
    return resultOf(status);
}

// Single calls, the first of them not counted, until both minima are reached. A status that is not 0 is kept, a
// negative one ends it.
krResult krOwnTest::timeCalls(int* calls, long long* minClocks) {
    const void* state = m_code.state.get();
    int kept = 0;
    int counted = -1;
    long long total = 0;
    contained([&] {
        do {
            if (m_code.prepare != nullptr) {
                m_code.prepare(state);
            }
            int status = 0;
            const auto clocks = static_cast<long long>(m_code.once(state, &status));
            total = counted < 0 ? 0 : total + clocks;
            if (status != 0 && !m_returnsValue) {
                kept = status;
            }
            if (kept < 0) {
                break;
            }
            ++counted;
        } while (counted < *calls || krCpuTicker::getClockFactor() * total < *minClocks);
    });
    *calls = std::max(counted, 0);
    *minClocks = krCpuTicker::getClockFactor() * total;
    return resultOf(kept);
}

krResult krOwnTest::resultOf(int status) {
    if (status == 0 || m_returnsValue) {
        return krOk;
    }
    const krResult result = reportStatus(status, m_name);
    if (m_code.maybeValue) {
        g_ostrm << (status < 0 ? ERR : WARN)
                << "  If this int is a value and no status, register the function with .returnsValue()\n"
                << msgEnd;
    }
    return result;
}
