#pragma once
// The description of a curve (CCurveBasicInfo), kept as XML attributes, and
// the drawn curve with its columns and caches (CCurveInfo).  Colours are
// 0x00BBGGRR words.

#include "graphdata/graphcolumn.h"
#include "support/arrayplus.h"

#include <QString>
#include <atomic>
#include <cstdint>

class CXmlElement;
class CCurveInfo;

// The eight default styles, and the twelve fallback colours used once all
// eight are taken.
struct CCurveStyle
{
    std::uint32_t color;
    std::int32_t thickness;
    std::int32_t symbol;
};
extern const CCurveStyle g_curvePalette[8];
extern const std::uint32_t g_curveFallbackColors[12];

class CCurveBasicInfo
{
public:
    // Source word: origin in the low nibble, displayed spectrum component in
    // the high nibble of the low byte, 0x100 a fixed reference curve.
    enum : std::uint32_t {
        OriginMask = 0xF,
        OriginColumn = 0,
        OriginComputed = 1,
        OriginOwnColumns = 2,
        ComponentMask = 0xF0,
        ComponentMagnitude = 0x00,
        ComponentAngleRad = 0x10,
        ComponentAngleDeg = 0x30,
        ComponentReal = 0x80,
        ComponentImag = 0xA0,
        FixedReference = 0x100,
        LimitLineMask = 0x10F,
        LimitLine = 0x102,
    };
    enum : std::uint32_t { SpecialArrow = 0x100 };
    enum : std::uint32_t { OptionBar = 0x100 };

    CCurveBasicInfo() = default;
    virtual ~CCurveBasicInfo();
    CCurveBasicInfo(const CCurveBasicInfo &) = default;
    CCurveBasicInfo &operator=(const CCurveBasicInfo &) = default;

    // Writes the persistent fields as attributes, in a fixed order.
    virtual void SaveToXml(CXmlElement *element) const;
    // Reads them back; absent keys take their defaults.  "Index" (never
    // written) picks the palette row Index % 8 for the defaults of colour,
    // thickness and symbol, and becomes PaletteIndex.
    virtual void LoadFromXml(const CXmlElement *element);
    virtual int IsCurveInfo() const { return 0; }
    virtual CCurveInfo *AsCurveInfo() { return nullptr; }

    int Origin() const { return int(m_source & OriginMask); }
    int Component() const { return int(m_source & ComponentMask); }
    bool IsLimitLine() const { return (m_source & LimitLineMask) == LimitLine; }
    bool IsBar() const { return (m_options & OptionBar) != 0; }

    // The style fields that a matching curve takes over from a wanted one.
    void CopyStyleFrom(const CCurveBasicInfo &other);

    std::uint32_t m_source = 0;
    std::int32_t m_colIndex = 0;
    QString m_colName;
    QString m_colLabel;
    std::uint32_t m_color = 0;
    std::int32_t m_connect = 1;
    std::int32_t m_lineThickness = 1;
    std::int32_t m_symbol = 0;
    std::uint32_t m_specialDraw = 0;
    std::int32_t m_yAxisIndex = 0;
    std::int32_t m_paletteIndex = -1;
    std::uint32_t m_options = 0;
};

// Base of the polyline caches the drawing code keeps per curve; counted so
// that a drawing pass can hold one while the curve changes.
class CPolylineCache
{
public:
    virtual ~CPolylineCache();
    void AddRef() { m_refCount.fetch_add(1, std::memory_order_relaxed); }
    void Release()
    {
        if (m_refCount.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

private:
    std::atomic<int> m_refCount{1};
};

class CCurveInfo : public CCurveBasicInfo
{
public:
    CCurveInfo() = default;
    // A curve of data column `column` (origin 0).
    CCurveInfo(int column, const QString &label, std::uint32_t color);
    // A computed curve (origin 1, no column).
    CCurveInfo(std::uint32_t color, const QString &label);
    ~CCurveInfo() override;
    CCurveInfo(const CCurveInfo &) = delete;
    CCurveInfo &operator=(const CCurveInfo &) = delete;

    int IsCurveInfo() const override { return 1; }
    CCurveInfo *AsCurveInfo() override { return this; }

    // Drops the derived columns (spectrum, display) and both caches.
    void ClearCaches();
    void SetLinePixels(CPolylineCache *cache);
    void SetOverviewPixels(CPolylineCache *cache);
    CPolylineCache *LinePixels() const { return m_linePixels; }
    CPolylineCache *OverviewPixels() const { return m_overviewPixels; }

    CGraphColumnPtr m_computedColumn;
    CGraphColumnPtr m_spectrumMagnitude;
    CGraphColumnPtr m_spectrumAngle;
    CGraphColumnPtr m_spectrumReal;
    CGraphColumnPtr m_spectrumImag;
    CGraphColumnPtr m_displayColumn;
    CGraphColumnPtr m_ownY;
    CGraphColumnPtr m_ownX;
    CGraphColumnPtr m_ownXLog;
    double m_scopeScale = 1.0;
    double m_scopeOffset = 0.0;

private:
    CPolylineCache *m_linePixels = nullptr;
    CPolylineCache *m_overviewPixels = nullptr;
};

class CCurveBasicInfoArray : public CArrayPlus<CCurveBasicInfo>
{
};
class CCurveInfoArray : public CArrayPlus<CCurveInfo>
{
};
// Default styles offered by a defaults file, row by row.
class CCurveDefaultInfoArray : public CArrayPlus<CCurveBasicInfo>
{
};
