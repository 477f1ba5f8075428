#pragma once
// The platform's windows: one registry of window handles, each window with a
// parent, an owner process, window longs, properties under text keys and a
// window procedure; messages sent to a window's procedure or posted into the
// queue that the front end pumps; window rectangles, the screen and its work
// area. The front end tells where its windows are through a geometry service;
// without one no window has a rectangle and the screen has no size.
//
// Handles: forms and controls take handles that are multiples of 4, the windows
// of running dialogs handles that are 2 modulo 4, so the two kinds never meet.
// All of it belongs to the user-interface thread.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

struct RECT {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
};

// SystemParametersInfoA: the work area, the screen less the desktop's panels.
inline constexpr uint32_t SPI_GETWORKAREA = 48;
// GetSystemMetrics: the screen's width and height in pixels.
inline constexpr int32_t SM_CXSCREEN = 0;
inline constexpr int32_t SM_CYSCREEN = 1;
// The window long of a dialog that holds its message result.
inline constexpr int32_t DWL_MSGRESULT = 0;

// The window long of a window's procedure.
inline constexpr int32_t GWL_WNDPROC = -4;

// Messages.
inline constexpr uint32_t WM_DESTROY = 2;
inline constexpr uint32_t WM_NOTIFY = 78;
inline constexpr uint32_t WM_NCDESTROY = 130;
inline constexpr uint32_t WM_INITDIALOG = 272;
inline constexpr uint32_t WM_HSCROLL = 276;
inline constexpr uint32_t WM_VSCROLL = 277;
inline constexpr uint32_t WM_MOUSEWHEEL = 522;
inline constexpr uint32_t MM_WOM_DONE = 957;

// Where the front end's windows stand, in screen pixels.
class IWindowGeometryService {
public:
    virtual ~IWindowGeometryService() = default;
    // The window's rectangle; false for a handle it has no window of.
    virtual bool WindowRect(int32_t hWnd, RECT& rect) = 0;
    // Moves and sizes the window; false for a handle it has no window of.
    virtual bool MoveWindow(int32_t hWnd, int32_t x, int32_t y, int32_t width, int32_t height, bool repaint) = 0;
    // The work area of the screen; false when it can't tell.
    virtual bool WorkArea(RECT& rect) = 0;
    // The screen's size; false when it can't tell.
    virtual bool ScreenSize(int32_t& width, int32_t& height) = 0;
};

// Installs the service; nullptr removes it.
void SetWindowGeometryService(IWindowGeometryService* service);
IWindowGeometryService* GetWindowGeometryService();

// A window procedure. Procedures are named by 32-bit addresses, as the window
// long GWL_WNDPROC holds them.
using WindowProcedure = std::function<int32_t(int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t lParam)>;
// Gives the procedure its address, never 0; it stays callable until
// UnregisterWindowProc.
int32_t RegisterWindowProc(WindowProcedure procedure);
void UnregisterWindowProc(int32_t lpWndProc);
// The platform's default procedure, which every new window starts with: it
// handles no message and gives 0.
int32_t DefWindowProcA(int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t lParam);
int32_t DefWindowProcAddress();

// A window of a form or control (handle a multiple of 4), a child of
// hWndParent (0 for none), owned by the process dwProcessId; 0 stands for the
// current process. Another process's window can be named this way, so that a
// program meets windows it may not change.
int32_t CreatePlatformWindow(int32_t hWndParent = 0, uint32_t dwProcessId = 0);
// A window for a running dialog (handle 2 modulo 4), a child of hWndParent.
int32_t CreateDialogWindow(int32_t hWndParent);
// Ends a window: its properties and longs go, and its posted messages are not
// delivered. Both give 1, or 0 for an unknown handle.
int32_t DestroyWindow(int32_t hWnd);
void DestroyDialogWindow(int32_t hWnd);

// Owns one window of a form or control for the life of the object.
class PlatformWindow {
public:
    explicit PlatformWindow(int32_t hWndParent = 0) : hWnd_(CreatePlatformWindow(hWndParent)) {}
    ~PlatformWindow() { DestroyWindow(hWnd_); }
    PlatformWindow(const PlatformWindow&) = delete;
    PlatformWindow& operator=(const PlatformWindow&) = delete;
    int32_t hWnd() const { return hWnd_; }

private:
    int32_t hWnd_;
};

