#pragma once
// What the sub-commands of quarrin-cli share: the error exit, the check that a
// path names a readable file, the showing of names read from files, and the
// user's answers at a save dialog and a replace question, played by the
// command line.
#include <cstdint>
#include <string>

#include "platform/FileDialogs.h"
#include "platform/MessageBox.h"

class frmMain;

// Prints "quarrin-cli: <message>" on standard error; gives the exit status 1.
int CliFail(const std::string& message);

// True for a file that can be opened for reading; otherwise `why` says why.
bool CheckReadableFile(const std::string& path, std::string& why);

// A write beyond the file size limit of the process fails with an error, as
// on a full disk, instead of ending the process: the writer then throws its
// unfinished file away and says so.
void FailOversizeWrites();

// A name read from a file, as an error text or a terminal shows it: control
// bytes and bytes from 127 up as \xNN, so that a crafted name can't drive the
// terminal.
std::string ShownName(const std::string& name);
// True when standard output is a terminal. Output for scripts keeps the bytes
// of names as they stand; a terminal gets them through ShownName.
bool StdoutIsTerminal();

// Points the main window's file list at the file's folder and selects the
// file, which runs the selection as a click does; false with the reason.
bool SelectFile(frmMain& form, const std::string& path, std::string& why);

// The user at a file dialog: picks one path under one filter. Installed for
// the object's life.
class AnswerFileDialog : public IFileDialogService {
public:
    AnswerFileDialog(std::string path, int32_t filterIndex);
    ~AnswerFileDialog() override;
    FileDialogAnswer Show(const FileDialogRequest& request) override;

private:
    std::string path_;
    int32_t filterIndex_;
    IFileDialogService* previous_;
};

// The user at the message boxes of a save: answers Yes to the replace
// question, and to a question box (one with the question icon, which asks
// before a large export) Yes only when told to. Installed for the object's
// life.
class AnswerYes : public IMessageBoxService {
public:
    explicit AnswerYes(bool yesToQuestions = true);
    ~AnswerYes() override;
    int32_t Show(const std::string& prompt, int32_t buttons, const std::string& title) override;

    // The question boxes asked, in order.
    int32_t Questions = 0;

private:
    bool yesToQuestions_;
    IMessageBoxService* previous_;
};
