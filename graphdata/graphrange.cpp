#include "graphdata/graphrange.h"

#include <cstdlib>

int MulDiv(int a, int b, int c)
{
    if (c == 0)
        return -1;
    const long long p = (long long)a * b;
    long long q = p / c;
    const long long r = p % c;
    // round half away from zero
    if (2 * std::llabs(r) >= std::llabs((long long)c))
        q += ((p < 0) != (c < 0)) ? -1 : 1;
    return int(q);
}

CGraph_Range::CGraph_Range(int dpi)
{
    m_labelFont.m_height = -MulDiv(9, dpi, 72);
    m_tickFont.m_height = -MulDiv(6, dpi, 72);
}

CGraph_Range::CGraph_Range(std::uint32_t color, int dpi) : CGraph_Range(dpi)
{
    m_textColor = color;
    m_gridColor = GridColorFor(color);
}

CGraph_Range::~CGraph_Range() = default;

std::uint32_t CGraph_Range::GridColorFor(std::uint32_t color)
{
    std::uint32_t channel[3] = {color & 0xFF, (color >> 8) & 0xFF, (color >> 16) & 0xFF};
    int smallest = 0;
    for (int i = 0; i < 3; ++i) {
        if (channel[i] < 215)
            channel[i] = 215;
        if (channel[i] < channel[smallest])
            smallest = i;
    }
    channel[smallest] = 215;
    return channel[0] | (channel[1] << 8) | (channel[2] << 16);
}
