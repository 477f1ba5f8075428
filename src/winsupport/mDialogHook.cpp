#include "winsupport/mDialogHook.h"

#include "winsupport/GCommonDialog.h"

namespace mDialogHook {

namespace {

GCommonDialog* g_pDialog = nullptr;

intptr_t Forward(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    const std::shared_ptr<GCommonDialog> dialog = GetDialogObject();
    if (!dialog) return 0;
    return dialog->DialogHook(hDlg, msg, wParam, lParam).ToLong();
}

}  // namespace

void SetDialogObject(GCommonDialog* oDialog) { g_pDialog = oDialog; }

std::shared_ptr<GCommonDialog> GetDialogObject() {
    return g_pDialog != nullptr ? g_pDialog->shared_from_this() : nullptr;
}

void ClearDialogObject() { g_pDialog = nullptr; }

intptr_t FileDialogHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    return Forward(hDlg, msg, wParam, lParam);
}

intptr_t PrintHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    return Forward(hDlg, msg, wParam, lParam);
}

intptr_t PrintSetupHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    return Forward(hDlg, msg, wParam, lParam);
}

intptr_t PageSetupHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    return Forward(hDlg, msg, wParam, lParam);
}

intptr_t ColorHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    return Forward(hDlg, msg, wParam, lParam);
}

intptr_t FontHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    return Forward(hDlg, msg, wParam, lParam);
}

}  // namespace mDialogHook
