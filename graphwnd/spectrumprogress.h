#pragma once
// The spectrum mode of a graph window: the switch, with a modal progress
// box and its Cancel button for each curve's transform.

#include "graphdata/spectrum/spectrumjob.h"

#include <memory>

class CGraphCurve;
class QProgressDialog;
class QWidget;

// Makes one progress box per curve (title text 43119, text 43118 with the
// column's name); it shows once a transform takes a moment, and its Cancel
// stops the transform.  The box of the last curve closes with this object.
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
    std::unique_ptr<QProgressDialog> m_box;
};

// Switches the graph between its time and spectrum views, computing the
// spectra under progress boxes.  When the spectrum cannot be made, a
// message (43620) says so and the graph stays as it was.  Returns the
// result of SetSpectrumMode.
int SwitchSpectrumMode(QWidget *parent, CGraphCurve &graph, bool on, const QString &shownName);
