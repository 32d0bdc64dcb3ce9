// The channel words of image functions in a function's name. On a speech function every answer is the default.
#include "vkfunc.h"

namespace {

struct Layout {
    const char* word;
    int value;
};

constexpr Layout layouts[] = {
    {"C0", 0}, {"C1", 1}, {"C2", 2},  {"C3", 3},  {"C4", 4},    {"P2", 5},
    {"P3", 6}, {"P4", 7}, {"AC1", 8}, {"AC4", 9}, {"A0C4", 10}, {"AP4", 11},
};

constexpr vkType typeOrder[] = {vk8u,  vk8s,   vk16u, vk16s, vk16sc, vk16uc, vk32u,  vk32s, vk32sc,
                                vk32f, vk32fc, vk64u, vk64s, vk64sc, vk64f,  vk64fc, vk8sc};

// A channel word without its alpha mark.
krString plainWord(const krString& word) {
    return vkFunc::alphaChannel(word) ? word.substr(1) : word;
}

} // namespace

int vkFunc::sideOf(vkArg arg) {
    switch (arg) {
    case vkArg::src:
    case vkArg::src2:
        return 1;
    case vkArg::dst:
    case vkArg::dst2:
        return 2;
    }
    return 0;
}

bool vkFunc::isChannelIndex(int index, const krString& text) {
    if (index < 0 || index + 1 >= text.length()) {
        return false;
    }
    const char digit = text[index + 1];
    return digit >= '1' && digit <= '4';
}

krString vkFunc::firstChanStr(krString& text) {
    const int c = text.find("C");
    const int p = text.find("P");
    int place = c < 0 || (p >= 0 && p < c) ? p : c;
    if (!isChannelIndex(place, text)) {
        text.assign("");
        return "";
    }
    int length = 2;
    if (place > 0 && text[place - 1] == 'A') {
        --place;
        ++length;
    }
    krString word = text.substr(place, length);
    text = text.substr(place + length);
    // "C3P" stands for three planes.
    const int planes = text.find("P");
    if (planes >= 0 && !isChannelIndex(planes, text)) {
        const int mark = word.find("C");
        if (mark >= 0) {
            word.data()[mark] = 'P';
        }
    }
    return word;
}

void vkFunc::getChannelsName(krString& src, krString& dst) const {
    krString rest = descrName();
    src = firstChanStr(rest);
    dst = firstChanStr(rest);
    if (dst.empty()) {
        dst = src;
    }
}

int vkFunc::numChannels(const krString& word) {
    const krString plain = plainWord(word);
    return isChannelIndex(0, plain) ? plain[1] - '0' : 0;
}

bool vkFunc::planeChannel(const krString& word) {
    return plainWord(word).find("P") == 0;
}

bool vkFunc::alphaChannel(const krString& word) {
    return word.find("A") == 0;
}

krString vkFunc::channelsName(int index) const {
    krString src;
    krString dst;
    getChannelsName(src, dst);
    return index == 1 ? src : index == 2 ? dst : krString();
}

// What the channel words of both sides tell.
template <class T>
static void readSides(const vkFunc& func, T (*read)(const krString&), T& src, T& dst) {
    krString srcWord;
    krString dstWord;
    func.getChannelsName(srcWord, dstWord);
    src = read(srcWord);
    dst = read(dstWord);
}

void vkFunc::getChannels(int& src, int& dst) const {
    readSides(*this, numChannels, src, dst);
    updateChannels(src, dst);
}

int vkFunc::channels(int index) const {
    int src = 0;
    int dst = 0;
    getChannels(src, dst);
    return index == 1 ? src : index == 2 ? dst : 1;
}

void vkFunc::getPlanes(bool& src, bool& dst) const {
    readSides(*this, planeChannel, src, dst);
    updatePlanes(src, dst);
}

bool vkFunc::plane(int index) const {
    bool src = false;
    bool dst = false;
    getPlanes(src, dst);
    return (index == 1 && src) || (index == 2 && dst);
}

void vkFunc::getAlpha(bool& src, bool& dst) const {
    readSides(*this, alphaChannel, src, dst);
}

bool vkFunc::alpha(int index) const {
    bool src = false;
    bool dst = false;
    getAlpha(src, dst);
    return (index == 1 && src) || (index == 2 && dst);
}

void vkFunc::updateChannels(int& /*src*/, int& dst) const {
    // The answer of a comparison is one mask for all channels.
    if (prefix() == "veki" && baseName() == "Compare") {
        dst = 1;
    }
}

void vkFunc::updatePlanes(bool& /*src*/, bool& /*dst*/) const {
}

bool vkFunc::coi() const {
    if (prefix() != krString("veki")) {
        return false;
    }
    krString src;
    krString dst;
    getChannelsName(src, dst);
    const bool oneSource = numChannels(src) == 1;
    const bool oneDest = numChannels(dst) == 1;
    return oneSource != oneDest;
}

int vkFunc::vekType(vkType type) {
    int number = 0;
    for (const vkType known : typeOrder) {
        ++number;
        if (known == type) {
            return number;
        }
    }
    return 0;
}

int vkFunc::vekChannels(int index) const {
    const krString word = channelsName(index);
    for (const Layout& layout : layouts) {
        if (word == layout.word) {
            return layout.value;
        }
    }
    return 0;
}
