#include "graphviewload.h"

#include <QDateTime>

CDataFileLoader::CDataFileLoader(const QString &path, std::function<void()> finished)
    : m_path(path), m_finished(std::move(finished))
{
    m_poll.setInterval(40);
    QObject::connect(&m_poll, &QTimer::timeout, [this] { poll(); });
}

CDataFileLoader::~CDataFileLoader()
{
    m_cancel.store(true);
    if (m_thread.joinable())
        m_thread.join();
}

void CDataFileLoader::Start()
{
    m_started = QDateTime::currentMSecsSinceEpoch();
    m_thread = std::thread([this] {
        CTextImportOptions options;
        options.progress = &m_progress;
        options.cancel = &m_cancel;
        m_result = ImportTextFile(m_path, m_data, m_report, options);
        m_done.store(true, std::memory_order_release);
    });
    m_poll.start();
}

qint64 CDataFileLoader::Elapsed() const
{
    return QDateTime::currentMSecsSinceEpoch() - m_started;
}

void CDataFileLoader::poll()
{
    if (!m_done.load(std::memory_order_acquire))
        return;
    m_poll.stop();
    m_thread.join();
    if (m_finished)
        m_finished();
}
