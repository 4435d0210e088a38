#include "graphwnd/grapherrorbox.h"

#include "graphdata/grapherrors.h"
#include "support/controls/userprompts.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <mutex>
#include <set>

namespace {

std::mutex g_pendingLock;
std::set<int> g_pending; // texts with a box waiting or open

void showBox(int stringId, const QString &text)
{
    CMessagePrompt prompt;
    prompt.text = text;
    prompt.icon = PromptIcon::Stop;
    UserPrompts().Message(prompt);
    std::lock_guard<std::mutex> guard(g_pendingLock);
    g_pending.erase(stringId);
}

} // namespace

void InstallGraphErrorBox(const QString &program)
{
    const GraphErrorReporter console = ConsoleGraphErrorReporter(program);
    SetGraphErrorReporter([console](int stringId, const QString &detail) {
        console(stringId, detail);
        {
            std::lock_guard<std::mutex> guard(g_pendingLock);
            if (!g_pending.insert(stringId).second)
                return;
        }
        const QString text = GraphErrorText(stringId, detail);
        QCoreApplication *app = QCoreApplication::instance();
        if (!app)
            return;
        QMetaObject::invokeMethod(app, [stringId, text] { showBox(stringId, text); }, Qt::QueuedConnection);
    });
}
