// The cache-state iterator around a two-dimensional size: the dimension that is behind grows, the one ahead shrinks.
#include "vkcache.h"

#include "kriterator.inc"

krString& operator<<(krString& text, const VekiSize& value) {
    return text << value.width << "x" << value.height;
}

VekiSize& operator<<(VekiSize& value, krString& text) {
    krString width;
    krString height;
    text.m_failed = text.toLower().parse(width, height, "x") != 2;
    if (!text.m_failed) {
        value.width << width;
        value.height << height;
        text.m_failed = width.m_failed || height.m_failed;
    }
    return value;
}

template class krDefault_NSC<VekiSize>;
template class krIterator_NSC<VekiSize>;
template class krIterator<VekiSize>;

template <>
bool krCacheIteratorSize::updateValue(VekiSize& value, int size, int bound, bool stepwise) {
    if (stepwise) {
        const bool isWide = value.width > value.height;
        const int count = size < bound ? 1 : -1;
        int& side = isWide == (count < 0) ? value.width : value.height;
        side = shifted(side, count);
    } else {
        int width = 0;
        int height = 0;
        estimate(
            size, bound, [&] { ++(width > height ? height : width); }, [&] { --(width > height ? width : height); });
        value.width = shifted(value.width, width);
        value.height = shifted(value.height, height);
    }
    return value.width > 0 && value.height > 0;
}
