#pragma once
// Window rectangles, the screen and its work area, and the windows of running
// common dialogs: what the dialog hooks need of the platform's windows. The
// front end tells where its windows are through a geometry service; without
// one no window has a rectangle and the screen has no size.
//
// Handles: the forms number their windows in steps of 4, so their handles are
// multiples of 4. The windows made here for running dialogs take handles that
// are 2 modulo 4, so the two kinds never meet.
#include <cstdint>

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

// Messages that a dialog's hook procedure receives.
inline constexpr uint32_t WM_NOTIFY = 78;
inline constexpr uint32_t WM_NCDESTROY = 130;
inline constexpr uint32_t WM_INITDIALOG = 272;

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

// A window for a running dialog, a child of hWndParent (0 for none). It lives
// until DestroyDialogWindow; only these windows have a parent and window longs.
int32_t CreateDialogWindow(int32_t hWndParent);
void DestroyDialogWindow(int32_t hWnd);

// The parent of a dialog window; 0 for a window without one or an unknown
// handle (last error ERROR_INVALID_WINDOW_HANDLE).
int32_t GetParent(int32_t hWnd);
// 1 with the window's rectangle, or 0 (last error ERROR_INVALID_WINDOW_HANDLE).
int32_t GetWindowRect(int32_t hWnd, RECT* lpRect);
// 1 when the window was moved, or 0 (last error ERROR_INVALID_WINDOW_HANDLE).
int32_t MoveWindow(int32_t hWnd, int32_t X, int32_t Y, int32_t nWidth, int32_t nHeight, int32_t bRepaint);
// Only SPI_GETWORKAREA, into the RECT at pvParam: 1, or 0 when the work area
// is unknown or the action another (last error ERROR_INVALID_PARAMETER).
int32_t SystemParametersInfoA(uint32_t uiAction, uint32_t uiParam, void* pvParam, uint32_t fWinIni);
// SM_CXSCREEN and SM_CYSCREEN; 0 for any other index or an unknown screen.
int32_t GetSystemMetrics(int32_t nIndex);
// The window longs of a dialog window: each gives the value the long held
// before, or 0 for an unknown handle (last error ERROR_INVALID_WINDOW_HANDLE).
int32_t SetWindowLongA(int32_t hWnd, int32_t nIndex, int32_t dwNewLong);
int32_t GetWindowLongA(int32_t hWnd, int32_t nIndex);
