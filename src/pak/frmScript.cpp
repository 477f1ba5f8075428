#include "pak/frmScript.h"

#include <cmath>
#include <memory>
#include <vector>

#include "identify/modGlobal.h"
#include "pak/BatchScript.h"
#include "pak/MemberPath.h"
#include "pak/ZipWrapper.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/Runtime.h"
#include "platform/Shell.h"
#include "controls/ListView.h"
#include "winsupport/cCommonDialog.h"

namespace {


bool EndsWithSep(const std::string& s) { return !s.empty() && s.back() == g_cPathSep; }

}  // namespace

frmScript::frmScript(IScriptOwner& owner) : ModalForm("frmScript"), owner_(owner) {
    Caption = "Unpak";
    lPath1.SetCaption("Pak Location:");
    Command1.Caption = "...";
    lPath2.SetCaption("Script:");
    oDirFld.SetVisible(false);
    Command2.Caption = "...";
    fraSelect.SetCaption("Files");
    OptSel[0].Caption = "All Files";
    OptSel[1].Caption = "Selected Files";
    OptSel[2].Caption = "Files:";
    oPBar.SetVisible(false);
    oPBar.Min = 0;
    oPBar.Max = 10001;
    cmdValidate[1].Caption = "&Ok";
    cmdValidate[0].Caption = "&Cancel";

    Command1.Click.Connect([this] { Command1_Click(); });
    cbPath.Change.Connect([this] { cbPath_Change(); });
    cbPath.DropDown.Connect([this] { cbPath_DropDown(); });
    oDirFld.Change.Connect([this] { oDirFld_Change(); });
    oDirFld.KeyPress.Connect([this](int16_t& key) { oDirFld_KeyPress(key); });
    oDirFld.LostFocus.Connect([this] { oDirFld_LostFocus(); });
    tSel.Change.Connect([this] { tSel_Change(); });
    tSel.LostFocus.Connect([this] { tSel_LostFocus(); });
    for (int16_t i = 0; i < 2; ++i) cmdValidate[i].Click.Connect([this, i] { cmdValidate_Click(i); });
    for (int32_t i = 0; i < 3; ++i)
        OptSel[i].Click.Connect([this, i] {
            for (int32_t j = 0; j < 3; ++j)
                if (j != i) OptSel[j].SetValue(false);
        });
}

void frmScript::SetOption(int32_t index, bool value) { OptSel[index].SetValue(value); }

std::string frmScript::MissingUtilityText() {
    const std::string archiver = App::Path() + g_sPathSep + "quarrin-pkzip";
    return "Sorry, but you must download the pkzip25.exe\r\n"
           "utility (" + archiver + ")\r\n"
           "and reference it in Quarrin Options.\r\n"
           "\r\n"
           "It's a bit tricky, but it's the only way to\r\n"
           "unpack automatically the compressed\r\n"
           "file without buying the DCL Library.";
}

void frmScript::Form_Load() {
    PassOver([&] { cmdValidate[1].SetEnabled(true); });
    for (int32_t i = 0; i < 3; ++i) PassOver([&] { SetOption(i, false); });
    PassOver([&] {
        std::string start = g_sShortCutPath.empty() ? App::Path() : g_sShortCutPath;
        cbPath.SetText(start);
        oDirFld.SetPath(start);
    });
    PassOver([&] { m_bPak = owner_.SaveOffered() && owner_.MemberList().Visible(); });
    if (m_bPak) {
        PassOver([&] { lPath2.SetCaption("Destination:"); });
        PassOver([&] { tPak.SetText(owner_.FileList().Path() + g_sPathSep + owner_.FileList().FileName()); });
    } else {
        PassOver([&] { lPath2.SetCaption("Script:"); });
    }
    tPak.Locked = m_bPak;
    PassOver([&] { cbPath.SetVisible(m_bPak); });
    PassOver([&] { OptSel[1].SetEnabled(m_bPak); });
    PassOver([&] { tScript.SetVisible(!m_bPak); });
    PassOver([&] { Command2.SetVisible(!m_bPak); });
    PassOver([&] { Command1.SetEnabled(!m_bPak); });
    PassOver([&] {
        m_lTotal = owner_.MemberList().Count();
        m_lSelected = 0;
        for (const auto& item : owner_.MemberList().ItemsInAddOrder()) m_lSelected += item->Selected ? 1 : 0;
    });
    PassOver([&] { SetOption(m_lSelected != 0 ? 1 : 0, true); });
}

