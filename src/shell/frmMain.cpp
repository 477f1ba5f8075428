#include "shell/frmMain.h"

#include <new>

#include "hexview/CBINFile.h"
#include "identify/CNerhaltFiles.h"
#include "pictures/CImageFiles.h"
#include "shell/GameFileClasses.h"
#include "identify/modGlobal.h"
#include "platform/MessageBox.h"
#include "pak/ZipWrapper.h"
#include "platform/Runtime.h"
#include "platform/Registry.h"
#include "sound/cWavPlayer.h"
#include "winsupport/cRegistry.h"

namespace {

// The extensions of the files shown as text, compared in upper case.
bool IsTextExtension(const std::string& ext) {
    static const char* const kText[] = {"BAT", "MAP", "TIL", "TXT", "ACTS", "CAM", "MVLST"};
    for (const char* t : kText)
        if (ext == t) return true;
    return false;
}

constexpr size_t kTextCut = 32000;

}  // namespace

frmMain::frmMain() : Form("frmMain") {
    Caption = "Quarrin (beta version)";
    // Sizes in twips; the window's outer size holds the client area of
    // 9135 x 7830 with its frame, caption and menu bar.
    Move(0, 0, 9255, 8565);

    oToolbar.Move(0, 0, 9135, 360);
    oToolbar.AddButton({0, ToolButton::Separator, "", 0, 0, true, ""});
    oToolbar.AddButton({0, ToolButton::Default, "Extract", 6, 0, false, ""});
    oToolbar.AddButton({0, ToolButton::Default, "Save as ...", 2, 0, true, ""});
    oToolbar.AddButton({0, ToolButton::Default, "Quick view ...", 3, 0, true, ""});

    oStatusBar.Move(0, 7530, 9135, 300);
    oStatusBar.AddPanel(13044);
    oStatusBar.AddPanel(2540);

    fraMain.Move(40, 280, 8655, 6735);
    oListView.Move(0, 4440, 8655, 2655);
    oListView.SetVisible(false);
    oListView.ColumnHeaders = {{"File Name", 4304, ""},
                               {"Packed Size", 2540, ""},
                               {"Original Size", 2540, ""},
                               {"Extension", 2540, ""}};
    oListView.Sorted = true;

    fraDocMain.Move(160, 500, 8320, 3480);
    oFolderTbar.Move(120, 150, 1935, 330);
    oFolderTbar.AddButton({0, ToolButton::Default, "Selvane", 1, 0, true, ""});
    oFolderTbar.AddButton({0, ToolButton::Default, "Quarrin", 1, 0, true, ""});
    oFolderTbar.AddButton({0, ToolButton::Default, "Custom", 1, 0, true, ""});
    oFolderTbar.AddButton({0, ToolButton::Placeholder, "", 0, 100, true, ""});
    oFolderTbar.AddButton({0, ToolButton::Default, "...", 2, 0, true, ""});
    oDir.Move(60, 510, 2055, 2565);
    oDrive.Move(65, 3100, 2055, 315);
    oFile.Move(2160, 150, 2415, 2820);
    lInfo.Move(2160, 3000, 2295, 375);
    tReport.Move(4580, 160, 2055, 3250);
    tReport.Locked = true;
    oVScroll.Move(6480, 190, 255, 2950);
    oVScroll.SetMin(0);
    oVScroll.SetMax(0);
    // oImg lies in fraMain, which measures in twips, inside a sunken border.
    oImg.ParentUnitsPerPixel = screen.TwipsPerPixelX;
    oImg.BorderPixels = 2;
    oImg.Move(90, 4080, 8415, 2600);
    oPicture.Move(150 / 15, 0, 3735 / 15, 2415 / 15);  // oImg's scale unit is the pixel
    oPicture.BackColor = 0x80000008;  // the system's window text colour
    oSSTab.Move(90, 180, 8415, 3855);
    oSSTab.SetCaption("Documents");

    const char* fileCaptions[] = {"&Open", "S&ave As", "&Show", "-", "E&xit"};
    for (int16_t i = 0; i < 5; ++i)
        mnuSubFile.push_back(std::make_unique<MenuItem>("mnuSubFile", i, fileCaptions[i]));
    mnuSubFile[0]->SetEnabled(false);
    mnuSubTools.push_back(std::make_unique<MenuItem>("mnuSubTools", 0, "&Unpak", "Ctrl+U"));
    mnuSubTools.push_back(std::make_unique<MenuItem>("mnuSubTools", 1, "-"));
    mnuSubTools.push_back(std::make_unique<MenuItem>("mnuSubTools", 2, "O&ptions", "Ctrl+O"));
    mnuSubTools[0]->SetEnabled(false);

    // Events of the controls, raised synchronously by the models.
    for (auto& m : mnuSubFile) {
        int16_t index = m->Index;
        m->Click.Connect([this, index] { mnuSubFile_Click(index); });
    }
    for (auto& m : mnuSubTools) {
        int16_t index = m->Index;
        m->Click.Connect([this, index] { mnuSubTools_Click(index); });
    }
    oFile.Click.Connect([this] { oFile_Click(); });
    oFile.DblClick.Connect([this] { oFile_DblClick(); });
    oFile.KeyPress.Connect([this](int16_t& key) { oFile_KeyPress(key); });
    oDir.Change.Connect([this] { oDir_Change(); });
    oDir.KeyPress.Connect([this](int16_t& key) { oDir_KeyPress(key); });
    oDrive.Change.Connect([this] { oDrive_Change(); });
    oFolderTbar.ButtonClick.Connect([this](int32_t index) { oFolderTbar_ButtonClick(index); });
    oToolbar.ButtonClick.Connect([this](int32_t index) { oToolbar_ButtonClick(index); });
    oListView.ColumnClick.Connect([this](int32_t index) { oListView_ColumnClick(index); });
    oListView.DblClick.Connect([this] { oListView_DblClick(); });
    oListView.KeyPress.Connect([this](int16_t key) { oListView_KeyPress(key); });
    oStatusBar.PanelDblClick.Connect([this](int32_t index) { oStatusBar_PanelDblClick(index); });
    tReport.Change.Connect([this] { tReport_Change(); });
    tReport.KeyDown.Connect([this](int16_t& key, int16_t shift) { tReport_KeyDown(key, shift); });
    Resize.Connect([this] { Form_Resize(); });
    oImg.Resize.Connect([this] { oImg_Resize(); });
    oScroll.Change.Connect([this](int32_t& eBar) { oScroll_Change(eBar); });
    oScroll.Scroll.Connect([this](int32_t& eBar) { oScroll_Scroll(eBar); });
}

