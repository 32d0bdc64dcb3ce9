// The matrix of row pointers: memory, fills and print.
#include "vkrmatr.h"

#include "krio.h"

#include <climits>
#include <type_traits>

static constexpr int biggestItem = 16;

vkrMatrice::~vkrMatrice() {
    vkrMatrice::deleteMatrice();
}

template <class Work>
void vkrMatrice::eachRow(Work work) {
    if (hasRows()) {
        for (int row = 0; row < m_rows; ++row) {
            work(m_rowPointers[row]);
        }
    }
}

void vkrMatrice::setRowViews(void** rows) {
    // Each view is a pointer to rows of the one type that the matrix holds.
    const auto view = [rows](auto& typed) { typed = reinterpret_cast<std::remove_reference_t<decltype(typed)>>(rows); };
    switch (m_type) {
    case vkUndef:
        break;
    case vk8u:
        view(m_r8u);
        break;
    case vk16u:
        view(m_r16u);
        break;
    case vk32u:
        view(m_r32u);
        break;
    case vk64u:
        view(m_r64u);
        break;
    case vk8s:
        view(m_r8s);
        break;
    case vk16s:
        view(m_r16s);
        break;
    case vk32s:
        view(m_r32s);
        break;
    case vk64s:
        view(m_r64s);
        break;
    case vk8sc:
        view(m_r8sc);
        break;
    case vk16sc:
        view(m_r16sc);
        break;
    case vk16uc:
        view(m_r16uc);
        break;
    case vk32sc:
        view(m_r32sc);
        break;
    case vk64sc:
        view(m_r64sc);
        break;
    case vk32f:
        view(m_r32f);
        break;
    case vk64f:
        view(m_r64f);
        break;
    case vk32fc:
        view(m_r32fc);
        break;
    case vk64fc:
        view(m_r64fc);
        break;
    }
}

bool vkrMatrice::createMatrice(int rows, int columns, int rowStep, int align) {
    deleteMatrice();
    m_rows = rows;
    m_columns = columns;
    if (rows < 1 || columns < 1) {
        return memError(0);
    }
    const long long rowBytes = static_cast<long long>(columns) * item(m_func);
    const long long step = rowStep < 1 ? (rowBytes + 15) / 16 * 16 : rowStep;
    // With a step below the row's bytes the last row still lies inside the block.
    const long long lastGap = step < rowBytes ? rowBytes - step : 0;
    const long long pointerBytes = static_cast<long long>(rows) * static_cast<long long>(sizeof(void*));
    if (step > INT_MAX || rows * step + lastGap > INT_MAX || pointerBytes > INT_MAX) {
        return memError(INT_MAX);
    }
    const int bytes = static_cast<int>(rows * step + lastGap);
    m_rowStep = static_cast<int>(step);
    void** const pointers = static_cast<void**>(krMalloc(static_cast<int>(pointerBytes), 0, 0, nullptr));
    if (!pointers) {
        return false;
    }
    // Behind the allocation, which drops what the matrix holds.
    const bool allocated = allocateVector(bytes, align, static_cast<krObject*>(this));
    m_rowPointers = pointers;
    if (!allocated) {
        return false;
    }
    for (int row = 0; row < rows; ++row) {
        m_rowPointers[row] = static_cast<char*>(m_data) + row * step;
    }
    setRowViews(m_rowPointers);
    return true;
}

bool vkrMatrice::createMatrice(int rows, int columns, SetMode mode, double a, double b) {
    if (!createMatrice(rows, columns, -1, -1)) {
        return false;
    }
    setMatrice(mode, a, b);
    return true;
}

bool vkrMatrice::createMatriceExt(int rows, int columns, int /*align*/, SetMode mode, double a, double b) {
    return createMatrice(rows, columns, mode, a, b);
}

void vkrMatrice::deleteMatrice() {
    if (!m_rowPointers) {
        return;
    }
    krFree(m_rowPointers);
    m_rowPointers = nullptr;
    setRowViews(nullptr);
    m_rows = 0;
    m_columns = 0;
    m_rowStep = 0;
    vkVector::deleteVector();
}

void vkrMatrice::deleteVector() {
    deleteMatrice();
    vkVector::deleteVector();
}

krString vkrMatrice::objectInfo() const {
    krString text = "rMatrix ";
    return text << vkFunc::typeToString(m_type) << " rows=" << m_rows << " columns=" << m_columns;
}

int vkrMatrice::objectSize() const {
    const long long elements = static_cast<long long>(m_rows) * m_columns;
    // A matrix without data may hold any figures.
    return elements <= INT_MAX / biggestItem ? static_cast<int>(elements) * item(m_func) : INT_MAX;
}

void vkrMatrice::setConst(double re, double im) {
    eachRow([&](void* row) { setDataConst(row, m_columns, re, im); });
}

void vkrMatrice::setJaehne(double magnitude) {
    eachRow([&](void* row) { setVectorJaehne(row, m_columns, magnitude); });
}

void vkrMatrice::setSequence(double first, double last, double step, bool wrap) {
    eachRow([&](void* row) { setDataSequence(row, m_columns, first, last, step, wrap ? 1 : 0); });
}

void vkrMatrice::setRandom(double lo, double hi) {
    eachRow([&](void* row) { setDataRandom(row, m_columns, lo, hi); });
}

void vkrMatrice::setMatrice(SetMode mode, double a, double b) {
    setVector(mode, a, b);
}

void* vkrMatrice::place(int row, int column) const {
    return static_cast<char*>(m_rowPointers[row]) + static_cast<long long>(column) * item(m_func);
}

void vkrMatrice::setIndex(int index, SetMode mode, double a, double b) {
    if (hasRows()) {
        setElement(place(index), mode, a, b);
    }
}

void vkrMatrice::getIndex(int index, double& re, double& im) const {
    if (hasRows()) {
        readElement(place(index), re, im);
    }
}

void vkrMatrice::setMatriceAt(int row, int column, double re, double im) {
    if (hasRows()) {
        setDataConst(place(row, column), 1, re, im);
    }
}

void vkrMatrice::getMatriceAt(int row, int column, double& re, double& im) const {
    if (hasRows()) {
        readElement(place(row, column), re, im);
    }
}

double vkrMatrice::getMatriceAt(int row, int column) const {
    double re = 0;
    double im = 0;
    getMatriceAt(row, column, re, im);
    return re;
}

krOStream& operator<<(krOStream& stream, const vkrMatrice& matrix) {
    if (matrix.getDataConst()) {
        for (int row = 0; row < matrix.rows(); ++row) {
            stream << matrix.getDataString(matrix.rowPointers()[row], matrix.columns()) << "\n";
        }
    }
    return stream;
}
