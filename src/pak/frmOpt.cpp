#include "pak/frmOpt.h"

#include "identify/modGlobal.h"
#include "platform/MessageBox.h"
#include "platform/Registry.h"
#include "platform/Runtime.h"
#include "winsupport/cCommonDialog.h"
#include "winsupport/cRegistry.h"


frmOpt::frmOpt() : ModalForm("frmOpt") {
    Caption = "Options";
    lPath[0].SetCaption("PKZip Location :");
    lPath[1].SetCaption("Unpak Location :");
    lPath[2].SetCaption("Custom Shortcut :");
    cmdPath.Caption = "...";
    Command1.Caption = "...";
    optOS[0].Caption = "Win 9.x";
    optOS[1].Caption = "Win NT";
    cmdValidate[1].Caption = "&Ok";
    cmdValidate[0].Caption = "&Cancel";
    cmdPath.Click.Connect([this] { cmdPath_Click(); });
    Command1.Click.Connect([this] { Command1_Click(); });
    for (int16_t i = 0; i < 2; ++i) cmdValidate[i].Click.Connect([this, i] { cmdValidate_Click(i); });
    for (int32_t i = 0; i < 2; ++i)
        optOS[i].Click.Connect([this, i] { optOS[1 - i].SetValue(false); });
}

void frmOpt::Form_Load() {
    tPak.SetText(g_sUnpakPath);
    tPath.SetText(g_sPkzipPath);
    tShortcut.SetText(g_sShortCutPath);
    optOS[0].SetValue(g_bWin9x);
    optOS[1].SetValue(!g_bWin9x);
}

void frmOpt::Browse(TextBox& box) {
    PassOver([&] {
        cCommonDialog& dialog = CommonDialog();
        dialog.SetCancelError(true);
        dialog.Sethwnd(hWnd());
        dialog.ShowOpen();
        box.SetText(dialog.Filename());
    });
}

void frmOpt::cmdPath_Click() { Browse(tPath); }

void frmOpt::Command1_Click() { Browse(tPak); }

void frmOpt::cmdValidate_Click(int16_t Index) {
    if (Index == 0) {
        Unload();
        return;
    }
    PassOver([&] { tShortcut.SetText(VbTrim(tShortcut.Text())); });
    if (!tShortcut.Text().empty()) {
        if (tShortcut.Text().back() != g_cPathSep) PassOver([&] { tShortcut.SetText(tShortcut.Text() + g_sPathSep); });
        if (!FileExists(tShortcut.Text())) {
            MsgBox(tShortcut.Text() + " doesn't exist!", vbCritical, "Custom Shortcut Error");
            return;
        }
        g_sShortCutPath = tShortcut.Text();
    }
    cRegistry& registry = Registry();
    PassOver([&] { registry.SetValueType(REG_SZ); });
    PassOver([&] { registry.SetClassKey(HKEY_CURRENT_USER); });
    PassOver([&] { registry.SetSectionKey("Software\\Corvane\\Quarrin"); });
    auto store = [&](const char* name, const Variant& value) {
        PassOver([&] { registry.SetValueKey(name); });
        PassOver([&] { registry.SetValue(value); });
    };
    store("UnpakPath", Variant(VbTrim(tPak.Text())));
    store("PkzipPath", Variant(VbTrim(tPath.Text())));
    store("ShortCutPath", Variant(g_sShortCutPath));
    store("Win9x", Variant(std::string(optOS[0].Value() ? "True" : "False")));
    g_sPkzipPath = VbTrim(tPath.Text());
    g_sUnpakPath = VbTrim(tPak.Text());
    Unload();
}
