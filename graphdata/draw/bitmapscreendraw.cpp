#include "graphdata/draw/bitmapscreendraw.h"

CDC_BitmapScreenDraw::CDC_BitmapScreenDraw(CBitmapScreenDraw &store, QPainter &target, const QRect &rect)
    : m_store(store), m_target(target), m_rect(rect)
{
    const int w = std::max(1, rect.width()), h = std::max(1, rect.height());
    if (m_store.m_image.isNull() || m_store.m_width < w || m_store.m_height < h) {
        m_store.m_image = QImage(w, h, QImage::Format_RGB32);
        m_store.m_width = w;
        m_store.m_height = h;
    }
    ++m_store.m_useCount;
    m_painter.emplace(&m_store.m_image);
    m_painter->translate(-rect.topLeft());
}

CDC_BitmapScreenDraw::~CDC_BitmapScreenDraw()
{
    m_painter.reset();
    m_target.drawImage(m_rect.topLeft(), m_store.m_image, QRect(0, 0, m_rect.width(), m_rect.height()));
    --m_store.m_useCount;
}
