#include "CliSupport.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <unistd.h>

#include "pak/BatchScript.h"
#include "identify/modGlobal.h"
#include "platform/Files.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"

int CliFail(const std::string& message) {
    std::cerr << "quarrin-cli: " << message << "\n";
    return 1;
}

bool CheckReadableFile(const std::string& path, std::string& why) {
    if (IsDirectory(path)) {
        why = path + ": is a folder, not a file";
        return false;
    }
    errno = 0;
    HFILE h = _lopen(path, OF_READ);
    if (h <= 0) {
        why = path + ": cannot be opened" + (errno != 0 ? std::string(": ") + std::strerror(errno) : std::string());
        return false;
    }
    _lclose(h);
    return true;
}

void FailOversizeWrites() { std::signal(SIGXFSZ, SIG_IGN); }

std::string ShownName(const std::string& name) { return PrintableLine(name); }

bool StdoutIsTerminal() { return isatty(STDOUT_FILENO) == 1; }

AnswerFileDialog::AnswerFileDialog(std::string path, int32_t filterIndex)
    : path_(std::move(path)), filterIndex_(filterIndex), previous_(GetFileDialogService()) {
    SetFileDialogService(this);
}

AnswerFileDialog::~AnswerFileDialog() { SetFileDialogService(previous_); }

FileDialogAnswer AnswerFileDialog::Show(const FileDialogRequest& request) {
    FileDialogAnswer answer;
    answer.accepted = true;
    answer.paths = {path_};
    // A dialog with fewer filters can't offer the one asked for.
    const auto count = static_cast<int32_t>(request.filters.size());
    answer.filterIndex = std::max(1, std::min(filterIndex_, count));
    return answer;
}

AnswerYes::AnswerYes(bool yesToQuestions) : yesToQuestions_(yesToQuestions), previous_(GetMessageBoxService()) {
    SetMessageBoxService(this);
}

int32_t AnswerYes::Show(const std::string&, int32_t buttons, const std::string&) {
    if ((buttons & vbQuestion) == 0) return vbYes;
    ++Questions;
    return yesToQuestions_ ? vbYes : vbNo;
}

AnswerYes::~AnswerYes() { SetMessageBoxService(previous_); }

// Points the file list at the file's folder and selects it, which runs the
// selection as a click does.
bool SelectFile(frmMain& form, const std::string& path, std::string& why) {
    std::string absolute = NormaliseFolder(path);
    std::string folder = GetFolderName(absolute);
    std::string name = GetFileName(absolute);
    try {
        form.oDir.SetPath(folder);
    } catch (const RuntimeError& e) {
        why = folder + ": " + e.Description;
        return false;
    }
    if (!form.oFile.Select(name)) {
        why = path + ": not found in its folder";
        return false;
    }
    return true;
}
