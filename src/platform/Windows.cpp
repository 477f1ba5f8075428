#include "platform/Windows.h"

#include <climits>
#include <cstdint>
#include <deque>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/LastError.h"

namespace {

IWindowGeometryService* g_geometry = nullptr;

// The process that runs this program, and a thread number for its windows.
constexpr uint32_t kCurrentProcessId = 0x5A4;
constexpr uint32_t kUserInterfaceThreadId = 0x5A8;

struct Window {
    int32_t parent = 0;
    uint32_t processId = kCurrentProcessId;
    int32_t wndProc = 0;
    std::map<int32_t, int32_t> longs;
    std::unordered_map<std::string, int32_t> props;
};

std::unordered_map<int32_t, Window> g_windows;
// Forms and controls count in multiples of 4, dialog windows 2 modulo 4.
int32_t g_lastWindowHandle = 0x100;
int32_t g_lastDialogHandle = 2;

std::unordered_map<int32_t, WindowProcedure> g_procedures;
// Procedure addresses: even numbers above the default procedure's own.
int32_t g_lastProcedure = 0x10000;

struct PostedMessage {
    int32_t hWnd;
    uint32_t uMsg;
    int32_t wParam;
    int32_t lParam;
};
std::deque<PostedMessage> g_queue;
std::function<void()> g_notify;
std::vector<void (*)(int32_t)> g_endHooks;
bool g_passAsked = false;

Window* FindWindow(int32_t hWnd) {
    const auto it = g_windows.find(hWnd);
    if (it != g_windows.end()) return &it->second;
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return nullptr;
}

int32_t InvalidWindow() {
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return 0;
}

// The next free handle after `last` in steps of 4, from `first` again after
// the largest; handles of windows that still exist are passed over.
int32_t NextHandle(int32_t& last, int32_t first) {
    do {
        last = last > INT32_MAX - 8 ? first : last + 4;
    } while (g_windows.count(last) != 0);
    return last;
}

int32_t NewWindow(int32_t hWnd, int32_t hWndParent, uint32_t processId) {
    Window& window = g_windows[hWnd];
    window.parent = hWndParent;
    window.processId = processId == 0 ? kCurrentProcessId : processId;
    window.wndProc = DefWindowProcAddress();
    return hWnd;
}

}  // namespace

void SetWindowGeometryService(IWindowGeometryService* service) { g_geometry = service; }
IWindowGeometryService* GetWindowGeometryService() { return g_geometry; }

int32_t RegisterWindowProc(WindowProcedure procedure) {
    g_lastProcedure += 2;
    g_procedures.emplace(g_lastProcedure, std::move(procedure));
    return g_lastProcedure;
}

void UnregisterWindowProc(int32_t lpWndProc) {
    if (lpWndProc != DefWindowProcAddress()) g_procedures.erase(lpWndProc);
}

int32_t DefWindowProcA(int32_t, uint32_t, int32_t, int32_t) { return 0; }

int32_t DefWindowProcAddress() {
    static const int32_t address = [] {
        g_procedures.emplace(0x10000, &DefWindowProcA);
        return 0x10000;
    }();
    return address;
}

int32_t CreatePlatformWindow(int32_t hWndParent, uint32_t dwProcessId) {
    return NewWindow(NextHandle(g_lastWindowHandle, 0x104), hWndParent, dwProcessId);
}

int32_t CreateDialogWindow(int32_t hWndParent) { return NewWindow(NextHandle(g_lastDialogHandle, 6), hWndParent, 0); }

int32_t DestroyWindow(int32_t hWnd) {
    if (g_windows.erase(hWnd) == 0) return InvalidWindow();
    for (const auto ended : g_endHooks) ended(hWnd);
    return 1;
}

void DestroyDialogWindow(int32_t hWnd) { DestroyWindow(hWnd); }

int32_t IsWindow(int32_t hWnd) { return g_windows.count(hWnd) != 0 ? 1 : 0; }

void OnWindowEnd(void (*ended)(int32_t hWnd)) { g_endHooks.push_back(ended); }

uint32_t GetCurrentProcessId() { return kCurrentProcessId; }

uint32_t GetWindowThreadProcessId(int32_t hWnd, uint32_t* lpdwProcessId) {
    const Window* window = FindWindow(hWnd);
    if (lpdwProcessId != nullptr) *lpdwProcessId = window != nullptr ? window->processId : 0;
    return window != nullptr ? kUserInterfaceThreadId : 0;
}

int32_t GetParent(int32_t hWnd) {
    const Window* window = FindWindow(hWnd);
    return window != nullptr ? window->parent : 0;
}

int32_t SetParent(int32_t hWndChild, int32_t hWndNewParent) {
    Window* window = FindWindow(hWndChild);
    if (window == nullptr || (hWndNewParent != 0 && IsWindow(hWndNewParent) == 0)) return InvalidWindow();
    return std::exchange(window->parent, hWndNewParent);
}

int32_t SetWindowPos(int32_t hWnd, int32_t, int32_t, int32_t, int32_t, int32_t, uint32_t) {
    return FindWindow(hWnd) != nullptr ? 1 : 0;
}