void frmScript::Form_Activate() {
    if (VbTrim(g_sPkzipPath).empty() || !FileExists(g_sPkzipPath)) {
        MsgBox(MissingUtilityText(), vbCritical, "Missing Utility");
        Unload();
    }
}

void frmScript::Command1_Click() {
    PassOver([&] {
        cCommonDialog& dialog = CommonDialog();
        dialog.SetFilter("Pak Files (*.pak)|*.pak");
        dialog.SetDialogTitle("Choose Pak File");
        dialog.SetCancelError(true);
        dialog.SetFilterIndex(1);
        dialog.Sethwnd(hWnd());
        if (!g_sGameFolder.empty()) dialog.SetInitDir(g_sGameFolder + g_sPathSep + "sv");
        dialog.ShowOpen();
        tPak.SetText(dialog.Filename());
    });
}

void frmScript::cbPath_Change() {
    if (!EndsWithSep(cbPath.Text())) cbPath.SetText(cbPath.Text() + g_sPathSep);
}

void frmScript::cbPath_DropDown() {
    oDirFld.SetVisible(!oDirFld.Visible());
    if (oDirFld.Visible()) {
        if (SetFocus) SetFocus(oDirFld);
    } else {
        cbPath.SetText(oDirFld.Path());
        if (SetFocus) SetFocus(tPak);
    }
}

void frmScript::oDirFld_Change() { cbPath.SetText(oDirFld.Path()); }

void frmScript::oDirFld_KeyPress(int16_t& KeyAscii) {
    if (KeyAscii == 13) PassOver([&] { oDirFld.SetPath(oDirFld.List(oDirFld.ListIndex)); });
}

void frmScript::oDirFld_LostFocus() {
    cbPath.SetText(oDirFld.Path());
    oDirFld.SetVisible(false);
}

void frmScript::tSel_Change() {
    SetOption(2, !tSel.Text().empty());
    SetOption(0, !OptSel[2].Value());
}

void frmScript::tSel_LostFocus() {
    if (tSel.Text() == "*.*") {
        SetOption(2, false);
        SetOption(0, true);
    }
}

bool frmScript::MatchMember(const std::string& sName, bool bSelected) {
    switch (m_lMode) {
        case 0: return true;
        case 1: return bSelected;
        case 2: {
            const std::string& T = tSel.Text();
            if (VbTrim(T).empty()) return false;
            size_t star = T.find('*');
            if (star == std::string::npos) return VbUCase(VbTrim(sName)) == VbUCase(VbTrim(T));
            if (star > 0 && VbUCase(sName.substr(0, star)) != VbUCase(T.substr(0, star))) return false;
            std::string X = GetFileExt(VbReplace(T, "*", ""));
            if (X.empty()) return true;
            std::string name = GetFileName(sName);
            if (name.size() < X.size()) return false;
            return VbUCase(name.substr(name.size() - X.size())) == VbUCase(X);
        }
        default: return false;
    }
}

