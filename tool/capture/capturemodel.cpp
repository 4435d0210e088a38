#include "tool/capture/capturemodel.h"

#include "tool/capture/nicescale.h"

#include <climits>
#include <cmath>
#include <utility>

namespace {

// A click position as a stored corner; what is not finite gives 0.
double cornerPosition(double p)
{
    return std::isfinite(p) ? p : 0.0;
}

double axisEnd(double v, bool logarithmic)
{
    return logarithmic && v > 0 ? std::log10(v) : v;
}

} // namespace

double CPixelMapping::PixelX(double x) const
{
    const double v = xLog ? std::log10(x) : x;
    return (v - lowX) / valuePerPixelX + firstCornerX;
}

double CPixelMapping::PixelY(double y) const
{
    const double w = yLog ? std::log10(y) : y;
    return (w - lowY) / valuePerPixelY + firstCornerY;
}

double RoundPixel(double v)
{
    return v >= 0 ? std::trunc(v + 0.5) : std::trunc(v - 0.5);
}

int RoundPixelToInt(double v)
{
    const double r = RoundPixel(v);
    if (r != r)
        return 0;
    if (r <= double(INT_MIN))
        return INT_MIN;
    if (r >= double(INT_MAX))
        return INT_MAX;
    return int(r);
}

CCornerRect DefaultRectangle(int width, int height, int labelTextWidth)
{
    CCornerRect r;
    r.firstX = labelTextWidth;
    r.secondY = height / 20;
    r.secondX = width - width / 20;
    r.firstY = height - height / 20;
    return r;
}

bool CCaptureModel::MapPixelToValue(double px, double py, double &x, double &y) const
{
    const CaptureCalibration &c = m_calibration;

    bool xMapped = false;
    double a = c.xAtFirst;
    double b = c.xAtSecond;
    bool xUsable = true;
    if (c.xLog) {
        if (a > 0)
            a = std::log10(a);
        else
            xUsable = false;
        if (b > 0)
            b = std::log10(b);
        else
            xUsable = false;
    }
    const double dx = c.secondCornerX - c.firstCornerX;
    if (xUsable && dx != 0) {
        double v = (b - a) / dx * (px - c.firstCornerX) + a;
        if (c.xLog)
            v = std::pow(10.0, v);
        x = v;
        xMapped = true;
    }

    a = c.yAtFirst;
    b = c.yAtSecond;
    if (c.yLog) {
        if (!(a > 0) || !(b > 0))
            return false;
        a = std::log10(a);
        b = std::log10(b);
    }
    const double dy = c.secondCornerY - c.firstCornerY;
    if (dy == 0)
        return false;
    double w = (b - a) / dy * (py - c.firstCornerY) + a;
    if (c.yLog)
        w = std::pow(10.0, w);
    y = w;
    return xMapped;
}

CPixelMapping CCaptureModel::PixelMapping() const
{
    const CaptureCalibration &c = m_calibration;
    CPixelMapping m;
    m.xLog = c.xLog;
    m.yLog = c.yLog;
    m.lowX = axisEnd(c.xAtFirst, c.xLog);
    m.highX = axisEnd(c.xAtSecond, c.xLog);
    m.gridLowX = axisEnd(c.xGridLow, c.xLog);
    m.gridHighX = axisEnd(c.xGridHigh, c.xLog);
    m.lowY = axisEnd(c.yAtFirst, c.yLog);
    m.highY = axisEnd(c.yAtSecond, c.yLog);
    m.gridLowY = axisEnd(c.yGridLow, c.yLog);
    m.gridHighY = axisEnd(c.yGridHigh, c.yLog);
    m.firstCornerX = c.firstCornerX;
    m.firstCornerY = c.firstCornerY;
    const double dx = c.secondCornerX - c.firstCornerX;
    const double dy = c.secondCornerY - c.firstCornerY;
    if (dx != 0)
        m.valuePerPixelX = (m.highX - m.lowX) / dx;
    if (dy != 0)
        m.valuePerPixelY = (m.highY - m.lowY) / dy;
    m.drawable = m.valuePerPixelX != 0 && m.valuePerPixelY != 0
        && std::isfinite(m.valuePerPixelX) && std::isfinite(m.valuePerPixelY);
    return m;
}

