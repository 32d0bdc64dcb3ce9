// The grammar of function names: splitting, types, and the order of tests. Channel words are in vkchannel.
#include "vkfunc.h"

#include <cctype>
#include <iterator>

namespace {

struct TypeWord {
    vkType type;
    const char* word;
};

constexpr TypeWord typeWords[] = {
    {vk8u, "8u"},   {vk16u, "16u"},   {vk32u, "32u"},     {vk64u, "64u"},   {vk8s, "8s"},     {vk16s, "16s"},
    {vk32s, "32s"}, {vk64s, "64s"},   {vkUndef, "undef"}, {vk32f, "32f"},   {vk64f, "64f"},   {vk16uc, "16uc"},
    {vk8sc, "8sc"}, {vk16sc, "16sc"}, {vk32sc, "32sc"},   {vk64sc, "64sc"}, {vk32fc, "32fc"}, {vk64fc, "64fc"},
};

// In the order of the search: a longer word stands in front of its own beginning.
constexpr const char* baseTypeWords[] = {"64fc", "64sc", "64s",  "64f", "32fc", "32sc", "32u", "32s",
                                         "32f",  "16sc", "16uc", "16u", "16s",  "8sc",  "8u",  "8s"};

constexpr const char* realResultBases[] = {"Real",       "Imag",        "Magnitude",  "Phase",
                                           "CplxToReal", "CartToPolar", "PowerSpectr"};

bool isDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

bool isOneOf(const krString& text, const char* const* words, int count) {
    for (int i = 0; i < count; ++i) {
        if (text == words[i]) {
            return true;
        }
    }
    return false;
}

void updateSignalTypes(const vkFunc& func, vkType& src, vkType& src2, vkType& dst, vkType& dst2) {
    const krString base = func.baseName();
    if (isOneOf(base, realResultBases, static_cast<int>(std::size(realResultBases)))) {
        dst = dst2 = vkRealOf(dst);
    } else if (base == "PolarToCart") {
        src = src2 = vkRealOf(src);
    } else if (base == "RealToCplx" || func.contains("Goertz")) {
        dst = dst2 = vkComplexOf(dst);
    } else if (base == "DotProd" && src == src2 && !vkIsComplex(src) && vkIsComplex(dst)) {
        src2 = dst;
    }
    if (func.contains("Mul_16u16s")) {
        src2 = dst;
    }
}

void updateImageTypes(const vkFunc& func, vkType& src2, vkType& dst, vkType& dst2) {
    const krString base = func.baseName();
    if (base == "Sum" || base == "Mean") {
        dst = dst2 = vk64f;
    } else if (base == "Compare") {
        dst = dst2 = vk8u;
    } else if ((base == "Copy" || base == "Set") && func.mask()) {
        // The second source is the mask.
        src2 = vk8u;
    }
}

} // namespace

krString vkFunc::typeToString(vkType type) {
    for (const TypeWord& row : typeWords) {
        if (row.type == type) {
            return row.word;
        }
    }
    return "undef";
}

vkType vkFunc::stringToType(const krString& text) {
    if (text == "1u") {
        return vk8u;
    }
    for (const TypeWord& row : typeWords) {
        if (text == row.word) {
            return row.type;
        }
    }
    return vkUndef;
}

int vkFunc::lenOfType(const krString& text) {
    int length = 0;
    while (isDigit(text[length])) {
        ++length;
    }
    const char kind = text[length];
    if (length == 0 || (kind != 'u' && kind != 's' && kind != 'f')) {
        return 0;
    }
    ++length;
    return text[length] == 'c' ? length + 1 : length;
}

krString vkFunc::firstType(const krString& text) {
    return text.substr(0, lenOfType(text));
}

int vkFunc::endOfBase(const krString& name) {
    int place = name.find("_");
    while (place >= 0 && lenOfType(name.substr(place + 1)) == 0) {
        place = name.find("_", place + 1);
    }
    return place;
}

int vkFunc::prefixLength() const {
    return find("veks") == 0 || find("veki") == 0 ? 4 : 0;
}

void vkFunc::parseFunction(krString& base, krString& types, krString& descr) const {
    const int first = prefixLength();
    const int end = endOfBase(*this);
    types.assign("");
    descr.assign("");
    if (end < 0) {
        base = substr(first);
        return;
    }
    base = substr(first, end - first);
    const int next = find("_", end + 1);
    if (next < 0) {
        types = substr(end + 1);
    } else {
        types = substr(end + 1, next - end - 1);
        descr = substr(next + 1);
    }
}

