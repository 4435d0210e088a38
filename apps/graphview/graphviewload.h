#pragma once
// Reading graphview's file on a thread of its own, so that the window stays
// alive and can show how far the reading is.

#include "graphdata/exchange/textimport.h"

#include <QString>
#include <QTimer>
#include <atomic>
#include <functional>
#include <thread>

class CDataFileLoader
{
public:
    // `finished` is called on the user-interface thread once the reading
    // is over, whatever its result.
    CDataFileLoader(const QString &path, std::function<void()> finished);
    // Stops a reading still going on and waits for it.
    ~CDataFileLoader();
    CDataFileLoader(const CDataFileLoader &) = delete;
    CDataFileLoader &operator=(const CDataFileLoader &) = delete;

    void Start();
    void Cancel() { m_cancel.store(true); }
    bool Running() const { return m_thread.joinable(); }
    // Thousandths of the reading done.
    int Progress() const { return m_progress.load(std::memory_order_relaxed); }
    // Milliseconds since Start.
    qint64 Elapsed() const;

    // Valid once `finished` was called.
    TextImport Result() const { return m_result; }
    const CGraphData &Data() const { return m_data; }
    const CTextImportReport &Report() const { return m_report; }

private:
    void poll();

    QString m_path;
    std::function<void()> m_finished;
    std::thread m_thread;
    std::atomic<bool> m_done{false};
    std::atomic<bool> m_cancel{false};
    std::atomic<int> m_progress{0};
    QTimer m_poll;
    qint64 m_started = 0;
    TextImport m_result = TextImport::NoData;
    CGraphData m_data;
    CTextImportReport m_report;
};
