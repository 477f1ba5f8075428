// quarrin-cli layout: the main window's layout for a window of a given outer
// size, with the scroll bars of a picture of a given size.
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include "CliSupport.h"
#include "Commands.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"

namespace {

// Reads "WIDTHxHEIGHT" in pixels. The twips of a size must fit the window's
// 32-bit units, so a side is at most 100000 pixels.
bool ParseSize(const std::string& text, int32_t& width, int32_t& height) {
    const size_t x = text.find('x');
    if (x == std::string::npos || x == 0 || x + 1 == text.size()) return false;
    auto number = [](const std::string& digits, int32_t& out) {
        if (digits.empty() || digits.size() > 6 || digits.find_first_not_of("0123456789") != std::string::npos)
            return false;
        out = std::stoi(digits);
        return out <= 100000;
    };
    return number(text.substr(0, x), width) && number(text.substr(x + 1), height);
}

void PrintRect(const Control& control) {
    const Rect& r = control.Bounds();
    std::cout << control.Name << '=' << r.Left << ',' << r.Top << ',' << r.Width << ',' << r.Height << '\n';
}

}  // namespace

int CliLayout(const std::vector<std::string>& args) {
    const char* usage = "layout takes WIDTHxHEIGHT [--picture WxH], sizes in pixels";
    std::string window, picture;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--picture" && i + 1 < args.size() && picture.empty()) {
            picture = args[++i];
        } else if (window.empty() && args[i].rfind("--", 0) != 0) {
            window = args[i];
        } else {
            return CliFail(usage);
        }
    }
    int32_t width = 0, height = 0, pictureWidth = 0, pictureHeight = 0;
    if (!ParseSize(window, width, height)) return CliFail(usage);
    if (!picture.empty() && !ParseSize(picture, pictureWidth, pictureHeight)) return CliFail(usage);

    frmMain form;
    // Start-up binds the bars to oImg.
    PassOver([&] { form.oScroll.Create(form.oImg.hWnd()); });
    const int32_t tppX = form.screen.TwipsPerPixelX, tppY = form.screen.TwipsPerPixelY;
    // A new size raises the window's Resize; the size it already has is laid
    // out as the first showing does.
    const Rect before = form.Bounds();
    form.Move(before.Left, before.Top, width * tppX, height * tppY);
    if (before.Width == width * tppX && before.Height == height * tppY) form.Form_Resize();
    if (!picture.empty()) {
        const Rect& p = form.oPicture.Bounds();
        form.oPicture.Move(p.Left, p.Top, pictureWidth, pictureHeight);
        form.oImg_Resize();
    }

    const Control* panes[] = {&form.oSSTab, &form.fraDocMain, &form.oImg,    &form.oListView,
                              &form.fraMain, &form.tReport,    &form.oVScroll};
    for (const Control* c : panes)
        PrintRect(*c);
    std::cout << "window=" << form.WindowWidth() << ',' << form.WindowHeight() << '\n'
              << "inner=" << form.oImg.ScaleWidth() << ',' << form.oImg.ScaleHeight() << '\n';
    if (!picture.empty()) {
        for (int32_t bar : {0, 1}) {
            std::cout << (bar == 0 ? "hbar=" : "vbar=") << (form.oScroll.Visible(bar) ? 1 : 0) << ','
                      << form.oScroll.Max(bar) << ',' << form.oScroll.LargeChange(bar) << '\n';
        }
    }
    return 0;
}
