#pragma once
// The views of the two modal dialogs of the main window, Unpak and Options.
#include <string>

class QWidget;
class frmMain;

// Shows frmScript ("frmScript") or frmOpt ("frmOpt") modally over `owner`;
// returns when the dialog has been unloaded.
void ShowModalFormView(frmMain& main, const std::string& formName, QWidget* owner);