frmMain::~frmMain() {
    // The file objects end before the controls they reach.
    m_oGameFiles.reset();
    m_oImageFiles.reset();
    m_oBinFile.reset();
}

// ---- Start-up and shutdown ------------------------------------------------

void frmMain::Form_Initialize() {
    PassOver([&] {
        oWavPlayer = std::make_unique<cWavPlayer>();
        oWavPlayer->Complete.Connect([this] { oWavPlayer_Complete(); });
        oWavPlayer->Attach(hWnd());
    });
    cRegistry& registry = Registry();
    PassOver([&] { registry.SetValueType(REG_SZ); });
    // Where the game is installed: the machine's setting, only ever read.
    PassOver([&] {
        registry.SetValueKey("Directory");
        registry.SetClassKey(HKEY_LOCAL_MACHINE);
        registry.SetSectionKey("Software\\Selvane\\Directory");
        g_sGameFolder = registry.Value().ToString();
    });
    PassOver([&] {
        registry.SetClassKey(HKEY_CURRENT_USER);
        if (!registry.KeyExists()) registry.CreateKey();
    });
    PassOver([&] { registry.SetSectionKey("Software\\Corvane\\Quarrin"); });
    PassOver([&] {
        registry.SetValueKey("PkzipPath");
        g_sPkzipPath = registry.Value().ToString();
    });
    PassOver([&] {
        registry.SetValueKey("UnpakPath");
        g_sUnpakPath = registry.Value().ToString();
    });
    PassOver([&] {
        registry.SetValueKey("ShortCutPath");
        g_sShortCutPath = registry.Value().ToString();
    });
    g_bWin9x = GetOSPlatform() == 1;
    FillZipTemplates();
}

