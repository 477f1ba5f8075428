#pragma once
// The Options dialog: where the archiver lies, an unpack location and the
// main window's custom shortcut folder, stored under the program's key of the
// current user's registry on "&Ok".
#include <cstdint>
#include <string>

#include "controls/Controls.h"

class frmOpt : public ModalForm {
public:
    frmOpt();

    Label lPath[3] = {Label{"lPath_0"}, Label{"lPath_1"}, Label{"lPath_2"}};
    TextBox tPath{"tPath"};
    CommandButton cmdPath{"cmdPath"};
    TextBox tPak{"tPak"};
    CommandButton Command1{"Command1"};
    TextBox tShortcut{"tShortcut"};
    OptionButton optOS[2] = {OptionButton{"optOS_0"}, OptionButton{"optOS_1"}};
    CommandButton cmdValidate[2] = {CommandButton{"cmdValidate_0"}, CommandButton{"cmdValidate_1"}};

    void Form_Load();
    void cmdPath_Click();
    void Command1_Click();
    void cmdValidate_Click(int16_t Index);

private:
    // Browses for a file into a text box; a cancelled dialog changes nothing.
    void Browse(TextBox& box);
};
