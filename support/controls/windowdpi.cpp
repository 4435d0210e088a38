#include "support/controls/windowdpi.h"

#include <QScreen>
#include <QWidget>
#include <cmath>

bool GetDpiOfWindow(const QWidget *window, int &dpiX, int &dpiY)
{
    dpiX = dpiY = 96;
    const QScreen *screen = window ? window->screen() : nullptr;
    if (!screen)
        return false;
    dpiX = int(std::lround(screen->logicalDotsPerInchX()));
    dpiY = int(std::lround(screen->logicalDotsPerInchY()));
    return true;
}
