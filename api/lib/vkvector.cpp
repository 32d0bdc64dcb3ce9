// Typed test data: memory, reserved copy, access and print. The contents are made in vkgenerate.
#include "vkvector.h"

#include "krtest.h"
#include "vktypes.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <type_traits>

unsigned int vkVector::m_seed = 0;

namespace {

int elementSize(vkType type) {
    return (type & vkWidthMask) * (vkIsComplex(type) ? 2 : 1) / 8;
}

struct TypeFormat {
    vkType type;
    const char* format;
};

constexpr TypeFormat formats[] = {
    {vk8u, "%4u"},
    {vk16u, "%6u"},
    {vk32u, "%11u"},
    {vk64u, "%24Lu"},
    {vk8s, "%5d"},
    {vk16s, "%7d"},
    {vk32s, "%12d"},
    {vk64s, "%24Ld"},
    {vk32f, "%14.6g"},
    {vk64f, "%20.12g"},
    {vk8sc, " (%5d,%5d)"},
    {vk16sc, " (%7d,%7d)"},
    {vk16uc, " (%6u,%6u)"},
    {vk32sc, " (%12d,%12d)"},
    {vk64sc, " (%24Ld,%24Ld)"},
    {vk32fc, " (%14.6g,%14.6g)"},
    {vk64fc, " (%20.12g,%20.12g)"},
};

const char* formatOf(vkType type) {
    for (const TypeFormat& row : formats) {
        if (row.type == type) {
            return row.format;
        }
    }
    return nullptr;
}

} // namespace

vkVector::vkVector() {
    init(vkUndef);
}

vkVector::vkVector(vkType type) {
    init(type);
}

vkVector::vkVector(const vkFunc& func, int typeIndex) {
    init(func, typeIndex);
}

vkVector::vkVector(const vkFunc& func, vkArg arg) {
    init(func, arg);
}

vkVector::~vkVector() {
    vkVector::deleteVector();
}

void vkVector::init(vkType type) {
    deleteVector();
    m_type = type;
    m_func = krString("_") + vkFunc::typeToString(type) + "_";
}

void vkVector::init(const vkFunc& func, int typeIndex) {
    const krString channels = func.channelsName(typeIndex);
    init(func.type(typeIndex));
    m_func += channels;
}

void vkVector::init(const vkFunc& func, vkArg arg) {
    const krString channels = func.channelsName(arg);
    init(func.type(arg));
    m_func += channels;
}

int vkVector::item(const vkFunc& func) {
    return elementSize(func.type(1));
}

void vkVector::setViews(void* data) {
    const auto show = [data](auto*& view) { view = static_cast<std::remove_reference_t<decltype(view)>>(data); };
    switch (m_type) {
    case vkUndef:
        return;
    case vk8u:
        return show(m_8u);
    case vk16u:
        return show(m_16u);
    case vk32u:
        return show(m_32u);
    case vk64u:
        return show(m_64u);
    case vk8s:
        return show(m_8s);
    case vk16s:
        return show(m_16s);
    case vk32s:
        return show(m_32s);
    case vk64s:
        return show(m_64s);
    case vk8sc:
        return show(m_8sc);
    case vk16sc:
        return show(m_16sc);
    case vk16uc:
        return show(m_16uc);
    case vk32sc:
        return show(m_32sc);
    case vk64sc:
        return show(m_64sc);
    case vk32f:
        return show(m_32f);
    case vk64f:
        return show(m_64f);
    case vk32fc:
        return show(m_32fc);
    case vk64fc:
        return show(m_64fc);
    }
}

// The view of 16uc keeps its old value.
void vkVector::clearViews() {
    m_8u = nullptr;
    m_16u = nullptr;
    m_32u = nullptr;
    m_64u = nullptr;
    m_8s = nullptr;
    m_16s = nullptr;
    m_32s = nullptr;
    m_64s = nullptr;
    m_8sc = nullptr;
    m_16sc = nullptr;
    m_32sc = nullptr;
    m_64sc = nullptr;
    m_32f = nullptr;
    m_64f = nullptr;
    m_32fc = nullptr;
    m_64fc = nullptr;
}

bool vkVector::allocateVector(int bytes, int align, void* info) {
    deleteVector();
    if (bytes < 1) {
        return memError(bytes);
    }
    if (align < 0) {
        align = krGetAlignByByte() ? -1 : -item(m_func);
    }
    m_data = krTest::allocate(bytes, align, info ? info : static_cast<krObject*>(this));
    if (!m_data) {
        return false;
    }
    std::memset(m_data, 0, static_cast<size_t>(bytes));
    setViews(m_data);
    return true;
}

