#pragma once
// What the sub-commands of quarrin-cli share: the error exit, the check that a
// path names a readable file, and the user's answers at a save dialog and a
// replace question, played by the command line.
#include <cstdint>
#include <string>

#include "platform/FileDialogs.h"
#include "platform/MessageBox.h"

// Prints "quarrin-cli: <message>" on standard error; gives the exit status 1.
int CliFail(const std::string& message);

// True for a file that can be opened for reading; otherwise `why` says why.
bool CheckReadableFile(const std::string& path, std::string& why);

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

// The user at the replace question: answers Yes. Installed for the object's life.
class AnswerYes : public IMessageBoxService {
public:
    AnswerYes();
    ~AnswerYes() override;
    int32_t Show(const std::string&, int32_t, const std::string&) override { return vbYes; }

private:
    IMessageBoxService* previous_;
};