// Nonzero for a window that exists.
int32_t IsWindow(int32_t hWnd);
// Has `ended` called with the handle of each window that ends, so that what a
// part of the platform keeps of a window goes with it.
void OnWindowEnd(void (*ended)(int32_t hWnd));
uint32_t GetCurrentProcessId();
// The thread that made the window, its process into *lpdwProcessId when that
// is not null; 0 for an unknown handle.
uint32_t GetWindowThreadProcessId(int32_t hWnd, uint32_t* lpdwProcessId);

// The parent of a window; 0 for a window without one or an unknown handle
// (last error ERROR_INVALID_WINDOW_HANDLE).
int32_t GetParent(int32_t hWnd);
// Gives the previous parent, or 0 for an unknown handle or new parent.
int32_t SetParent(int32_t hWndChild, int32_t hWndNewParent);
// Windows are not stacked here: 1 for a known window, else 0.
int32_t SetWindowPos(int32_t hWnd, int32_t hWndInsertAfter, int32_t X, int32_t Y, int32_t cx, int32_t cy,
                     uint32_t uFlags);

// Window properties: 32-bit values under text keys. SetPropA gives 1, or 0
// for an unknown window; GetPropA gives 0 for a key not set; RemovePropA gives
// the value it removed, or 0.
int32_t SetPropA(int32_t hWnd, const std::string& lpString, int32_t hData);
int32_t GetPropA(int32_t hWnd, const std::string& lpString);
int32_t RemovePropA(int32_t hWnd, const std::string& lpString);
// How many properties the window holds.
size_t CountProps(int32_t hWnd);

// Calls the procedure at lpPrevWndFunc; 0 for an address that names none.
int32_t CallWindowProcA(int32_t lpPrevWndFunc, int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t lParam);
// Runs the message through the window's procedure now and gives its result;
// 0 for an unknown window.
int32_t SendMessageA(int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t lParam);
// Queues the message for the window: 1, or 0 for an unknown window (last
// error ERROR_INVALID_WINDOW_HANDLE) or a full queue (ERROR_NOT_ENOUGH_QUOTA).
int32_t PostMessageA(int32_t hWnd, uint32_t uMsg, int32_t wParam, int32_t lParam);
// The most messages the queue holds.
inline constexpr size_t kPostedMessageLimit = 10000;
// Delivers the messages that are queued when it starts, in the order they
// were posted, each through its window's procedure; a message for a window
// that ended meanwhile is dropped. Messages posted during the pass wait for
// the next one. Gives how many were delivered.
size_t DispatchPostedMessages();
size_t PostedMessageCount();
// Called when a message is posted to a queue that has no pass asked for yet,
// so the front end can ask its event loop for one; empty removes it.
void SetPostedMessageNotify(std::function<void()> notify);
// 1 with the window's rectangle, or 0 (last error ERROR_INVALID_WINDOW_HANDLE).
int32_t GetWindowRect(int32_t hWnd, RECT* lpRect);
// 1 when the window was moved, or 0 (last error ERROR_INVALID_WINDOW_HANDLE).
int32_t MoveWindow(int32_t hWnd, int32_t X, int32_t Y, int32_t nWidth, int32_t nHeight, int32_t bRepaint);
// Only SPI_GETWORKAREA, into the RECT at pvParam: 1, or 0 when the work area
// is unknown or the action another (last error ERROR_INVALID_PARAMETER).
int32_t SystemParametersInfoA(uint32_t uiAction, uint32_t uiParam, void* pvParam, uint32_t fWinIni);
// SM_CXSCREEN and SM_CYSCREEN; 0 for any other index or an unknown screen.
int32_t GetSystemMetrics(int32_t nIndex);
// The window longs of a window: each gives the value the long held before, or
// 0 for an unknown handle (last error ERROR_INVALID_WINDOW_HANDLE). The long
// GWL_WNDPROC is the window's procedure.
int32_t SetWindowLongA(int32_t hWnd, int32_t nIndex, int32_t dwNewLong);
int32_t GetWindowLongA(int32_t hWnd, int32_t nIndex);
