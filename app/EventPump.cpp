#include "EventPump.h"

#include <QCoreApplication>
#include <QMetaObject>

#include "platform/Runtime.h"
#include "platform/Windows.h"

namespace {
int g_depth = 0;
}  // namespace

namespace EventPump {

void Install() {
    SetDoEventsHook(&Pump);
    SetPostedMessageNotify([] {
        if (QCoreApplication* app = QCoreApplication::instance()) {
            QMetaObject::invokeMethod(app, [] { DispatchPostedMessages(); }, Qt::QueuedConnection);
        }
    });
}

void Uninstall() {
    SetDoEventsHook({});
    SetPostedMessageNotify({});
}

void Pump() {
    if (g_depth >= kMaxDepth || QCoreApplication::instance() == nullptr) return;
    const QEventLoop::ProcessEventsFlags flags =
        g_depth == 0 ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents;
    ++g_depth;
    struct Leave {
        ~Leave() { --g_depth; }
    } leave;
    QCoreApplication::processEvents(flags);
}

int Depth() { return g_depth; }

}  // namespace EventPump