void frmMain::Form_Load() {
    m_lSortColumn = 1;
    m_lFileKind = fkNone;
    // The drive list stands on the drive that holds the program.
    std::string home = App::Path();
    std::string drive = g_sRootPath;
    for (const auto& d : GetDriveList())
        if (d.size() > drive.size() && home.rfind(d, 0) == 0 && (home.size() == d.size() || home[d.size()] == '/'))
            drive = d;
    oDrive.InitDrive(drive);
    PassOver([&] { oDir.SetPath(App::Path()); });
    lInfo.SetCaption("Quarrin, by Corvane\r\nVersion 0.97");
    PassOver([&] { oScroll.Create(oImg.hWnd()); });
}

void frmMain::Form_Unload(int16_t& Cancel) {
    Unloaded = true;
    if (oWavPlayer) {
        PassOver([&] {
            if (oWavPlayer->Playing()) oWavPlayer->StopPlay();
        });
        PassOver([&] { oWavPlayer->CloseFile(); });
        PassOver([&] { oWavPlayer->Detach(); });
    }
}

void frmMain::Form_Resize() {
    const int32_t W = WindowWidth();
    const int32_t H = WindowHeight() - oToolbar.Bounds().Height - oStatusBar.Bounds().Height;
    PassOver([&] { oSSTab.SetWidth(W - 340); });
    PassOver([&] { fraDocMain.SetWidth(W - 500); });
    PassOver([&] { oImg.Move(oImg.Bounds().Left, oImg.Bounds().Top, W - 360, H - oImg.Bounds().Top - 680); });
    PassOver([&] { oListView.Move(oImg.Bounds().Left, oImg.Bounds().Top, oImg.Bounds().Width, oImg.Bounds().Height); });
    PassOver([&] { fraMain.Move(fraMain.Bounds().Left, fraMain.Bounds().Top, W - 200, H - fraMain.Bounds().Top - 340); });
    PassOver([&] { tReport.SetWidth(W - tReport.Bounds().Left - 580); });
    PassOver([&] {
        oVScroll.SetLeft(tReport.Bounds().Left + tReport.Bounds().Width - (oVScroll.Bounds().Width + 30));
    });
    PassOver([&] { tReport_Change(); });
    if (W < 7200) PassOver([&] { SetWidth(7200); });
    if (H < 5600) PassOver([&] { SetHeight(6400); });
}

namespace {

// One bar of oImg_Resize: the bar's units are as many pixels as a pixel has
// twips, so `over` is the picture's overhang in those units.
void FitBar(cScrollBars& bars, PictureBox& picture, int32_t eBar, int32_t pictureSize, int32_t innerSize,
            int32_t twipsPerPixel) {
    int32_t over = 0;
    PassOver([&] { over = VbIntDiv(VbToLong(static_cast<int64_t>(pictureSize) - innerSize), twipsPerPixel); });
    if (over > 0) {
        // An inner size below one unit divides by zero: no steps, and so no
        // LargeChange, but the bar still gets its Max and shows.
        int32_t steps = 0;
        PassOver([&] { steps = VbAdd32(VbIntDiv(over, VbIntDiv(innerSize, twipsPerPixel)), 1); });
        PassOver([&] { bars.SetLargeChange(eBar, VbIntDiv(over, steps)); });
        PassOver([&] { bars.SetMax(eBar, over); });
        PassOver([&] { bars.SetVisible(eBar, true); });
    } else {
        PassOver([&] { bars.SetVisible(eBar, false); });
        PassOver([&] { eBar == 0 ? picture.SetLeft(0) : picture.SetTop(0); });
    }
}

}  // namespace

void frmMain::oImg_Resize() {
    // The vertical bar first.
    FitBar(oScroll, oPicture, 1, oPicture.Bounds().Height, oImg.ScaleHeight(), screen.TwipsPerPixelY);
    FitBar(oScroll, oPicture, 0, oPicture.Bounds().Width, oImg.ScaleWidth(), screen.TwipsPerPixelX);
}

void frmMain::oScroll_Change(int32_t& eBar) { oScroll_Scroll(eBar); }

