#pragma once
// The hook procedures that connect a running common dialog back to its
// object. The module holds the address of the GCommonDialog whose dialog runs,
// without a reference; only one hooked dialog runs at a time. Each procedure
// hands its message to that object's DialogHook and gives the result as 32
// bits, or 0 while no object is held.
#include <cstdint>
#include <memory>

class GCommonDialog;

namespace mDialogHook {

void SetDialogObject(GCommonDialog* oDialog);
// The object held, as a reference that keeps it alive while its hook runs;
// nullptr when none is held.
std::shared_ptr<GCommonDialog> GetDialogObject();
void ClearDialogObject();

// One procedure for each use.
intptr_t FileDialogHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam);
intptr_t PrintHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam);
intptr_t PrintSetupHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam);
intptr_t PageSetupHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam);
intptr_t ColorHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam);
intptr_t FontHookProc(int32_t hDlg, uint32_t msg, uintptr_t wParam, intptr_t lParam);

}  // namespace mDialogHook
