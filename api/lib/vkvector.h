// Typed test data: the array that a test hands to a library function, with its element type read from the function's
// name, its reserved copy and its generators of content. Where it lies is the aligned allocator's affair.
#pragma once

#include "krbase.h"
#include "vkfunc.h"

#include "vekdefs.h"

/// What a vector is filled with.
enum SetMode : int { setDefault, setZero, setOne, setMax, setMin, setValue, setRand, setSeq };

/// A complex element of a type that the library's header does not define.
template <class T>
struct vkPair {
    T re;
    T im;
};

/// A vector of one of 17 element types. Fills and accesses on a vector without data do nothing.
class vkVector : public krObject {
public:
    vkVector();
    explicit vkVector(vkType type);
    vkVector(const vkFunc& func, int typeIndex);
    vkVector(const vkFunc& func, vkArg arg);

    /// Empties the vector and sets its element type.
    void init(vkType type);
    /// The element type is type token `typeIndex` of the function.
    void init(const vkFunc& func, int typeIndex);
    /// The element type is that of the argument.
    void init(const vkFunc& func, vkArg arg);

    int objectSize() const override { return size(); }
    krString objectInfo() const override;
    /// Keeps a copy on the plain heap, which does not count as test memory.
    bool reserveCopy() override;
    bool setReservedCopy() override;
    void deleteReservedCopy() override;

    virtual ~vkVector();
    virtual void deleteVector();
    /// 1.00001 for floating types, else 2: neither 0 nor 1, so that no function can treat it as a special case.
    virtual void setConst();
    virtual void setConst(double re, double im);
    virtual void setMinValue();
    virtual void setMaxValue();
    /// A sine of quadratically growing phase, a chirp up to the Nyquist frequency of the vector's length.
    virtual void setJaehne();
    /// A negative magnitude leaves the vector as it is.
    virtual void setJaehne(double magnitude);
    /// A ramp that reaches `last` at the last element.
    virtual void setSequence(double first, double last);
    /// Behind `last` the ramp starts anew (`wrap`) or stays at `last`.
    virtual void setSequence(double first, double last, double step, bool wrap);
    /// -1 to 1 for floating types, else the type's range.
    virtual void setRandom();
    virtual void setRandom(double lo, double hi);
    virtual void setRandom(double lo, double hi, unsigned int seed);
    virtual krString getString() const;
    /// Bytes of data.
    virtual int size() const;
    virtual void* getReservedData();
    virtual void setVector(SetMode mode, double a, double b);
    /// Writes one element; `index` is not checked.
    virtual void setIndex(int index, SetMode mode, double a, double b);
    /// The real part of an element; `index` is not checked.
    virtual double getIndex(int index) const;
    /// Both parts; for a real type `im` is left as it was.
    virtual void getIndex(int index, double& re, double& im) const;
    virtual const void* getDataConst() const;

    /// Zeroed memory of the vector, for `info` or, if that is null, for the vector itself. A negative `align` means the
    /// misalignment setting.
    bool allocateVector(int bytes, int align, void* info);
    /// New data of `length` elements with the default constant; false, with the vector empty, if there is no memory.
    /// The length is as wide as sums and products of sizes are: one that no block can have is refused as such.
    bool createVector(long long length, int align);
    bool createVector(long long length, int align, void* info);
    bool createVector(long long length, SetMode mode, double a, double b);
    /// `align` has no effect: the settings alone choose the alignment.
    bool createVectorExt(long long length, int align, SetMode mode, double a, double b);

    void* getPointerAt(int index);
    const void* getPointerAt(int index) const;
    void* data() const { return m_data; }
    int length() const { return m_length; }
    vkType type() const { return m_type; }
    const vkFunc& func() const { return m_func; }

    double minValue() const;
    double maxValue() const;
    /// The limits of a type by its real component.
    static double getMinValue(vkType type);
    static double getMaxValue(vkType type);
    static double getMinAbsValue(vkType type);

    krString getDataString(const void* data, int count) const;
    static krString getDataString(vkType type, const void* data, int count);
    static krString getByteString(const void* data, int count);
    /// Bytes of an element of the function's first type.
    static int item(const vkFunc& func);

    /// State of the random generator, shared by all vectors: the data of a run depend on the order of all fills.
    static unsigned int m_seed;

protected:
    // The workers: they fill `count` elements at `data` in the vector's type.
    void setDataConst(void* data, int count, double re, double im) const;
    void setDataRandom(void* data, int count, double lo, double hi) const;
    void setDataSequence(void* data, int count, double first, double last, double step, double wrap) const;
    void setVectorJaehne(void* data, int count, double magnitude) const;
    /// Limits the magnitude and sets the offset; false for a negative magnitude.
    bool updateJaehneMagn(double& magnitude, double& offset) const;
    /// Writes the element at `place`; null and an unknown mode are ignored.
    void setElement(void* place, SetMode mode, double a, double b) const;
    /// Reads the element at `data`.
    void readElement(const void* data, double& re, double& im) const;

    void* m_data = nullptr;
    void* m_reserved = nullptr;
    int m_length = 0;
    vkFunc m_func;
    vkType m_type = vkUndef;

public:
    // The data in the vector's own type; all others are null.
    Vek8u* m_8u = nullptr;
    Vek16u* m_16u = nullptr;
    Vek32u* m_32u = nullptr;
    Vek64u* m_64u = nullptr;
    Vek8s* m_8s = nullptr;
    Vek16s* m_16s = nullptr;
    Vek32s* m_32s = nullptr;
    Vek64s* m_64s = nullptr;
    vkPair<Vek8s>* m_8sc = nullptr;
    Vek16sc* m_16sc = nullptr;
    vkPair<Vek16u>* m_16uc = nullptr;
    Vek32sc* m_32sc = nullptr;
    vkPair<Vek64s>* m_64sc = nullptr;
    Vek32f* m_32f = nullptr;
    Vek64f* m_64f = nullptr;
    Vek32fc* m_32fc = nullptr;
    vkPair<Vek64f>* m_64fc = nullptr;

private:
    void setViews(void* data);
    void clearViews();
};

/// A 32-bit value from two calls of the standard generator.
double rnd();
double rndMax();
