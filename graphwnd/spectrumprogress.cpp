#include "graphwnd/spectrumprogress.h"

#include "graphdata/graphcurve.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QProgressDialog>

namespace {

enum : int {
    TextComputing = 43118,
    TextSpectrumTitle = 43119,
    TextNoSpectrum = 43620,
};

const int kSteps = 1000;

} // namespace

CSpectrumProgress::CSpectrumProgress(QWidget *parent) : m_parent(parent) {}

CSpectrumProgress::~CSpectrumProgress() = default;

SpectrumProgressFactory CSpectrumProgress::Factory()
{
    return [this](const QString &name) -> CFourierTransform::Progress {
        if (!m_box) {
            m_box = std::make_unique<QProgressDialog>(m_parent);
            m_box->setWindowTitle(LanguageString(TextSpectrumTitle));
            m_box->setWindowModality(Qt::WindowModal);
            m_box->setRange(0, kSteps);
            m_box->setMinimumDuration(400);
            m_box->setAutoClose(false);
            m_box->setAutoReset(false);
        }
        m_box->reset();
        m_box->setLabelText(LanguageString(TextComputing).arg(name));
        m_box->setValue(0);
        QProgressDialog *box = m_box.get();
        return [box](double fraction) {
            // A modal box takes the events while it is set; that is where
            // its Cancel button is pressed.
            box->setValue(int(fraction * kSteps));
            QCoreApplication::processEvents();
            return !box->wasCanceled();
        };
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
