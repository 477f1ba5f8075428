#include "platform/MessageBox.h"

namespace {
IMessageBoxService* g_service = nullptr;

int32_t FirstButton(int32_t buttons) {
    switch (buttons & 7) {
        case vbOKCancel: return vbOK;
        case vbAbortRetryIgnore: return vbAbort;
        case vbYesNoCancel:
        case vbYesNo: return vbYes;
        case vbRetryCancel: return vbRetry;
        default: return vbOK;
    }
}
}  // namespace

void SetMessageBoxService(IMessageBoxService* service) { g_service = service; }
IMessageBoxService* GetMessageBoxService() { return g_service; }

int32_t MsgBox(const std::string& prompt, int32_t buttons, const std::string& title) {
    if (g_service == nullptr) return FirstButton(buttons);
    return g_service->Show(prompt, buttons, title);
}
