#include "support/controls/progressworkingdlg.h"

#include "support/languagestring.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QEventLoop>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <exception>
#include <thread>

namespace {

enum : int {
    TextWorking = 43950,
    TextElapsed = 43951,
    TextStopping = 43952,
};

const int kSteps = 1000;
// How often the box looks at a worker job.
const int kPollMs = 20;

} // namespace

CProgressWorkingDlg::CProgressWorkingDlg(QWidget *parent, const QString &title, const QString &text,
                                         bool showTime)
    : QDialog(parent), m_text(new QLabel(text)), m_bar(new QProgressBar), m_time(new QLabel),
      m_cancel(nullptr), m_clock(new QTimer(this))
{
    setWindowTitle(title.isEmpty() ? LanguageString(TextWorking) : title);
    setWindowModality(Qt::ApplicationModal);
    m_text->setObjectName(QStringLiteral("text"));
    m_text->setWordWrap(true);
    m_text->setMinimumWidth(m_text->fontMetrics().averageCharWidth() * 48);
    m_bar->setObjectName(QStringLiteral("bar"));
    m_bar->setRange(0, kSteps);
    m_bar->setValue(0);
    m_bar->setTextVisible(false);
    m_time->setObjectName(QStringLiteral("time"));
    m_time->setVisible(showTime);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    m_cancel = buttons->button(QDialogButtonBox::Cancel);
    connect(m_cancel, &QPushButton::clicked, this, &CProgressWorkingDlg::Cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
    layout->addWidget(m_bar);
    layout->addWidget(m_time);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    m_clock->setInterval(1000);
    connect(m_clock, &QTimer::timeout, this, &CProgressWorkingDlg::tick);
}

CProgressWorkingDlg::~CProgressWorkingDlg() = default;

void CProgressWorkingDlg::SetText(const QString &text)
{
    if (!m_cancelled)
        m_text->setText(text);
}

void CProgressWorkingDlg::SetCancelable(bool cancelable)
{
    m_cancelable = cancelable;
    m_cancel->setVisible(cancelable);
}

void CProgressWorkingDlg::start()
{
    m_cancelled = false;
    m_working = true;
    m_cancel->setEnabled(m_cancelable);
    m_bar->setRange(0, kSteps);
    m_bar->setValue(0);
    m_elapsed.start();
    tick();
    m_clock->start();
    showIfDue();
}

void CProgressWorkingDlg::showIfDue()
{
    if (m_working && !isVisible() && m_elapsed.elapsed() >= m_showDelay) {
        show();
        raise();
    }
}

void CProgressWorkingDlg::showProgress(double fraction)
{
    if (fraction < 0) {
        if (m_bar->maximum() != 0)
            m_bar->setRange(0, 0); // a running bar
        return;
    }
    if (m_bar->maximum() == 0)
        m_bar->setRange(0, kSteps);
    m_bar->setValue(std::clamp(int(fraction * kSteps), 0, kSteps));
}

void CProgressWorkingDlg::tick()
{
    m_time->setText(ElapsedText());
}

QString CProgressWorkingDlg::ElapsedText() const
{
    const QString time = FormatElapsed(m_elapsed.isValid() ? m_elapsed.elapsed() / 1000 : 0);
    const QString text = LanguageString(TextElapsed);
    return text.contains(QLatin1String("%1")) ? text.arg(time) : time;
}

QString CProgressWorkingDlg::FormatElapsed(qint64 seconds)
{
    seconds = std::max<qint64>(seconds, 0);
    const auto two = [](qint64 n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); };
    if (seconds >= 3600)
        return QStringLiteral("%1:%2:%3").arg(seconds / 3600).arg(two(seconds / 60 % 60), two(seconds % 60));
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(two(seconds % 60));
}

int CProgressWorkingDlg::Run(CWorkingJob &job, int kind)
{
    if (kind == WorkNone)
        return Done;
    const bool busy = kind == WorkThreadBusy;
    m_job = &job;
    start();
    std::atomic<bool> done{false};
    std::exception_ptr error;
    std::thread worker([&] {
        try {
            job.Run();
        } catch (...) {
            error = std::current_exception();
        }
        done.store(true);
    });
    {
        // The loop and its timer belong to this call, not to the box: should
        // the box go with its parent meanwhile, the job is stopped and still
        // waited for.
        QPointer<CProgressWorkingDlg> self(this);
        bool stopAsked = false;
        bool shown = isVisible();
        QEventLoop loop;
        QTimer poll;
        poll.setInterval(kPollMs);
        QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
            if (done.load()) {
                loop.quit();
                return;
            }
            if (!self) {
                if (!stopAsked)
                    job.Stop();
                stopAsked = true;
                return;
            }
            showIfDue();
            showProgress(busy ? -1 : job.Progress());
            if (!shown && isVisible()) {
                shown = true;
                loop.quit(); // into the loop that takes input again
            }
        });
        poll.start();
        // Until the box shows, the program takes no input (it is kept for
        // later), so that nothing changes what the job works on; once it
        // shows, it is modal and takes the input itself.
        while (!done.load())
            loop.exec(shown ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
        poll.stop();
        worker.join();
        if (!self) {
            if (error)
                std::rethrow_exception(error);
            return Stopped;
        }
    }
    m_job = nullptr;
    End();
    if (error)
        std::rethrow_exception(error);
    return m_cancelled ? Stopped : Done;
}

void CProgressWorkingDlg::Begin()
{
    m_job = nullptr;
    start();
}

bool CProgressWorkingDlg::Step(double fraction)
{
    if (!m_working)
        Begin();
    showIfDue();
    showProgress(fraction);
    // Cancel is pressed here, while the box takes its events.  Until it
    // shows, input is kept for later, so that the caller's work is not
    // changed under it.
    QCoreApplication::processEvents(isVisible() ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
    return !m_cancelled;
}

void CProgressWorkingDlg::End()
{
    m_working = false;
    m_clock->stop();
    hide();
}

void CProgressWorkingDlg::Cancel()
{
    if (!m_working || m_cancelled || !m_cancelable)
        return;
    m_cancelled = true;
    m_cancel->setEnabled(false);
    m_text->setText(LanguageString(TextStopping));
    if (m_job)
        m_job->Stop();
}

void CProgressWorkingDlg::reject()
{
    // Escape while working is Cancel; the box closes when the work has ended.
    if (m_working)
        Cancel();
    else
        QDialog::reject();
}

void CProgressWorkingDlg::closeEvent(QCloseEvent *event)
{
    if (m_working) {
        event->ignore();
        Cancel();
        return;
    }
    QDialog::closeEvent(event);
}