int32_t SetPropA(int32_t hWnd, const std::string& lpString, int32_t hData) {
    Window* window = FindWindow(hWnd);
    if (window == nullptr) return 0;
    window->props[lpString] = hData;
    return 1;
}

int32_t GetPropA(int32_t hWnd, const std::string& lpString) {
    const auto it = g_windows.find(hWnd);
    if (it == g_windows.end()) return 0;
    const auto prop = it->second.props.find(lpString);
    return prop != it->second.props.end() ? prop->second : 0;
}

int32_t RemovePropA(int32_t hWnd, const std::string& lpString) {
    const auto it = g_windows.find(hWnd);
    if (it == g_windows.end()) return 0;
    const auto prop = it->second.props.find(lpString);
    if (prop == it->second.props.end()) return 0;
    const int32_t value = prop->second;
    it->second.props.erase(prop);
    return value;
}

size_t CountProps(int32_t hWnd) {
    const auto it = g_windows.find(hWnd);
    return it != g_windows.end() ? it->second.props.size() : 0;
}

int32_t CallWindowProcA(int32_t lpPrevWndFunc, int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t lParam) {
    const auto it = g_procedures.find(lpPrevWndFunc);
    if (it == g_procedures.end()) return 0;
    // A copy: the procedure may unregister itself while it runs.
    const WindowProcedure procedure = it->second;
    return procedure(hWnd, uMsg, wParam, lParam);
}

int32_t SendMessageA(int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t lParam) {
    const Window* window = FindWindow(hWnd);
    if (window == nullptr) return 0;
    return CallWindowProcA(window->wndProc, hWnd, uMsg, wParam, lParam);
}

int32_t PostMessageA(int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t lParam) {
    if (FindWindow(hWnd) == nullptr) return 0;
    if (g_queue.size() >= kPostedMessageLimit) {
        SetLastError(ERROR_NOT_ENOUGH_QUOTA);
        return 0;
    }
    g_queue.push_back({hWnd, uMsg, wParam, lParam});
    if (!g_passAsked && g_notify) {
        g_passAsked = true;
        g_notify();
    }
    return 1;
}

size_t DispatchPostedMessages() {
    g_passAsked = false;
    size_t delivered = 0;
    for (size_t pending = g_queue.size(); pending > 0 && !g_queue.empty(); --pending) {
        const PostedMessage message = g_queue.front();
        g_queue.pop_front();
        if (IsWindow(message.hWnd) == 0) continue;
        SendMessageA(message.hWnd, message.uMsg, message.wParam, message.lParam);
        ++delivered;
    }
    if (!g_queue.empty() && !g_passAsked && g_notify) {
        g_passAsked = true;
        g_notify();
    }
    return delivered;
}

size_t PostedMessageCount() { return g_queue.size(); }

void SetPostedMessageNotify(std::function<void()> notify) {
    g_notify = std::move(notify);
    g_passAsked = false;
}

int32_t GetWindowRect(int32_t hWnd, RECT* lpRect) {
    RECT rect;
    if (lpRect == nullptr || g_geometry == nullptr || !g_geometry->WindowRect(hWnd, rect)) return InvalidWindow();
    *lpRect = rect;
    return 1;
}

int32_t MoveWindow(int32_t hWnd, int32_t X, int32_t Y, int32_t nWidth, int32_t nHeight, int32_t bRepaint) {
    if (g_geometry == nullptr || !g_geometry->MoveWindow(hWnd, X, Y, nWidth, nHeight, bRepaint != 0)) {
        return InvalidWindow();
    }
    return 1;
}

int32_t SystemParametersInfoA(uint32_t uiAction, uint32_t uiParam, void* pvParam, uint32_t fWinIni) {
    RECT rect;
    if (uiAction != SPI_GETWORKAREA || pvParam == nullptr || g_geometry == nullptr || !g_geometry->WorkArea(rect)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    *static_cast<RECT*>(pvParam) = rect;
    return 1;
}

int32_t GetSystemMetrics(int32_t nIndex) {
    int32_t width = 0;
    int32_t height = 0;
    if ((nIndex != SM_CXSCREEN && nIndex != SM_CYSCREEN) || g_geometry == nullptr ||
        !g_geometry->ScreenSize(width, height)) {
        return 0;
    }
    return nIndex == SM_CXSCREEN ? width : height;
}

int32_t SetWindowLongA(int32_t hWnd, int32_t nIndex, int32_t dwNewLong) {
    Window* window = FindWindow(hWnd);
    if (window == nullptr) return 0;
    int32_t& value = nIndex == GWL_WNDPROC ? window->wndProc : window->longs[nIndex];
    return std::exchange(value, dwNewLong);
}

int32_t GetWindowLongA(int32_t hWnd, int32_t nIndex) {
    const Window* window = FindWindow(hWnd);
    if (window == nullptr) return 0;
    if (nIndex == GWL_WNDPROC) return window->wndProc;
    const auto it = window->longs.find(nIndex);
    return it != window->longs.end() ? it->second : 0;
}
