// quarrin: the browser, viewer and extractor of Selvane's data files.
#include <QApplication>
#include <cstdio>
#include <cstdlib>

#include "EventPump.h"
#include "MainWindow.h"
#include "ModalForms.h"
#include "QtAudioBackend.h"
#include "QtDialogServices.h"
#include "QtFileDialogService.h"
#include "QtMessageBoxService.h"
#include "QtPictureService.h"
#include "platform/FileDialogs.h"
#include "platform/MessageBox.h"
#include "platform/Runtime.h"
#include "platform/WaveOut.h"
#include "shell/frmMain.h"

namespace {

bool HasDisplay() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') return true;
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (!HasDisplay()) {
        std::fprintf(stderr,
                     "quarrin: there is no display to open the window on (neither DISPLAY nor WAYLAND_DISPLAY "
                     "is set).\nRun it under a virtual X server, for example:\n  xvfb-run -a %s\n",
                     argc > 0 && argv[0] != nullptr ? argv[0] : "./quarrin");
        return 1;
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quarrin"));
    QApplication::setApplicationVersion(QStringLiteral("0.97"));
    QApplication::setDesktopFileName(QStringLiteral("quarrin"));
    App::Init(argc > 0 ? argv[0] : nullptr);

    QtMessageBoxService messageBoxes;
    SetMessageBoxService(&messageBoxes);
    QtFileDialogService fileDialogs;
    SetFileDialogService(&fileDialogs);
    QtDialogServices otherDialogs;
    const QtPictureLoader pictures;
    // The sound output; with no output device the player reports the
    // device's text when a wave is played.
    QtAudioBackend audio;
    SetAudioBackend(&audio);
    EventPump::Install();

    int status = 0;
    {
        frmMain form;
        form.Form_Initialize();
        MainWindow window(form);
        const QtWindowBinding mainWindowHandle(form.hWnd(), &window);
        // A dialog asked for on the main window's handle is owned by its view.
        fileDialogs.SetOwnerLookup([&form, &window](int32_t hwnd) -> QWidget* {
            return hwnd == form.hWnd() ? &window : QApplication::activeWindow();
        });
        // Unpak and Options run modally over the main window.
        form.ShowModalForm = [&form, &window](const std::string& formName) {
            ShowModalFormView(form, formName, &window);
        };
        form.Form_Load();
        window.show();
        status = QApplication::exec();
        fileDialogs.SetOwnerLookup([](int32_t) { return QApplication::activeWindow(); });
        form.ShowModalForm = nullptr;
    }

    EventPump::Uninstall();
    SetAudioBackend(nullptr);
    SetFileDialogService(nullptr);
    SetMessageBoxService(nullptr);
    return status;
}
