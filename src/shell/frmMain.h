#pragma once
// The main window: start-up and settings, the dispatch of a selected file,
// folder navigation, the layout of the panes and the commands. The view in
// app/ draws these control models and forwards the user's actions to the
// handlers below.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "controls/Controls.h"
#include "controls/FileControls.h"
#include "controls/ListView.h"
#include "identify/IFileHost.h"
#include "pak/frmScript.h"
#include "winsupport/cScrollBars.h"

class CNerhaltFiles;
class CBINFile;
class CImageFiles;
class cWavPlayer;

// How the selected file is previewed.
enum FileKind : int32_t { fkNone = 0, fkText = 1, fkPicture = 2, fkGame = 3 };

// Key codes the handlers test.
inline constexpr int16_t vbKeyReturn = 13;
inline constexpr int16_t vbKeyPageUp = 33;
inline constexpr int16_t vbKeyPageDown = 34;
inline constexpr int16_t vbKeyEnd = 35;
inline constexpr int16_t vbKeyHome = 36;

class frmMain : public Form, public IFileHost, public IScriptOwner {
public:
    frmMain();
    ~frmMain() override;
    frmMain(const frmMain&) = delete;
    frmMain& operator=(const frmMain&) = delete;

    // ---- Controls, in the tree of the window --------------------------------
    Toolbar oToolbar{"oToolbar"};
    StatusBar oStatusBar{"oStatusBar"};
    Frame fraMain{"fraMain"};
    ListView oListView{"oListView"};
    Frame fraDocMain{"fraDocMain"};
    Toolbar oFolderTbar{"oFolderTbar"};
    DirListBox oDir{"oDir"};
    DriveListBox oDrive{"oDrive"};
    FileListBox oFile{"oFile"};
    Label lInfo{"lInfo"};
    TextBox tReport{"tReport"};
    ScrollBar oVScroll{"oVScroll"};
    PictureBox oImg{"oImg"};
    PictureBox oPicture{"oPicture"};
    Label oSSTab{"oSSTab"};  // one tab, "Documents"
    MenuItem mnuFile{"mnuFile", 0, "&File"};
    MenuItem mnuTools{"mnuTools", 0, "&Tools"};
    std::vector<std::unique_ptr<MenuItem>> mnuSubFile;   // indices 0 to 4
    std::vector<std::unique_ptr<MenuItem>> mnuSubTools;  // indices 0 to 2
    Screen screen;
    // The two bars of oImg, which scroll oPicture; bound to oImg at Form_Load.
    cScrollBars oScroll;

    // Outer size of the window, in twips.
    int32_t WindowWidth() const { return Bounds().Width; }
    int32_t WindowHeight() const { return Bounds().Height; }

    // ---- State --------------------------------------------------------------
    int32_t m_lSortColumn = 1;
    int32_t m_lFileKind = fkNone;
    std::unique_ptr<CNerhaltFiles> m_oGameFiles;
    std::unique_ptr<CImageFiles> m_oImageFiles;
    std::unique_ptr<CBINFile> m_oBinFile;
    // The wave player, made and attached to this window by Form_Initialize.
    std::unique_ptr<cWavPlayer> oWavPlayer;
    // Set when the window has been closed through Form_Unload.
    bool Unloaded = false;

    // ---- Start-up and shutdown ------------------------------------------------
    void Form_Initialize();
    void Form_Load();
    void Form_Unload(int16_t& Cancel);
    void Form_Resize();

    // ---- Layout of the panes ---------------------------------------------------
    void oImg_Resize();
    void oScroll_Change(int32_t& eBar);
    void oScroll_Scroll(int32_t& eBar);

    // ---- Selection and preview ------------------------------------------------
    void oFile_Click();
    void oFile_DblClick();
    void oFile_KeyPress(int16_t& KeyAscii);
    void oWavPlayer_Complete();
    // The path of the selected file, as the selection builds it.
    std::string SelectedPath() const;

    // ---- Folder navigation ----------------------------------------------------
    void oDir_Change();
    void oDir_KeyPress(int16_t& KeyAscii);
    void oDrive_Change();
    void oFolderTbar_ButtonClick(int32_t index);

    // ---- Commands -------------------------------------------------------------
    void SaveCommand();
    void mnuSubFile_Click(int16_t Index);
    void mnuSubTools_Click(int16_t Index);
    void oToolbar_ButtonClick(int32_t index);
    void oListView_ColumnClick(int32_t index);
    void oListView_DblClick();
    void oListView_KeyPress(int16_t KeyAscii);
    void oStatusBar_PanelDblClick(int32_t index);
    void tReport_Change();
    void tReport_KeyDown(int16_t& KeyCode, int16_t Shift);

    // The three offers, each a menu entry and a toolbar button switched together.
    void SetSaveOffer(bool on);
    void SetShowOffer(bool on);
    void SetExtractOffer(bool on);
    bool SaveOffered() const override;
    bool ShowOffered() const;
    bool ExtractOffered() const;

    // Shows a modal form (frmScript, frmOpt) owned by this window; the front
    // end fills the hook, tests play the user's part through it.
    using ModalHook = std::function<void(const std::string& formName)>;
    ModalHook ShowModalForm;
    // Closes the window; the front end fills it.
    std::function<void()> CloseWindow;

    // ---- What the file classes and the Unpak dialog reach ----------------------
    TextBox& ReportPane() override { return tReport; }
    PictureBox& PicturePane() override { return oPicture; }
    ListView& MemberList() override { return oListView; }
    ScrollBar& PageBar() override { return oVScroll; }
    int32_t OwnerWindow() const override { return hWnd(); }
    FileListBox& FileList() override { return oFile; }
};
