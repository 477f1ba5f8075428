#pragma once
// The runtime's MsgBox over a service that the front end fills with a real
// dialog and tests fill with scripted answers.
#include <cstdint>
#include <string>

enum VbMsgBoxStyle : int32_t {
    vbOKOnly = 0,
    vbOKCancel = 1,
    vbAbortRetryIgnore = 2,
    vbYesNoCancel = 3,
    vbYesNo = 4,
    vbRetryCancel = 5,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
};

enum VbMsgBoxResult : int32_t {
    vbOK = 1,
    vbCancel = 2,
    vbAbort = 3,
    vbRetry = 4,
    vbIgnore = 5,
    vbYes = 6,
    vbNo = 7,
};

class IMessageBoxService {
public:
    virtual ~IMessageBoxService() = default;
    // `title` empty means the default title, the program's name.
    virtual int32_t Show(const std::string& prompt, int32_t buttons, const std::string& title) = 0;
};

// Installs the service; nullptr restores the default, which shows nothing and
// answers with the first button of the style (OK, Abort, Yes, Retry).
void SetMessageBoxService(IMessageBoxService* service);
IMessageBoxService* GetMessageBoxService();

int32_t MsgBox(const std::string& prompt, int32_t buttons = vbOKOnly, const std::string& title = {});