void CCaptureModel::SetCalibration(double xAtFirst, double yAtFirst, double xAtSecond,
                                   double yAtSecond, bool xLog, bool yLog,
                                   CMyDoubleArray &&points, int count)
{
    CaptureCalibration &c = m_calibration;
    c.xAtFirst = c.xGridLow = xAtFirst;
    c.yAtFirst = c.yGridLow = yAtFirst;
    c.xAtSecond = c.xGridHigh = xAtSecond;
    c.yAtSecond = c.yGridHigh = yAtSecond;
    c.xLog = xLog;
    c.yLog = yLog;

    m_points.pairs = std::move(points);
    m_points.count = count < 0 ? 0 : count;
    if (2 * std::int64_t(m_points.count) > m_points.pairs.GetSize())
        m_points.count = m_points.pairs.GetSize() / 2;

    MakeGridLabels(c.xGridLow, c.xGridHigh, c.xLog, c.xTickLabels, c.xScaleLetter);
    MakeGridLabels(c.yGridLow, c.yGridHigh, c.yLog, c.yTickLabels, c.yScaleLetter);
}

void CCaptureModel::ClearCapture()
{
    SetCalibration(0, 0, 0, 0, false, false, CMyDoubleArray(), 0);
}

CClickResult CCaptureModel::SetFirstOrSecondCorner(double px, double py)
{
    CaptureCalibration &c = m_calibration;
    CClickResult r;
    r.x = px;
    r.y = py;
    switch (m_mode) {
    case ModeTyped:
    case ModeCorner1:
        c.firstCornerX = cornerPosition(px);
        c.firstCornerY = cornerPosition(py);
        m_mode = m_mode == ModeTyped ? ModeTypedCorner2 : ModeCorner2;
        break;
    case ModeTypedCorner2:
    case ModeCorner2:
        c.secondCornerX = cornerPosition(px);
        c.secondCornerY = cornerPosition(py);
        m_mode = m_mode == ModeTypedCorner2 ? ModeTypedCornersSet : ModeCornersSet;
        r.repaint = true;
        break;
    case ModeTypedTrace:
    case ModeTrace:
        // Where mapping fails the pixel travels on as the point; the dialog's
        // checks keep that from happening.
        MapPixelToValue(px, py, r.x, r.y);
        r.reaction = CClickResult::AppendPoint;
        break;
    default:
        break;
    }
    if (m_mode == ModeTypedCornersSet)
        r.reaction = CClickResult::FocusXAtSecond;
    return r;
}

void CCaptureModel::SetDefaultRectangle(int width, int height, int labelTextWidth)
{
    if (!m_calibration.HasRectangle()) {
        const CCornerRect r = DefaultRectangle(width, height, labelTextWidth);
        m_calibration.firstCornerX = r.firstX;
        m_calibration.firstCornerY = r.firstY;
        m_calibration.secondCornerX = r.secondX;
        m_calibration.secondCornerY = r.secondY;
    }
    m_mode = ModePlotted;
}

void CCaptureModel::CanvasResized(int width, int height, int labelTextWidth)
{
    if (m_mode != ModePlotted)
        return;
    m_calibration.firstCornerX = m_calibration.firstCornerY = 0;
    m_calibration.secondCornerX = m_calibration.secondCornerY = 0;
    SetDefaultRectangle(width, height, labelTextWidth);
}

void CCaptureModel::PicturePasted()
{
    m_calibration.pictureLoaded = true;
    m_calibration.pictureShown = true;
    m_calibration.panX = 0;
    m_calibration.panY = 0;
    m_mode = ModeIdle;
}

void CCaptureModel::StartOver()
{
    CaptureCalibration &c = m_calibration;
    c.pictureLoaded = false;
    c.pictureShown = false;
    m_mode = ModeIdle;
    c.firstCornerX = c.firstCornerY = c.secondCornerX = c.secondCornerY = 0;
    c.xAtFirst = c.yAtFirst = c.xAtSecond = c.yAtSecond = 0;
    ClearCapture();
    m_mode = ModeIdle;
}
