// A vector seen as rows of a given stride, with row pointers for library functions that take a pointer-to-pointer
// matrix.
#pragma once

#include "vkvector.h"

class krOStream;

/// Rows of `columns` elements. Fills work row by row and leave the gaps at the row ends at zero.
class vkrMatrice : public vkVector {
public:
    using vkVector::setConst;
    using vkVector::setJaehne;
    using vkVector::setRandom;
    using vkVector::setSequence;
    using vkVector::vkVector;

    int objectSize() const override;
    krString objectInfo() const override;
    ~vkrMatrice() override;
    void setConst(double re, double im) override;
    void setJaehne(double magnitude) override;
    void setSequence(double first, double last, double step, bool wrap) override;
    void setRandom(double lo, double hi) override;
    /// Elements are counted row by row, without the gaps.
    void setIndex(int index, SetMode mode, double a, double b) override;
    using vkVector::getIndex;
    void getIndex(int index, double& re, double& im) const override;
    /// The rows go with the data that they point at.
    void deleteVector() override;

    virtual void deleteMatrice();
    /// Writes one element; the indices are not checked.
    virtual void setMatriceAt(int row, int column, double re, double im);
    /// Reads one element; for a real type `im` is left as it was.
    virtual void getMatriceAt(int row, int column, double& re, double& im) const;
    virtual double getMatriceAt(int row, int column) const;
    virtual void setMatrice(SetMode mode, double a, double b);

    /// `rowStep` in bytes; below 1: the row's bytes rounded up to a multiple of 16. The data are zero.
    bool createMatrice(int rows, int columns, int rowStep, int align);
    bool createMatrice(int rows, int columns, SetMode mode, double a, double b);
    /// `align` has no effect: the settings alone choose the alignment.
    bool createMatriceExt(int rows, int columns, int align, SetMode mode, double a, double b);

    int rows() const { return m_rows; }
    int columns() const { return m_columns; }
    int rowStep() const { return m_rowStep; }
    void** rowPointers() const { return m_rowPointers; }

protected:
    int m_rows = 0;
    int m_columns = 0;
    int m_rowStep = 0;
    void** m_rowPointers = nullptr;

public:
    // The row pointers in the matrix's own type; all others are null.
    Vek8u** m_r8u = nullptr;
    Vek16u** m_r16u = nullptr;
    Vek32u** m_r32u = nullptr;
    Vek64u** m_r64u = nullptr;
    Vek8s** m_r8s = nullptr;
    Vek16s** m_r16s = nullptr;
    Vek32s** m_r32s = nullptr;
    Vek64s** m_r64s = nullptr;
    vkPair<Vek8s>** m_r8sc = nullptr;
    Vek16sc** m_r16sc = nullptr;
    vkPair<Vek16u>** m_r16uc = nullptr;
    Vek32sc** m_r32sc = nullptr;
    vkPair<Vek64s>** m_r64sc = nullptr;
    Vek32f** m_r32f = nullptr;
    Vek64f** m_r64f = nullptr;
    Vek32fc** m_r32fc = nullptr;
    vkPair<Vek64f>** m_r64fc = nullptr;

private:
    template <class Work>
    void eachRow(Work work);
    /// Sets the view of the matrix's type; null clears it.
    void setRowViews(void** rows);
    void* place(int row, int column) const;
    void* place(int index) const { return place(index / m_columns, index % m_columns); }
    bool hasRows() const { return m_data != nullptr && m_rowPointers != nullptr; }
};

/// Writes the matrix, one line for each row.
krOStream& operator<<(krOStream& stream, const vkrMatrice& matrix);
