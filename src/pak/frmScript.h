#pragma once
// The Unpak dialog: cuts the wanted members of the open PAK into a
// destination folder (stored members as themselves, compressed members as ZIP
// wrappers), writes _unpak_.bat with the archiver's lines for the wrappers and
// starts it.
#include <cstdint>
#include <functional>
#include <string>

#include "controls/Controls.h"
#include "controls/FileControls.h"

class ListView;

// What the dialog reads of the window that opens it.
class IScriptOwner {
public:
    // The list of the open PAK's members.
    virtual ListView& MemberList() = 0;
    // The file list, whose selected file is the open PAK.
    virtual FileListBox& FileList() = 0;
    // Whether the window offers to save the selected file (the first File
    // menu entry after Open).
    virtual bool SaveOffered() const = 0;

protected:
    IScriptOwner() = default;
    ~IScriptOwner() = default;
};

class frmScript : public ModalForm {
public:
    explicit frmScript(IScriptOwner& owner);

    Label lPath1{"lPath_1"};
    TextBox tPak{"tPak"};
    CommandButton Command1{"Command1"};
    Label lPath2{"lPath_2"};
    ComboBox cbPath{"cbPath"};
    DirListBox oDirFld{"oDirFld"};
    TextBox tScript{"tScript"};
    CommandButton Command2{"Command2"};
    Frame fraSelect{"fraSelect"};
    OptionButton OptSel[3] = {OptionButton{"OptSel_0"}, OptionButton{"OptSel_1"}, OptionButton{"OptSel_2"}};
    TextBox tSel{"tSel"};
    ProgressBar oPBar{"oPBar"};
    CommandButton cmdValidate[2] = {CommandButton{"cmdValidate_0"}, CommandButton{"cmdValidate_1"}};

    bool m_bPak = false;
    int32_t m_lMode = 0;
    int32_t m_lSelected = 0;
    int32_t m_lTotal = 0;
    bool m_bCancel = false;
    std::string sPak;
    std::string sDest;

    void Form_Load();
    void Form_Activate();
    void Command1_Click();
    void cbPath_Change();
    void cbPath_DropDown();
    void oDirFld_Change();
    void oDirFld_KeyPress(int16_t& KeyAscii);
    void oDirFld_LostFocus();
    void tSel_Change();
    void tSel_LostFocus();
    bool MatchMember(const std::string& sName, bool bSelected);
    void cmdValidate_Click(int16_t Index);

    // Starts the command file in the command shell, detached; the
    // command-line companion replaces it to run the file and wait.
    std::function<void(const std::string& script, const std::string& folder)> StartCommandFile;
    // Told of each wanted member that UnpakMember did not write. The dialog
    // passes over such a member quietly; the command-line companion reports
    // it and fails.
    std::function<void(const std::string& sName)> MemberNotWritten;

    // The text of the "Missing Utility" message.
    static std::string MissingUtilityText();

private:
    // Option buttons of one frame: setting one clears the others.
    void SetOption(int32_t index, bool value);
    void Run();

    IScriptOwner& owner_;
};
