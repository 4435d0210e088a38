#pragma once
// The spectrum mode of a graph window: the switch, with the busy box and
// its Cancel button while the curves' transforms run.

#include "graphdata/spectrum/spectrumjob.h"

#include <QPointer>

class CGraphCurve;
class CProgressWorkingDlg;
class QWidget;

// One busy box for all the curves (title text 43119, text 43118 with the
// name of the curve being done); it shows once the transforms take a
// moment, and its Cancel stops the transform running and leaves the rest
// undone.  The box closes with this object.
class CSpectrumProgress
{
public:
    explicit CSpectrumProgress(QWidget *parent);
    ~CSpectrumProgress();
    CSpectrumProgress(const CSpectrumProgress &) = delete;
    CSpectrumProgress &operator=(const CSpectrumProgress &) = delete;

    SpectrumProgressFactory Factory();

private:
    QWidget *m_parent;
    // Goes with its parent should that close meanwhile.
    QPointer<CProgressWorkingDlg> m_box;
    bool m_made = false;
};

// Switches the graph between its time and spectrum views, computing the
// spectra under progress boxes.  When the spectrum cannot be made, a
// message (43620) says so and the graph stays as it was.  Returns the
// result of SetSpectrumMode.
int SwitchSpectrumMode(QWidget *parent, CGraphCurve &graph, bool on, const QString &shownName);
