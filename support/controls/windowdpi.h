#pragma once
// The dots per inch of the screen a window is on.

class QWidget;

// Both values start at 96; false, leaving them so, when the window or its
// screen is not known.
bool GetDpiOfWindow(const QWidget *window, int &dpiX, int &dpiY);
