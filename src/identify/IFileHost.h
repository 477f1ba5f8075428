#pragma once
// What a file class reaches outside itself: the panes that it writes into and
// the window that owns its dialogs. The main window is such a host; the
// command-line companion, the tests and the benchmarks hand over a FileHost,
// which has the panes and no window.
#include <cstdint>

#include "controls/Controls.h"
#include "controls/ListView.h"

class IFileHost {
public:
    // The text pane of reports and hex pages.
    virtual TextBox& ReportPane() = 0;
    // The pane that pictures are drawn into.
    virtual PictureBox& PicturePane() = 0;
    // The list that a PAK's directory fills.
    virtual ListView& MemberList() = 0;
    // The bar that pages through the hex view.
    virtual ScrollBar& PageBar() = 0;
    // The window that owns the dialogs and message boxes; 0 for none.
    virtual int32_t OwnerWindow() const = 0;

protected:
    IFileHost() = default;
    ~IFileHost() = default;
};

// A host without a window: panes that only hold what is written into them.
class FileHost final : public IFileHost {
public:
    TextBox& ReportPane() override { return tReport; }
    PictureBox& PicturePane() override { return oPicture; }
    ListView& MemberList() override { return oListView; }
    ScrollBar& PageBar() override { return oVScroll; }
    int32_t OwnerWindow() const override { return 0; }

    TextBox tReport{"tReport"};
    PictureBox oPicture{"oPicture"};
    ListView oListView{"oListView"};
    ScrollBar oVScroll{"oVScroll"};
};