void frmMain::oScroll_Scroll(int32_t& eBar) {
    // Raised from inside the bars' message handling, which a failure must not
    // leave; the picture then stays where it was.
    PassOver([&] {
        const int64_t value = oScroll.Value(eBar);
        if (eBar == 0)
            oPicture.SetLeft(VbToLong(-value * screen.TwipsPerPixelX));
        else
            oPicture.SetTop(VbToLong(-value * screen.TwipsPerPixelY));
    });
}

// ---- Selection and preview --------------------------------------------------

std::string frmMain::SelectedPath() const {
    return VbReplace(oFile.Path() + g_sPathSep + oFile.FileName(), "//", "/");
}

void frmMain::SetSaveOffer(bool on) {
    PassOver([&] { mnuSubFile[1]->SetEnabled(on); });
    PassOver([&] { oToolbar.SetButtonEnabled(3, on); });
}

void frmMain::SetShowOffer(bool on) {
    PassOver([&] { mnuSubFile[2]->SetEnabled(on); });
    PassOver([&] { oToolbar.SetButtonEnabled(4, on); });
}

void frmMain::SetExtractOffer(bool on) {
    PassOver([&] { mnuSubTools[0]->SetEnabled(on); });
    PassOver([&] { oToolbar.SetButtonEnabled(2, on); });
}

bool frmMain::SaveOffered() const { return mnuSubFile[1]->Enabled(); }
bool frmMain::ShowOffered() const { return mnuSubFile[2]->Enabled(); }
bool frmMain::ExtractOffered() const { return mnuSubTools[0]->Enabled(); }

void frmMain::oFile_Click() {
    m_lFileKind = fkNone;
    PassOver([&] { oVScroll.SetVisible(true); });
    PassOver([&] {
        oStatusBar.SetPanelText(1, {});
        oStatusBar.SetPanelText(2, {});
    });
    SetSaveOffer(false);
    SetShowOffer(false);
    SetExtractOffer(false);
    const std::string path = SelectedPath();
    const std::string ext = VbUCase(GetFileExt(oFile.FileName()));

    bool game = false;
    PassOver([&] {
        if (!m_oGameFiles) m_oGameFiles = std::make_unique<CNerhaltFiles>(GameFileClasses(*this));
        game = m_oGameFiles->Initialize(path, oImg.hDC, &oListView);
    });
    // The common pictures are tried only for a file that isn't the game's.
    bool picture = false;
    if (!game) {
        PassOver([&] {
            if (!m_oImageFiles) m_oImageFiles = std::make_unique<CImageFiles>(*this);
            picture = m_oImageFiles->Initialize(path);
        });
    }
    if (game) {
        m_lFileKind = fkGame;
        PassOver([&] {
            std::string gameExt = VbUCase(m_oGameFiles->Extension());
            if (gameExt == "MSH" || gameExt == "AMH") {
                m_lFileKind = fkNone;
                SetSaveOffer(m_oGameFiles->IsAble2Save());
            }
        });
        PassOver([&] { oStatusBar.SetPanelText(2, m_oGameFiles->Extension()); });
        PassOver([&] { oStatusBar.SetPanelText(1, m_oGameFiles->Information()); });
        PassOver([&] { SetShowOffer(m_oGameFiles->IsAble2Show()); });
    } else if (picture) {
        m_lFileKind = fkPicture;
        PassOver([&] { oStatusBar.SetPanelText(2, m_oImageFiles->Extension()); });
        PassOver([&] { oStatusBar.SetPanelText(1, m_oImageFiles->Information()); });
        PassOver([&] { SetShowOffer(m_oImageFiles->IsAble2Show()); });
    } else if (IsTextExtension(ext)) {
        m_lFileKind = fkText;
        PassOver([&] { oVScroll.SetVisible(false); });
        SetShowOffer(true);
        PassOver([&] { oStatusBar.SetPanelText(1, "ASCII Formated File"); });
    }
    if (ext == "WAV") PassOver([&] { oStatusBar.SetPanelText(1, "Wav File"); });

    if (m_lFileKind != fkText) {
        PassOver([&] {
            if (!m_oBinFile) m_oBinFile = std::make_unique<CBINFile>(*this);
            if (m_oBinFile->Initialize(path, 0, &oListView)) m_oBinFile->Show(0);
        });
    }
}

