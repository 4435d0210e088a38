#include "graphwnd/spectrumprogress.h"

#include "graphdata/graphcurve.h"
#include "support/controls/progressworkingdlg.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QApplication>

namespace {

enum : int {
    TextComputing = 43118,
    TextSpectrumTitle = 43119,
    TextNoSpectrum = 43620,
};

} // namespace

CSpectrumProgress::CSpectrumProgress(QWidget *parent) : m_parent(parent) {}

CSpectrumProgress::~CSpectrumProgress()
{
    delete m_box.data();
}

SpectrumProgressFactory CSpectrumProgress::Factory()
{
    return [this](const QString &name) -> CFourierTransform::Progress {
        if (!m_made) {
            m_made = true;
            m_box = new CProgressWorkingDlg(m_parent, LanguageString(TextSpectrumTitle));
            m_box->Begin();
        }
        if (m_box)
            m_box->SetText(LanguageString(TextComputing).arg(name));
        // The transform runs on this thread and reports here; the box takes
        // its events, Cancel among them, while it does.  A box gone with its
        // window stops the work.
        QPointer<CProgressWorkingDlg> box = m_box;
        return [box](double fraction) { return box && box->Step(fraction); };
    };
}

int SwitchSpectrumMode(QWidget *parent, CGraphCurve &graph, bool on, const QString &shownName)
{
    if (graph.m_spectrumRunning)
        return 0;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    int result;
    std::vector<CSpectrumFailure> failures;
    {
        CSpectrumProgress progress(parent);
        result = SetSpectrumMode(graph, on, progress.Factory(), &failures);
    }
    QApplication::restoreOverrideCursor();
    if (on && !result) {
        ShowMessage(parent, LanguageString(TextNoSpectrum).arg(shownName));
    } else if (!failures.empty()) {
        // One box for all the curves that were left without a spectrum.
        QStringList texts;
        for (const CSpectrumFailure &failure : failures)
            texts << SpectrumFailureText(failure);
        ShowMessage(parent, texts.join(QLatin1Char('\n')));
    }
    return result;
}
