#include "winsupport/MSubclass.h"

#include <string>

#include "platform/Runtime.h"
#include "platform/Windows.h"

namespace {

int32_t m_lCurrentMessage = 0;
int32_t m_lProcOld = 0;

std::string WindowKey(int32_t hwnd) { return std::to_string(hwnd); }
std::string CountKey(int32_t hwnd) { return "C" + std::to_string(hwnd); }
// H#M: the stem of a message's keys.
std::string MessageKey(int32_t hwnd, int32_t iMsg) { return std::to_string(hwnd) + "#" + std::to_string(iMsg); }
std::string ClientCountKey(const std::string& messageKey) { return messageKey + "C"; }
std::string ClientKey(const std::string& messageKey, int32_t i) { return messageKey + "#" + std::to_string(i); }

[[noreturn]] void RaiseSubclassError(int32_t number) {
    const char* description = "";
    switch (number) {
        case 13081: description = "Can't subclass window"; break;
        case 13082: description = "Message already handled by another class"; break;
        case 13083: description = "Invalid window"; break;
        case 13084: description = "Can't modify external window"; break;
        default: break;
    }
    RaiseError(static_cast<int32_t>(0x80040000u | static_cast<uint32_t>(number)), App::EXEName() + ".WindowProc",
               description);
}

bool IsWindowLocal(int32_t hwnd) {
    uint32_t processId = 0;
    GetWindowThreadProcessId(hwnd, &processId);
    return processId == GetCurrentProcessId();
}

int32_t WindowProc(int32_t hwnd, uint32_t uMsg, int32_t wParam, int32_t lParam) {
    const int32_t iMsg = static_cast<int32_t>(uMsg);
    const int32_t procOld = GetPropA(hwnd, WindowKey(hwnd));
    bool bOldCalled = false;
    const std::string messageKey = MessageKey(hwnd, iMsg);
    const int32_t count = GetPropA(hwnd, ClientCountKey(messageKey));
    if (count <= 0) return CallWindowProcA(procOld, hwnd, uMsg, wParam, lParam);

    int32_t result = 0;
    for (int32_t i = 1; i <= count; ++i) {
        // The client is looked up by its address; one that ended without
        // detaching, or a list that became shorter during this message,
        // leaves the old procedure to answer for it.
        const int32_t address = GetPropA(hwnd, ClientKey(messageKey, i));
        ISubclass* client = ISubclass::FromAddress(address);
        if (client == nullptr) {
            result = CallWindowProcA(procOld, hwnd, uMsg, wParam, lParam);
            continue;
        }
        m_lCurrentMessage = iMsg;
        m_lProcOld = procOld;
        if (i == 1 && client->MsgResponse() == MsgResponseBefore && !bOldCalled) {
            CallWindowProcA(procOld, hwnd, uMsg, wParam, lParam);
            bOldCalled = true;
        }
        result = client->WindowProc(hwnd, iMsg, wParam, lParam);
        // The client may have ended inside its call; only a living one is asked.
        if (i == count && (client = ISubclass::FromAddress(address)) != nullptr &&
            client->MsgResponse() == MsgResponseAfter && !bOldCalled) {
            result = CallWindowProcA(procOld, hwnd, uMsg, wParam, lParam);
            bOldCalled = true;
        }
    }
    return result;
}

int32_t WindowProcAddress() {
    static const int32_t address = RegisterWindowProc(&WindowProc);
    return address;
}

}  // namespace

namespace MSubclass {

void AttachMessage(ISubclass& iwp, int32_t hwnd, int32_t iMsg) {
    if (IsWindow(hwnd) == 0) RaiseSubclassError(13083);
    if (!IsWindowLocal(hwnd)) RaiseSubclassError(13084);

    const std::string countKey = CountKey(hwnd);
    const int32_t attachments = GetPropA(hwnd, countKey);
    if (attachments != 0) {
        SetPropA(hwnd, countKey, attachments + 1);
    } else {
        const int32_t procOld = SetWindowLongA(hwnd, GWL_WNDPROC, WindowProcAddress());
        if (procOld == 0) RaiseSubclassError(13081);
        SetPropA(hwnd, WindowKey(hwnd), procOld);
        SetPropA(hwnd, countKey, 1);
    }

    const std::string messageKey = MessageKey(hwnd, iMsg);
    const int32_t count = GetPropA(hwnd, ClientCountKey(messageKey));
    for (int32_t i = 1; i <= count; ++i) {
        if (GetPropA(hwnd, ClientKey(messageKey, i)) == iwp.Address()) RaiseSubclassError(13082);
    }
    SetPropA(hwnd, ClientCountKey(messageKey), count + 1);
    SetPropA(hwnd, ClientKey(messageKey, count + 1), iwp.Address());
}

void DetachMessage(ISubclass& iwp, int32_t hwnd, int32_t iMsg) {
    const std::string countKey = CountKey(hwnd);
    const int32_t attachments = GetPropA(hwnd, countKey);
    if (attachments == 1) {
        SetWindowLongA(hwnd, GWL_WNDPROC, GetPropA(hwnd, WindowKey(hwnd)));
        RemovePropA(hwnd, WindowKey(hwnd));
        RemovePropA(hwnd, countKey);
    } else {
        SetPropA(hwnd, countKey, attachments - 1);
    }

    const std::string messageKey = MessageKey(hwnd, iMsg);
    const int32_t count = GetPropA(hwnd, ClientCountKey(messageKey));
    if (count < 1) return;
    int32_t i = 1;
    while (i <= count && GetPropA(hwnd, ClientKey(messageKey, i)) != iwp.Address()) ++i;
    for (int32_t j = i + 1; j <= count; ++j) {
        SetPropA(hwnd, ClientKey(messageKey, j - 1), GetPropA(hwnd, ClientKey(messageKey, j)));
    }
    RemovePropA(hwnd, ClientKey(messageKey, count));
    SetPropA(hwnd, ClientCountKey(messageKey), count - 1);
}

int32_t CurrentMessage() { return m_lCurrentMessage; }

int32_t CallOldWindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) {
    return CallWindowProcA(m_lProcOld, hwnd, static_cast<uint32_t>(iMsg), wParam, lParam);
}

}  // namespace MSubclass