void frmMain::oFile_DblClick() {
    const std::string ext = VbUCase(GetFileExt(oFile.FileName()));
    try {
        // A wave file plays, or stops the one playing; nothing else changes.
        if (ext == "WAV") {
            if (!oWavPlayer) return;
            if (oWavPlayer->Playing()) {
                oWavPlayer->StopPlay();
                oWavPlayer->CloseFile();
                // The buffers given back end the sound through the event loop.
                while (oWavPlayer->Playing()) {
                    DoEvents();
                    oWavPlayer->StopPlay();
                    DoEvents();
                }
            } else if (oWavPlayer->OpenFile(SelectedPath())) {
                oWavPlayer->Play();
            }
            return;
        }
        screen.SetMousePointer(11);
        oVScroll.SetVisible(m_lFileKind != fkNone && m_lFileKind != fkText);
        switch (m_lFileKind) {
            case fkNone:
                oVScroll.SetVisible(false);
                if (m_oGameFiles) m_oGameFiles->Show(0);
                break;
            case fkText: {
                tReport.SetText({});
                oStatusBar.SetPanelText(2, {});
                oStatusBar.SetPanelText(1, "ASCII Formated File");
                // From here on errors no longer end the preview.
                std::string text;
                bool failed = !PassOver([&] {
                    if (!m_oBinFile) m_oBinFile = std::make_unique<CBINFile>(*this);
                    std::string path = SelectedPath();
                    text = m_oBinFile->ReadAll(path, static_cast<int64_t>(tReport.Capacity()) + 1);
                });
                if (!PassOver([&] { tReport.SetText(text); })) failed = true;
                if (failed) PassOver([&] { tReport.SetText(text.substr(0, kTextCut) + "\r\n..."); });
                break;
            }
            case fkPicture:
                SetSaveOffer(m_oImageFiles->IsAble2Save());
                oListView.SetVisible(false);
                oPicture.SetVisible(true);
                oImg.SetVisible(true);
                m_oImageFiles->Show();
                oImg.Refresh();
                oImg_Resize();
                break;
            case fkGame: {
                bool listView = !m_oGameFiles->HideListView();
                oListView.SetVisible(listView);
                oPicture.SetVisible(!listView);
                oImg.SetVisible(!listView);
                SetSaveOffer(m_oGameFiles->IsAble2Save());
                SetExtractOffer(m_oGameFiles->Extension() == "pak");
                int32_t height = m_oGameFiles->Height();
                if (height > 0) oPicture.Move(0, 0, m_oGameFiles->Width(), height);
                oPicture.Refresh();
                oPicture.Cls();
                m_oGameFiles->Show(oPicture.hDC);
                oPicture.Refresh();
                oImg.Refresh();
                oImg_Resize();
                break;
            }
            default:
                break;
        }
        screen.SetMousePointer(0);
    } catch (const RuntimeError& e) {
        PassOver([&] { oStatusBar.SetPanelText(1, e.Description); });
        screen.SetMousePointer(0);
    } catch (const std::bad_alloc&) {
        PassOver([&] { oStatusBar.SetPanelText(1, VbErrorDescription(vbErrOutOfMemory)); });
        screen.SetMousePointer(0);
    }
}

void frmMain::oWavPlayer_Complete() {
    PassOver([&] { oWavPlayer->StopPlay(); });
    PassOver([&] { oWavPlayer->CloseFile(); });
}

void frmMain::oFile_KeyPress(int16_t& KeyAscii) {
    if (KeyAscii == vbKeyReturn) oFile_DblClick();
}

// ---- Folder navigation --------------------------------------------------------

void frmMain::oDir_Change() {
    PassOver([&] { oFile.SetPath(oDir.Path()); });
}

void frmMain::oDir_KeyPress(int16_t& KeyAscii) {
    if (KeyAscii != vbKeyReturn) return;
    PassOver([&] { oDir.SetPath(oDir.List(oDir.ListIndex)); });
}

void frmMain::oDrive_Change() {
    const std::string remembered = oDir.Path();
    if (PassOver([&] { oDir.SetPath(oDrive.Drive()); })) return;
    PassOver([&] { oDir.SetPath(remembered); });
    // The system drive is the fallback; a system drive that can't be read
    // itself ends here rather than going round again.
    if (oDrive.Drive() != g_sSystemDrive) PassOver([&] { oDrive.SetDrive(g_sSystemDrive); });
}

