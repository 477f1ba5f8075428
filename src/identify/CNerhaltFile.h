#pragma once
// The contract of every game file class that can do more with its file than
// name it. The recogniser creates such an object for the file at hand and
// forwards to it; the main window talks only to the recogniser.
#include <cstdint>
#include <string>

class ListView;

class CNerhaltFile {
public:
    virtual ~CNerhaltFile() = default;

    // Binds the object to a file and says whether the file is of this class's
    // type. hDesDC is the picture pane's device context and oLv the main
    // window's list view, both kept for Show and SaveAs.
    virtual bool Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) { return false; }
    // Runs the type's export with its own file dialog.
    virtual bool SaveAs() { return false; }
    // The one-line description for the status bar.
    virtual std::string Information() { return {}; }
    // Presents the file; hDesDC is the device context to paint on.
    virtual bool Show(int32_t hDesDC) { return false; }
    // Size of the picture in pixels, or -1 where the type has none.
    virtual int32_t Width() { return 0; }
    virtual int32_t Height() { return 0; }

protected:
    CNerhaltFile() = default;
};
