// The grammar of library function names: everything that the harness knows about a function under test it reads here
// from its name, which is prefix, base, types and descriptor, as in veksDotProd_16s32s_Sfs.
#pragma once

#include "krstring.h"

/// Element type, a bit field: the low byte is the bits of a real component.
enum vkType : int {
    vkUndef = 0,
    vk8u = 8,
    vk16u = 16,
    vk32u = 32,
    vk64u = 64,
    vk8s = 264,
    vk16s = 272,
    vk32s = 288,
    vk64s = 320,
    vk32f = 544,
    vk64f = 576,
    vk16uc = 1040,
    vk8sc = 1288,
    vk16sc = 1296,
    vk32sc = 1312,
    vk64sc = 1344,
    vk32fc = 1568,
    vk64fc = 1600
};

constexpr int vkWidthMask = 255;
constexpr int vkSigned = 256;
constexpr int vkFloat = 512;
constexpr int vkComplex = 1024;

constexpr vkType vkRealOf(vkType type) {
    return static_cast<vkType>(type & ~vkComplex);
}
constexpr vkType vkComplexOf(vkType type) {
    return static_cast<vkType>(type | vkComplex);
}
constexpr bool vkIsComplex(vkType type) {
    return (type & vkComplex) != 0;
}
constexpr bool vkIsFloat(vkType type) {
    return (type & vkFloat) != 0;
}

/// An argument of a library function.
enum class vkArg : int { src = 1, src2 = 2, dst = 4, dst2 = 8 };

/// A function's name with its reading attached.
class vkFunc : public krString {
public:
    vkFunc() = default;
    vkFunc(const krString& name) : krString(name) {} // NOLINT(google-explicit-constructor): a name is a function
    vkFunc(const char* name) : krString(name) {}     // NOLINT(google-explicit-constructor)

    /// The types of the arguments where a token of the name is not literally the argument's type.
    virtual void updateTypes(vkType& src, vkType& src2, vkType& dst, vkType& dst2) const;
    virtual void updateChannels(int& src, int& dst) const;
    virtual void updatePlanes(bool& src, bool& dst) const;

    /// The word of a type, "undef" for a value that is none.
    static krString typeToString(vkType type);
    /// The type of a word, 0 for a word that is none.
    static vkType stringToType(const krString& text);
    /// Length of the type token at the start of `text`, 0 if there is none.
    static int lenOfType(const krString& text);
    static krString firstType(const krString& text);
    /// Index of the "_" in front of the types, -1 if there are none.
    static int endOfBase(const krString& name);
    static int compareTs(const krString& a, const krString& b);
    static int compareTypes(const krString& a, const krString& b);
    static int compareDescr(const krString& a, const krString& b);

    void parseFunction(krString& base, krString& types, krString& descr) const;
    void parseFunction(krString& base, krString& type1, krString& type2, krString& type3, krString& descr) const;
    krString prefix() const;
    krString baseName() const;
    krString typeName() const;
    krString descrName() const;

    /// The first type word in the base name, 0 if it holds none.
    vkType typeFromBase() const;
    /// Type token 1 to 3; 0: the type of the base name, or token 1.
    vkType type(int index) const;
    vkType type(vkArg arg) const;
    vkType srcType() const { return type(vkArg::src); }
    vkType src2Type() const { return type(vkArg::src2); }
    vkType dstType() const { return type(vkArg::dst); }
    vkType dst2Type() const { return type(vkArg::dst2); }
    void getTypes(vkType& src, vkType& src2, vkType& dst, vkType& dst2) const;

    bool inplace() const { return descrName().contains("I"); }
    bool mask() const { return descrName().contains("M"); }
    bool scale() const { return descrName().contains("Sfs"); }
    bool roi() const { return descrName().contains("R"); }
    /// Whether one channel of several is picked out: an image function from or to a single channel.
    bool coi() const;

    /// The order of tests: negative, 0 or positive. Types beyond the first token take no part.
    int compare(const vkFunc& other) const;

    // Channel words of image functions, "C3", "AC4", "P3"; a speech function has none. Index 1 is the source, 2 the
    // destination.
    static int numChannels(const krString& word);
    static bool planeChannel(const krString& word);
    static bool alphaChannel(const krString& word);
    static bool isChannelIndex(int index, const krString& text);
    /// Takes the first channel word off the front of `text`.
    static krString firstChanStr(krString& text);
    void getChannelsName(krString& src, krString& dst) const;
    krString channelsName(int index) const;
    krString channelsName(vkArg arg) const { return channelsName(sideOf(arg)); }
    krString srcChannelsName() const { return channelsName(1); }
    krString dstChannelsName() const { return channelsName(2); }
    void getChannels(int& src, int& dst) const;
    int channels(int index) const;
    int channels(vkArg arg) const { return channels(sideOf(arg)); }
    int srcChannels() const { return channels(1); }
    int dstChannels() const { return channels(2); }
    void getPlanes(bool& src, bool& dst) const;
    bool plane(int index) const;
    bool plane(vkArg arg) const { return plane(sideOf(arg)); }
    bool srcPlane() const { return plane(1); }
    bool dstPlane() const { return plane(2); }
    void getAlpha(bool& src, bool& dst) const;
    bool alpha(int index) const;
    bool alpha(vkArg arg) const { return alpha(sideOf(arg)); }
    bool srcAlpha() const { return alpha(1); }
    bool dstAlpha() const { return alpha(2); }

    /// Number of a type in the order of image data types: 0 undefined, 1 for 8u, and so on.
    static int vekType(vkType type);
    /// Number of the channel layout of side 1 or 2; 0 also for a side without a layout.
    int vekChannels(int index) const;

private:
    static int sideOf(vkArg arg);
    int prefixLength() const;
};