void frmMain::oFolderTbar_ButtonClick(int32_t index) {
    PassOver([&] {
        switch (index) {
            case 1: oDir.SetPath(g_sGameFolder); break;
            case 2: oDir.SetPath(App::Path()); break;
            case 3: oDir.SetPath(g_sShortCutPath.empty() ? App::Path() : g_sShortCutPath); break;
            case 5:
                // The root has no parent.
                if (oDir.Path() != g_sRootPath) oDir.SetPath(oDir.Path() + g_sPathSep + "..");
                break;
            default: break;
        }
    });
}

// ---- Commands -------------------------------------------------------------------

void frmMain::SaveCommand() {
    switch (m_lFileKind) {
        case fkNone:
        case fkGame:
            if (m_oGameFiles) m_oGameFiles->SaveAs();
            break;
        case fkPicture:
            if (m_oImageFiles) m_oImageFiles->SaveAs();
            break;
        default: break;
    }
}

void frmMain::mnuSubFile_Click(int16_t Index) {
    switch (Index) {
        case 0: break;
        case 1: SaveCommand(); break;
        case 2: oFile_DblClick(); break;
        default:
            if (CloseWindow) {
                CloseWindow();
            } else {
                int16_t cancel = 0;
                Form_Unload(cancel);
            }
            break;
    }
}

void frmMain::mnuSubTools_Click(int16_t Index) {
    if (!ShowModalForm) return;
    if (Index == 0) ShowModalForm("frmScript");
    if (Index == 2) ShowModalForm("frmOpt");
}

void frmMain::oToolbar_ButtonClick(int32_t index) {
    PassOver([&] { screen.SetMousePointer(11); });
    PassOver([&] {
        switch (index) {
            case 2:
                screen.SetMousePointer(0);
                mnuSubTools_Click(0);
                break;
            case 3: SaveCommand(); break;
            case 4: oFile_DblClick(); break;
            default: break;
        }
    });
    PassOver([&] { screen.SetMousePointer(0); });
}

void frmMain::oListView_ColumnClick(int32_t index) {
    oListView.SetSortKey(index - 1);
    if (index != m_lSortColumn) {
        oListView.Column(m_lSortColumn).Icon.clear();
        oListView.Column(index).Icon = "ASC";
        oListView.SetSortOrder(0);
        m_lSortColumn = index;
    } else {
        ColumnHeader& column = oListView.Column(index);
        column.Icon = column.Icon == "DESC" ? "ASC" : "DESC";
        oListView.SetSortOrder(column.Icon == "DESC" ? 1 : 0);
    }
    oListView.Refresh();
}

void frmMain::oListView_DblClick() {
    if (oToolbar.Buttons(3).Enabled && m_oGameFiles) m_oGameFiles->SaveAs();
}

void frmMain::oListView_KeyPress(int16_t KeyAscii) {
    if (KeyAscii == vbKeyReturn) oListView_DblClick();
}

void frmMain::oStatusBar_PanelDblClick(int32_t index) { MsgBox("Coded by Dovrin", vbOKOnly); }

void frmMain::tReport_Change() { oVScroll.SetEnabled(!tReport.Text().empty()); }

void frmMain::tReport_KeyDown(int16_t& KeyCode, int16_t Shift) {
    if (!oVScroll.Visible()) return;
    PassOver([&] {
        switch (KeyCode) {
            case vbKeyHome:
                if (oVScroll.Value() != oVScroll.Min()) oVScroll.SetValue(oVScroll.Min());
                break;
            case vbKeyPageUp:
                if (oVScroll.Value() != oVScroll.Min()) oVScroll.SetValue(oVScroll.Value() - 1);
                break;
            case vbKeyPageDown:
                if (oVScroll.Value() != oVScroll.Max()) oVScroll.SetValue(oVScroll.Value() + 1);
                break;
            case vbKeyEnd:
                if (oVScroll.Value() != oVScroll.Max()) oVScroll.SetValue(oVScroll.Max());
                break;
            default: break;
        }
    });
}
