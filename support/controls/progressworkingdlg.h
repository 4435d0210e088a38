#pragma once
// CProgressWorkingDlg: the busy box of the programs.  It shows a line of
// text, a bar (how far the work is, or a running bar when that is not
// known), the time since the work began, updated every second, and Cancel.
//
// The work is done either by a job on a worker thread that the box starts
// and waits for (kinds 0 and 11), or by the caller on the user-interface
// thread, which reports with Step() and learns from it whether Cancel was
// pressed (kind 1).  Kind 2 has nothing to do and ends at once.
//
// The box is modal to the whole program while it shows; it comes up only
// once the work takes a moment, so that short work does not flash a box.

#include <QDialog>
#include <QElapsedTimer>
#include <atomic>
#include <functional>

class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;

// Work for the box to run on a worker thread.
class CWorkingJob
{
public:
    virtual ~CWorkingJob() = default;
    // Runs on the worker thread.
    virtual void Run() = 0;
    // Called on the user-interface thread when Cancel is pressed; Run must
    // return soon after.
    virtual void Stop() = 0;
    // How far Run is, 0 to 1; negative when it cannot say.
    virtual double Progress() const { return -1; }
};

// A job made of a function that is handed its stop flag and its progress.
class CWorkingFunctionJob : public CWorkingJob
{
public:
    using Work = std::function<void(const std::atomic<bool> &stop, std::atomic<double> &progress)>;
    explicit CWorkingFunctionJob(Work work) : m_work(std::move(work)) {}
    void Run() override { m_work(m_stop, m_progress); }
    void Stop() override { m_stop.store(true); }
    double Progress() const override { return m_progress.load(); }
    bool Stopped() const { return m_stop.load(); }

private:
    Work m_work;
    std::atomic<bool> m_stop{false};
    std::atomic<double> m_progress{-1};
};

class CProgressWorkingDlg : public QDialog
{
    Q_OBJECT
public:
    enum WorkKind : int {
        WorkThread = 0,     // the job runs on a worker thread, with its progress
        WorkSteps = 1,      // the caller works and calls Step
        WorkNone = 2,       // nothing to do: ends at once
        WorkThreadBusy = 11 // a worker job that cannot tell its progress: a running bar only
    };
    enum RunResult : int { Stopped = -1, Failed = 0, Done = 1 };

    // An empty title takes the usual "working" text.  `showTime` adds the
    // elapsed-time line.
    explicit CProgressWorkingDlg(QWidget *parent, const QString &title = {}, const QString &text = {},
                                 bool showTime = true);
    ~CProgressWorkingDlg() override;

    void SetText(const QString &text);
    // Work that cannot be stopped: no Cancel button, and Escape does nothing.
    void SetCancelable(bool cancelable);
    // How long the work must last before the box shows; 0 shows it at once.
    void SetShowDelay(int milliseconds) { m_showDelay = milliseconds; }

    // Kinds 0, 11 and 2: runs the job and returns when it has ended, Done,
    // or Stopped when Cancel was pressed.  An exception thrown by the job
    // comes out of here once the worker thread has ended.
    int Run(CWorkingJob &job, int kind = WorkThread);

    // Kind 1: Begin starts the clock; Step shows how far the caller is, lets
    // the box take its events, and returns false once Cancel was pressed;
    // End closes the box.  A negative fraction shows a running bar.
    void Begin();
    bool Step(double fraction);
    void End();

    bool WasCancelled() const { return m_cancelled; }
    // Presses Cancel: a worker job is asked to stop, and Step returns false.
    void Cancel();
    // The text of the elapsed time, as the box shows it.
    QString ElapsedText() const;
    // A span of seconds as the box writes it: "m:ss", or "h:mm:ss" from an hour on.
    static QString FormatElapsed(qint64 seconds);

protected:
    void reject() override;
    void closeEvent(QCloseEvent *event) override;

private:
    void start();
    void showProgress(double fraction);
    void showIfDue();
    void tick();

    QLabel *m_text;
    QProgressBar *m_bar;
    QLabel *m_time;
    QPushButton *m_cancel;
    QTimer *m_clock;
    QElapsedTimer m_elapsed;
    CWorkingJob *m_job = nullptr;
    int m_showDelay = 400;
    bool m_cancelled = false;
    bool m_working = false;
    bool m_cancelable = true;
};
