#include "formula/rpnenvironment.h"

#include "formula/rpndata.h"
#include "formula/rpnexception.h"
#include "formula/rpntree.h"

#include <QFile>

namespace {

// Messages of this file.
constexpr int kMsgLogFileFailed = 43900;

std::mutex g_defaultHandlerLock;
CRpnMessageBoxHandler g_defaultHandler;

} // namespace

std::vector<int> RpnMessageBoxButtons(unsigned type)
{
    switch (type & RPN_MB_BUTTON_MASK) {
    case RPN_MB_OKCANCEL: return {RPN_ID_OK, RPN_ID_CANCEL};
    case RPN_MB_ABORTRETRYIGNORE: return {RPN_ID_ABORT, RPN_ID_RETRY, RPN_ID_IGNORE};
    case RPN_MB_YESNOCANCEL: return {RPN_ID_YES, RPN_ID_NO, RPN_ID_CANCEL};
    case RPN_MB_YESNO: return {RPN_ID_YES, RPN_ID_NO};
    case RPN_MB_RETRYCANCEL: return {RPN_ID_RETRY, RPN_ID_CANCEL};
    case RPN_MB_CANCELTRYCONTINUE: return {RPN_ID_CANCEL, RPN_ID_TRYAGAIN, RPN_ID_CONTINUE};
    default: return {RPN_ID_OK};
    }
}

QString RpnMessageBoxAnswerText(int answer)
{
    switch (answer) {
    case RPN_ID_OK: return QStringLiteral("OK");
    case RPN_ID_CANCEL: return QStringLiteral("CANCEL");
    case RPN_ID_YES: return QStringLiteral("YES");
    case RPN_ID_NO: return QStringLiteral("NO");
    case RPN_ID_ABORT: return QStringLiteral("ABORT");
    case RPN_ID_CONTINUE: return QStringLiteral("CONTINUE");
    case RPN_ID_IGNORE: return QStringLiteral("IGNORE");
    case RPN_ID_RETRY: return QStringLiteral("RETRY");
    case RPN_ID_TRYAGAIN: return QStringLiteral("TRYAGAIN");
    default: return QString();
    }
}

void SetRpnDefaultMessageBoxHandler(CRpnMessageBoxHandler handler)
{
    std::lock_guard<std::mutex> guard(g_defaultHandlerLock);
    g_defaultHandler = std::move(handler);
}

// --- output --------------------------------------------------------------------------------------

void CRpnEnvironment::SetOutput(CRpnOutputCallback callback, void *user1, void *user2)
{
    m_output = callback;
    m_outputUser1 = user1;
    m_outputUser2 = user2;
}

void CRpnEnvironment::Output(CEquationTree *tree, CRpnNode *node, const QString &text, int code)
{
    if (m_output)
        m_output(tree, node, m_outputUser1, m_outputUser2, 0, text, code);
    if (!m_logFile.isEmpty())
        appendToFile(tree, text + QStringLiteral("\r\n"));
}

int CRpnEnvironment::ShowMessageBox(const QString &text, const QString &title, unsigned type) const
{
    CRpnMessageBoxRequest request;
    request.owner = m_owner;
    request.text = text;
    request.title = title;
    request.type = type;
    if (m_messageBox)
        return m_messageBox(request);
    CRpnMessageBoxHandler handler;
    {
        std::lock_guard<std::mutex> guard(g_defaultHandlerLock);
        handler = g_defaultHandler;
    }
    return handler ? handler(request) : int(RPN_ID_NONE);
}

// --- the log of variables ------------------------------------------------------------------------

void CRpnEnvironment::SetLogWindow(std::function<void(const QString &)> window)
{
    m_logWindow = std::move(window);
    m_logging = bool(m_logWindow) || !m_logFile.isEmpty();
}

void CRpnEnvironment::SetLogFile(const QString &path)
{
    m_logFile = path;
    m_logging = bool(m_logWindow) || !m_logFile.isEmpty();
}

void CRpnEnvironment::LogVariable(CEquationTree *tree, const QString &name, const CRpnData &value, int precision)
{
    if (!m_logging || !IsLogged(name))
        return;
    const QString line = name + QStringLiteral(" = ") + value.GetText(std::uint32_t(precision));
    if (m_logWindow)
        m_logWindow(line);
    if (!m_logFile.isEmpty())
        appendToFile(tree, line + QStringLiteral("\r\n"));
}

void CRpnEnvironment::SetAllLogged(bool logged)
{
    m_allLogged = logged;
    m_logged.clear();
}

void CRpnEnvironment::SetLogged(const QString &name, bool logged)
{
    const QString key = name.toUpper();
    if (logged == m_allLogged)
        m_logged.remove(key);
    else
        m_logged.insert(key, logged);
}

bool CRpnEnvironment::IsLogged(const QString &name) const
{
    if (m_logged.isEmpty())
        return m_allLogged;
    return m_logged.value(name.toUpper(), m_allLogged);
}

void CRpnEnvironment::appendToFile(CEquationTree *tree, const QString &text)
{
    QString error;
    if (RpnAppendToLogFile(m_logFile, text, error))
        return;
    const QString message = RpnMessage(kMsgLogFileFailed, {m_logFile, error});
    if (m_reported.contains(message))
        return;
    m_reported.append(message);
    if (tree)
        tree->m_warnings.append(message);
}

static QByteArray utf16le(const QString &text)
{
    QByteArray bytes;
    bytes.reserve(text.size() * 2);
    for (QChar c : text) {
        const char16_t u = c.unicode();
        bytes.append(char(u & 0xFF));
        bytes.append(char(u >> 8));
    }
    return bytes;
}

bool RpnAppendToLogFile(const QString &path, const QString &text, QString &error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite)) {
        error = file.errorString();
        return false;
    }
    QByteArray bytes;
    if (file.size() == 0) {
        bytes = QByteArray("\xFF\xFE", 2) + utf16le(text);
    } else {
        const QByteArray head = file.read(2);
        bytes = head == QByteArray("\xFF\xFE", 2) ? utf16le(text) : text.toLocal8Bit();
    }
    if (!file.seek(file.size()) || file.write(bytes) != bytes.size() || !file.flush()) {
        error = file.errorString();
        return false;
    }
    return true;
}

// --- jobs ----------------------------------------------------------------------------------------

void CRpnEnvironment::AddJob(std::shared_ptr<CRpnJob> job)
{
    std::lock_guard<std::mutex> guard(m_jobLock);
    m_jobs.push_back(std::move(job));
    m_jobsInUse.store(true, std::memory_order_release);
}

void CRpnEnvironment::ClearJobs()
{
    std::lock_guard<std::mutex> guard(m_jobLock);
    m_jobs.clear();
    m_jobsInUse.store(false, std::memory_order_release);
}

void CRpnEnvironment::ForEachJob(const std::function<bool(const CRpnJob &)> &visit)
{
    std::lock_guard<std::mutex> guard(m_jobLock);
    for (const auto &job : m_jobs) {
        if (job && !visit(*job))
            break;
    }
}