bool vkVector::createVector(long long length, int align) {
    return createVector(length, align, nullptr);
}

bool vkVector::createVector(long long length, int align, void* info) {
    long long bytes = 0;
    const bool lost = __builtin_mul_overflow(length, item(m_func), &bytes);
    if (lost || bytes > INT_MAX || bytes < INT_MIN) {
        deleteVector();
        return memError(length > 0 ? INT_MAX : INT_MIN);
    }
    if (!allocateVector(static_cast<int>(bytes), align, info)) {
        return false;
    }
    m_length = static_cast<int>(length);
    setConst();
    return true;
}

bool vkVector::createVector(long long length, SetMode mode, double a, double b) {
    if (!createVector(length, -1)) {
        return false;
    }
    setVector(mode, a, b);
    return true;
}

bool vkVector::createVectorExt(long long length, int /*align*/, SetMode mode, double a, double b) {
    return createVector(length, mode, a, b);
}

void vkVector::deleteVector() {
    if (m_data) {
        krTest::deallocate(m_data);
        m_data = nullptr;
    }
    m_length = 0;
    deleteReservedCopy();
    clearViews();
}

bool vkVector::reserveCopy() {
    if (!m_data) {
        return false;
    }
    deleteReservedCopy();
    const size_t bytes = static_cast<size_t>(size());
    if (bytes != 0) {
        m_reserved = std::calloc(bytes, 1);
    }
    if (!m_reserved) {
        return false;
    }
    std::memcpy(m_reserved, m_data, bytes);
    return true;
}

bool vkVector::setReservedCopy() {
    if (!m_data || !m_reserved) {
        return false;
    }
    std::memcpy(m_data, m_reserved, static_cast<size_t>(size()));
    return true;
}

void vkVector::deleteReservedCopy() {
    std::free(m_reserved);
    m_reserved = nullptr;
}

void* vkVector::getReservedData() {
    return m_reserved;
}

const void* vkVector::getDataConst() const {
    return m_data;
}

int vkVector::size() const {
    return m_length * item(m_func);
}

krString vkVector::objectInfo() const {
    krString text = "Vector ";
    return text << vkFunc::typeToString(m_type) << " len=" << m_length;
}

const void* vkVector::getPointerAt(int index) const {
    return m_data ? static_cast<const char*>(m_data) + static_cast<long long>(index) * item(m_func) : nullptr;
}

void* vkVector::getPointerAt(int index) {
    return m_data ? static_cast<char*>(m_data) + static_cast<long long>(index) * item(m_func) : nullptr;
}

void vkVector::readElement(const void* data, double& re, double& im) const {
    vkWithComponent(m_type, [&](auto component) {
        const auto* parts = static_cast<const decltype(component)*>(data);
        re = static_cast<double>(vkLoad(parts, 0));
        if (vkIsComplex(m_type)) {
            im = static_cast<double>(vkLoad(parts, 1));
        }
    });
}

double vkVector::getIndex(int index) const {
    double re = 0;
    double im = 0;
    getIndex(index, re, im);
    return re;
}

void vkVector::getIndex(int index, double& re, double& im) const {
    if (m_data) {
        readElement(getPointerAt(index), re, im);
    }
}

krString vkVector::getDataString(vkType type, const void* data, int count) {
    krString text;
    const char* const format = formatOf(type);
    if (!data || count < 1 || !format) {
        return text;
    }
    const int step = vkIsComplex(type) ? 2 : 1;
    vkWithComponent(type, [&](auto component) {
        const auto* parts = static_cast<const decltype(component)*>(data);
        for (int i = 0; i < count; ++i) {
            // A real type's format takes no second part.
            text += krFormat(format, vkLoad(parts, step * i), vkLoad(parts, step * i + step - 1));
        }
    });
    return text;
}

krString vkVector::getDataString(const void* data, int count) const {
    return getDataString(m_type, data, count);
}

krString vkVector::getString() const {
    return getDataString(m_data, m_length);
}

krString vkVector::getByteString(const void* data, int count) {
    krString text;
    if (data) {
        const unsigned char* const bytes = static_cast<const unsigned char*>(data);
        for (int i = 0; i < count; ++i) {
            text += krFormat(" %02X", bytes[i]);
        }
    }
    return text;
}
