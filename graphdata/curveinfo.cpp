#include "graphdata/curveinfo.h"

#include "support/xmlelement.h"

const CCurveStyle g_curvePalette[8] = {
    {0x18A55D, 1, 0}, {0x6060DD, 1, 0}, {0xA0704F, 1, 0}, {0x58B5DB, 1, 0},
    {0x0080FF, 1, 0}, {0xFFC000, 1, 0}, {0x00007F, 1, 0}, {0xDDA4B0, 1, 0},
};

const std::uint32_t g_curveFallbackColors[12] = {
    0x18A55D, 0x6060DD, 0xA0704F, 0x58B5DB, 0x0080FF, 0xFFC000,
    0x00007F, 0xDDA4B0, 0x7F0000, 0x007F7F, 0x7F007F, 0x7F7F00,
};

namespace {

// Text of the attribute, and whether there was one.
bool readKey(const CXmlElement *element, const char16_t *key, QString &text)
{
    bool found = false;
    text = element->GetAttribute(QString::fromUtf16(key), &found);
    return found;
}

// "-..." reads as signed base 10, anything else as unsigned base 10; leading
// digits count and the rest is ignored, as strtol and strtoul do.
std::uint64_t parseNumber(const QString &text)
{
    int i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t'))
        ++i;
    const bool negative = i < text.size() && text[i] == u'-';
    if (negative || (i < text.size() && text[i] == u'+'))
        ++i;
    std::uint64_t value = 0;
    for (; i < text.size() && text[i].isDigit() && text[i].unicode() < 128; ++i) {
        value = value * 10 + std::uint64_t(text[i].unicode() - u'0');
        if (value > 0xFFFFFFFFull)
            value = 0xFFFFFFFFull; // saturate like the C library
    }
    if (negative)
        return std::uint64_t(-std::int64_t(value));
    return value;
}

std::int32_t readInt(const CXmlElement *element, const char16_t *key, std::int32_t fallback)
{
    QString text;
    if (!readKey(element, key, text))
        return fallback;
    return std::int32_t(std::uint32_t(parseNumber(text)));
}

std::uint32_t readWord(const CXmlElement *element, const char16_t *key, std::uint32_t fallback)
{
    QString text;
    if (!readKey(element, key, text))
        return fallback;
    return std::uint32_t(parseNumber(text));
}

void writeInt(CXmlElement *element, const char16_t *key, std::int32_t value)
{
    element->SetAttribute(QString::fromUtf16(key), QString::number(value));
}

void writeWord(CXmlElement *element, const char16_t *key, std::uint32_t value)
{
    element->SetAttribute(QString::fromUtf16(key), QString::number(value));
}

} // namespace

CCurveBasicInfo::~CCurveBasicInfo() = default;

void CCurveBasicInfo::SaveToXml(CXmlElement *element) const
{
    if (CXmlElement::IsNull(element))
        return;
    writeInt(element, u"Source", std::int32_t(m_source));
    writeInt(element, u"ColIndex", m_colIndex);
    element->SetAttribute(QStringLiteral("ColName"), m_colName);
    element->SetAttribute(QStringLiteral("ColLabel"), m_colLabel);
    writeWord(element, u"Color", m_color);
    writeInt(element, u"Connect", m_connect);
    writeInt(element, u"LineThickness", m_lineThickness);
    writeInt(element, u"Symbol", m_symbol);
    writeWord(element, u"SpecialDraw", m_specialDraw);
    writeInt(element, u"YAxisIndex", m_yAxisIndex);
    writeWord(element, u"Options", m_options);
}

void CCurveBasicInfo::LoadFromXml(const CXmlElement *element)
{
    if (CXmlElement::IsNull(element))
        return;
    const std::int32_t index = readInt(element, u"Index", -1);
    CCurveStyle style{0, 1, 0};
    if (index >= 0)
        style = g_curvePalette[index % 8];

    m_source = readWord(element, u"Source", 0);
    m_colIndex = readInt(element, u"ColIndex", -1);
    QString text;
    m_colName = readKey(element, u"ColName", text) ? text : QString();
    m_colLabel = readKey(element, u"ColLabel", text) ? text : m_colName;
    m_color = readWord(element, u"Color", style.color);
    m_connect = readInt(element, u"Connect", 1);
    m_lineThickness = readInt(element, u"LineThickness", style.thickness);
    m_symbol = readInt(element, u"Symbol", style.symbol);
    m_specialDraw = readWord(element, u"SpecialDraw", 0);
    m_yAxisIndex = readInt(element, u"YAxisIndex", 0);
    m_options = readWord(element, u"Options", 0);
    m_paletteIndex = index;
}

void CCurveBasicInfo::CopyStyleFrom(const CCurveBasicInfo &other)
{
    m_source = other.m_source;
    m_colLabel = other.m_colLabel;
    m_color = other.m_color;
    m_connect = other.m_connect;
    m_lineThickness = other.m_lineThickness;
    m_symbol = other.m_symbol;
    m_specialDraw = other.m_specialDraw;
    m_yAxisIndex = other.m_yAxisIndex;
}

CPolylineCache::~CPolylineCache() = default;

CCurveInfo::CCurveInfo(int column, const QString &label, std::uint32_t color)
{
    m_source = OriginColumn;
    m_colIndex = column;
    m_colLabel = label;
    m_color = color;
}

CCurveInfo::CCurveInfo(std::uint32_t color, const QString &label)
{
    m_source = OriginComputed;
    m_colIndex = -1;
    m_colLabel = label;
    m_color = color;
}

CCurveInfo::~CCurveInfo()
{
    SetLinePixels(nullptr);
    SetOverviewPixels(nullptr);
}

void CCurveInfo::ClearCaches()
{
    m_spectrumMagnitude.reset();
    m_spectrumAngle.reset();
    m_spectrumReal.reset();
    m_spectrumImag.reset();
    m_displayColumn.reset();
    SetLinePixels(nullptr);
    SetOverviewPixels(nullptr);
}

void CCurveInfo::SetLinePixels(CPolylineCache *cache)
{
    if (cache)
        cache->AddRef();
    if (m_linePixels)
        m_linePixels->Release();
    m_linePixels = cache;
}

void CCurveInfo::SetOverviewPixels(CPolylineCache *cache)
{
    if (cache)
        cache->AddRef();
    if (m_overviewPixels)
        m_overviewPixels->Release();
    m_overviewPixels = cache;
}