void vkFunc::parseFunction(krString& base, krString& type1, krString& type2, krString& type3, krString& descr) const {
    krString types;
    parseFunction(base, types, descr);
    type1 = firstType(types);
    krString rest = types.substr(type1.length());
    type2 = rest.empty() ? type1 : firstType(rest);
    if (!rest.empty()) {
        rest = rest.substr(type2.length());
    }
    type3 = rest.empty() ? type2 : firstType(rest);
}

krString vkFunc::prefix() const {
    return substr(0, prefixLength());
}

// Base, types or descriptor.
static krString partOf(const vkFunc& func, int index) {
    krString parts[3];
    func.parseFunction(parts[0], parts[1], parts[2]);
    return parts[index];
}

krString vkFunc::baseName() const {
    return partOf(*this, 0);
}

krString vkFunc::typeName() const {
    return partOf(*this, 1);
}

krString vkFunc::descrName() const {
    return partOf(*this, 2);
}

vkType vkFunc::typeFromBase() const {
    const krString base = baseName();
    for (const char* word : baseTypeWords) {
        if (base.contains(word)) {
            return stringToType(word);
        }
    }
    return vkUndef;
}

vkType vkFunc::type(int index) const {
    if (index == 0) {
        const vkType fromBase = typeFromBase();
        return fromBase != vkUndef ? fromBase : type(1);
    }
    krString base;
    krString tokens[3];
    krString descr;
    parseFunction(base, tokens[0], tokens[1], tokens[2], descr);
    return index >= 1 && index <= 3 ? stringToType(tokens[index - 1]) : vkUndef;
}

void vkFunc::getTypes(vkType& src, vkType& src2, vkType& dst, vkType& dst2) const {
    krString base;
    krString type1;
    krString type2;
    krString type3;
    krString descr;
    parseFunction(base, type1, type2, type3, descr);
    src = stringToType(type1);
    src2 = stringToType(type2 == type3 ? type1 : type2);
    dst = stringToType(type3);
    dst2 = dst;
    updateTypes(src, src2, dst, dst2);
}

vkType vkFunc::type(vkArg arg) const {
    vkType src = vkUndef;
    vkType src2 = vkUndef;
    vkType dst = vkUndef;
    vkType dst2 = vkUndef;
    getTypes(src, src2, dst, dst2);
    switch (arg) {
    case vkArg::src:
        return src;
    case vkArg::src2:
        return src2;
    case vkArg::dst:
        return dst;
    case vkArg::dst2:
        return dst2;
    }
    return vkUndef;
}

void vkFunc::updateTypes(vkType& src, vkType& src2, vkType& dst, vkType& dst2) const {
    const krString lead = prefix();
    if (lead == "veks") {
        updateSignalTypes(*this, src, src2, dst, dst2);
    } else if (lead == "veki") {
        updateImageTypes(*this, src2, dst, dst2);
    }
}

int vkFunc::compare(const vkFunc& other) const {
    const int names = (prefix() + baseName()).compare(other.prefix() + other.baseName());
    if (names != 0) {
        return names;
    }
    const int types = compareTypes(typeName(), other.typeName());
    return types != 0 ? types : compareDescr(descrName(), other.descrName());
}

int vkFunc::compareTs(const krString& a, const krString& b) {
    if (a.empty() || b.empty()) {
        return static_cast<int>(b.empty()) - static_cast<int>(a.empty());
    }
    const vkType typeA = stringToType(a);
    const vkType typeB = stringToType(b);
    const int reals = vkRealOf(typeA) - vkRealOf(typeB);
    return reals != 0 ? reals : (typeA & vkComplex) - (typeB & vkComplex);
}

int vkFunc::compareTypes(const krString& a, const krString& b) {
    return compareTs(firstType(a), firstType(b));
}

int vkFunc::compareDescr(const krString& a, const krString& b) {
    const bool inplaceA = a.contains("I");
    const bool inplaceB = b.contains("I");
    if (inplaceA != inplaceB) {
        return inplaceA ? 1 : -1;
    }
    if (a.find("AC4") == 0 && b.find("C") == 0) {
        return 1;
    }
    if (a.find("C") == 0 && b.find("AC4") == 0) {
        return -1;
    }
    return a.compare(b);
}