void frmScript::cmdValidate_Click(int16_t Index) {
    if (Index == 0) {
        m_bCancel = true;
        Unload();
        return;
    }
    try {
        for (int32_t i = 0; i < 3; ++i) {
            if (OptSel[i].Value()) {
                m_lMode = i;
                break;
            }
        }
        cbPath.SetText(oDirFld.Path());
        sPak = VbTrim(tPak.Text());
        g_sShortCutPath = cbPath.Text();
        sDest = m_bPak ? VbTrim(cbPath.Text()) : VbTrim(GetFolderName(tScript.Text()));
        auto refuse = [&](const std::string& text) { MsgBox(text, vbCritical, "Unpak Error"); };
        if (sPak.empty()) return refuse("Empty Pak not allowed!");
        if (VbTrim(sDest).empty()) return refuse(std::string("Empty ") + (m_bPak ? "Destination" : "Script") + " not allowed!");
        if (!FileExists(sPak)) return refuse(tPak.Text() + " doesn't exist!");
        if (!FileExists(sDest)) return refuse(sDest + " doesn't exist!");
        // The destination stands in the first line of the command file: a line
        // end in its name would split that line and let the rest of the name
        // read as a command.
        if (sDest.find_first_of("\r\n") != std::string::npos)
            return refuse("The destination's name holds a line end, which the command file can't carry. "
                          "Choose another folder.");
        if (!m_bPak) {
            Unload();
            return;
        }
        Run();
    } catch (const RuntimeError& e) {
        MsgBox(e.Description, vbCritical, "Internal Error");
    } catch (const std::bad_alloc&) {
        MsgBox(VbErrorDescription(vbErrOutOfMemory), vbCritical, "Internal Error");
    }
}

void frmScript::Run() {
    const std::string script = sDest + "_unpak_.bat";
    if (FileExists(script)) DeleteFileA(script);
    // The files that the run itself reads or writes. No member is written
    // onto them, whatever its name: on this platform an open file can be
    // deleted and replaced under its name.
    RunFileGuard pakGuard(sPak);
    RunFileGuard fixedGuard(sDest + "pkfixed.zip");
    RunFileGuard archiverGuard(g_sPkzipPath);
    // The wrappers written so far are files of the run too: a later member
    // of the same name must not replace what the archiver will read.
    std::vector<std::unique_ptr<RunFileGuard>> wrapperGuards;
    OpenPrintFile(script);
    RunFileGuard scriptGuard(script);
    uint64_t scriptDevice = 0, scriptInode = 0;
    const bool bScriptOpen = VbIdentity(g_vPrintFile, scriptDevice, scriptInode);
    if (bScriptOpen) scriptGuard.Refresh(scriptDevice, scriptInode);
    cmdValidate[1].SetEnabled(false);
    m_bCancel = false;
    oPBar.SetValue(1);
    oPBar.SetVisible(true);
    PrintToFile(BatchCdLine(sDest));
    ListView& list = owner_.MemberList();
    for (int32_t i = 1; i <= list.Count(); ++i) {
        DoEvents();
        // The dialog may have been cancelled, or the list emptied, meanwhile.
        if (i > list.Count()) break;
        ListItem& item = list.Item(i);
        if (MatchMember(item.Text, item.Selected)) {
            int32_t packed = VbCLng(item.SubItems(1));
            int32_t original = VbCLng(item.SubItems(2));
            const bool bWritten = UnpakMember(sDest, sPak, item.Text, packed, original, item.Tag);
            if (bWritten && packed != original) {
                const std::string sWrapper = MemberPath(sDest, item.Text + ".zip");
                if (!sWrapper.empty()) wrapperGuards.push_back(std::make_unique<RunFileGuard>(sWrapper));
                PrintToFile(BatchExtractLine(g_bWin9x, g_sPkzipPath, item.Text));
                PrintToFile(BatchDelLine(item.Text));
                if (FileExists(sDest + "pkfixed.zip")) DeleteFileA(sDest + "pkfixed.zip");
            }
            if (!bWritten && MemberNotWritten) MemberNotWritten(item.Text);
            auto v = static_cast<int32_t>(std::floor(static_cast<double>(i) / (m_lTotal + 1) * 10000));
            if (v < 10001) PassOver([&] { oPBar.SetValue(v); });
            DoEvents();
        }
        if (m_bCancel) break;
    }
    ClosePrintFile();
    // The runner is started only on the file that this run wrote.
    if (bScriptOpen && IsSameFile(script, scriptDevice, scriptInode)) {
        if (StartCommandFile) {
            StartCommandFile(script, sDest);
        } else {
            ShellExecuteA(0, "open", g_bWin9x ? "command" : "cmd", "/c \"" + script + "\"", sDest, 1);
        }
    }
    Unload();
}
