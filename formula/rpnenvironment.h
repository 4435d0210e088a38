#pragma once
// What a running script reaches outside itself: the host's output pane and
// message boxes, the log of variables (to a window or a file), and the jobs
// the host started for it.  Every tree holds one environment; trees made for
// a script (formulas, loaded scripts) share the environment of the tree that
// made them, so that their output goes where the script's own goes.
//
// Nothing here shows anything by itself: a host that wants output, message
// boxes or a log window installs its callbacks.  Without them printed text
// goes only to the log file, and a message box cannot be shown (its answer
// is "no button", which a script sees as the empty value).

#include <QHash>
#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class CEquationTree;
class CRpnNode;
class CRpnData;

// Codes that go with a text to the output callback.
enum RpnOutputCode : int {
    RPN_OUTPUT_PRINT = 1,  // a line printed by the script
    RPN_OUTPUT_CLEAR = 99, // the host clears its pane (the text is null)
};

// The type word of a message box: the buttons in the low four bits, the icon
// in bits 4 to 6.  The values are those that message-box code has always
// used, so that hosts can hand the word on unchanged.
enum RpnMessageBoxType : unsigned {
    RPN_MB_OK = 0x0,
    RPN_MB_OKCANCEL = 0x1,
    RPN_MB_ABORTRETRYIGNORE = 0x2,
    RPN_MB_YESNOCANCEL = 0x3,
    RPN_MB_YESNO = 0x4,
    RPN_MB_RETRYCANCEL = 0x5,
    RPN_MB_CANCELTRYCONTINUE = 0x6,
    RPN_MB_BUTTON_MASK = 0xF,
    RPN_MB_ICONSTOP = 0x10,
    RPN_MB_ICONQUESTION = 0x20,
    RPN_MB_ICONWARNING = 0x30,
    RPN_MB_ICONINFORMATION = 0x40,
    RPN_MB_ICON_MASK = 0x70,
};

// The button that closed a message box; 0 when none could be shown.
enum RpnMessageBoxAnswer : int {
    RPN_ID_NONE = 0,
    RPN_ID_OK = 1,
    RPN_ID_CANCEL = 2,
    RPN_ID_ABORT = 3,
    RPN_ID_RETRY = 4,
    RPN_ID_IGNORE = 5,
    RPN_ID_YES = 6,
    RPN_ID_NO = 7,
    RPN_ID_TRYAGAIN = 10,
    RPN_ID_CONTINUE = 11,
};

// The answers a box of this type can give, first the default (the one Enter
// presses).
std::vector<int> RpnMessageBoxButtons(unsigned type);
// "OK", "CANCEL", ...; empty for RPN_ID_NONE and unknown codes.
QString RpnMessageBoxAnswerText(int answer);

struct CRpnMessageBoxRequest {
    void *owner = nullptr; // the host's window, as it gave it
    QString text;
    QString title;
    unsigned type = RPN_MB_OK;
};
using CRpnMessageBoxHandler = std::function<int(const CRpnMessageBoxRequest &)>;

// The handler for trees whose environment has none (a program installs one
// at start-up); an empty function removes it.
void SetRpnDefaultMessageBoxHandler(CRpnMessageBoxHandler handler);

// Receives printed text: the tree, the node that printed, the two user words
// given with the callback, a word that is always 0, the text (null for
// RPN_OUTPUT_CLEAR) and the code.
using CRpnOutputCallback = void (*)(CEquationTree *tree, CRpnNode *node, void *user1, void *user2, int reserved,
                                     const QString &text, int code);

// A job the host runs for a script; Wait asks each whether it has finished.
// IsFinished is called under the environment's job lock.
class CRpnJob
{
public:
    virtual ~CRpnJob() = default;
    virtual bool IsFinished() const = 0;
};

class CRpnEnvironment
{
public:
    // --- output ------------------------------------------------------------------------
    void SetOutput(CRpnOutputCallback callback, void *user1 = nullptr, void *user2 = nullptr);
    // Gives `text` with `code` to the output callback, then appends it to the
    // log file (a null text appends an empty line).
    void Output(CEquationTree *tree, CRpnNode *node, const QString &text, int code);

    // --- message boxes --------------------------------------------------------------------
    void SetMessageBoxHandler(CRpnMessageBoxHandler handler) { m_messageBox = std::move(handler); }
    void SetOwnerWindow(void *owner) { m_owner = owner; }
    void *GetOwnerWindow() const { return m_owner; }
    // Shows the box through this environment's handler, else the default
    // one; RPN_ID_NONE when there is neither.
    int ShowMessageBox(const QString &text, const QString &title, unsigned type) const;

    // --- the log of variables ---------------------------------------------------------------
    // A window that takes log lines (null: none).  Called on the thread that
    // runs the script; a host whose window lives on another thread must
    // hand the line over itself.
    void SetLogWindow(std::function<void(const QString &line)> window);
    // The file that printed text and logged variables are appended to (empty: none).
    void SetLogFile(const QString &path);
    const QString &GetLogFile() const { return m_logFile; }
    // True when assignments are to be logged at all (a window or a file).
    bool IsLogging() const { return m_logging; }
    // Logs "name = value" with `precision` digits when the variable is logged.
    void LogVariable(CEquationTree *tree, const QString &name, const CRpnData &value, int precision);

    // Which variables are logged: all start logged; names compare without
    // regard to case.
    void SetAllLogged(bool logged);
    void SetLogged(const QString &name, bool logged);
    bool IsLogged(const QString &name) const;

    // --- jobs ---------------------------------------------------------------------------------
    void AddJob(std::shared_ptr<CRpnJob> job);
    void ClearJobs();
    bool JobsInUse() const { return m_jobsInUse.load(std::memory_order_acquire); }
    // Walks the jobs under the lock; `visit` returns false to stop the walk.
    void ForEachJob(const std::function<bool(const CRpnJob &)> &visit);
    // The pause between two looks at the jobs in Wait (1,000 ms).
    int m_waitIntervalMs = 1000;

private:
    // A failure is told once per file, as a warning of `tree`.
    void appendToFile(CEquationTree *tree, const QString &text);

    CRpnOutputCallback m_output = nullptr;
    void *m_outputUser1 = nullptr;
    void *m_outputUser2 = nullptr;
    CRpnMessageBoxHandler m_messageBox;
    void *m_owner = nullptr;

    std::function<void(const QString &)> m_logWindow;
    QString m_logFile;
    bool m_logging = false;
    bool m_allLogged = true;
    QHash<QString, bool> m_logged; // upper-case name -> logged, where it differs from m_allLogged
    QStringList m_reported; // log files whose failure was reported

    std::mutex m_jobLock;
    std::vector<std::shared_ptr<CRpnJob>> m_jobs;
    std::atomic<bool> m_jobsInUse{false};
};

// Appends `text` to the log file at `path`: a new or empty file is written as
// UTF-16LE after the bytes FF FE; a file that starts with FF FE goes on in
// UTF-16LE, any other in 8-bit text.  False with the cause in `error`.
bool RpnAppendToLogFile(const QString &path, const QString &text, QString &error);
