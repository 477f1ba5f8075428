#include "platform/Windows.h"

#include <map>

#include "platform/LastError.h"

namespace {

IWindowGeometryService* g_geometry = nullptr;

struct DialogWindow {
    int32_t parent = 0;
    std::map<int32_t, int32_t> longs;
};

std::map<int32_t, DialogWindow> g_dialogWindows;
// Every handle made here is 2 modulo 4.
int32_t g_lastDialogHandle = 2;

DialogWindow* FindDialogWindow(int32_t hWnd) {
    const auto it = g_dialogWindows.find(hWnd);
    if (it != g_dialogWindows.end()) return &it->second;
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return nullptr;
}

int32_t InvalidWindow() {
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return 0;
}

}  // namespace

void SetWindowGeometryService(IWindowGeometryService* service) { g_geometry = service; }
IWindowGeometryService* GetWindowGeometryService() { return g_geometry; }

int32_t CreateDialogWindow(int32_t hWndParent) {
    g_lastDialogHandle += 4;
    g_dialogWindows[g_lastDialogHandle].parent = hWndParent;
    return g_lastDialogHandle;
}

void DestroyDialogWindow(int32_t hWnd) { g_dialogWindows.erase(hWnd); }

int32_t GetParent(int32_t hWnd) {
    const DialogWindow* window = FindDialogWindow(hWnd);
    return window != nullptr ? window->parent : 0;
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
    DialogWindow* window = FindDialogWindow(hWnd);
    if (window == nullptr) return 0;
    int32_t& value = window->longs[nIndex];
    const int32_t previous = value;
    value = dwNewLong;
    return previous;
}

int32_t GetWindowLongA(int32_t hWnd, int32_t nIndex) {
    DialogWindow* window = FindDialogWindow(hWnd);
    if (window == nullptr) return 0;
    const auto it = window->longs.find(nIndex);
    return it != window->longs.end() ? it->second : 0;
}
