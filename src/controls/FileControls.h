#pragma once
// The runtime's drive, folder and file list boxes over the file system.
#include <cstdint>
#include <string>
#include <vector>

#include "controls/Controls.h"

// The drives: the root and the mounted file systems that hold real data.
std::vector<std::string> GetDriveList();

class DriveListBox : public Control {
public:
    using Control::Control;
    // The selected drive, a root path.
    const std::string& Drive() const { return drive_; }
    // Setting a drive raises Change, also when the drive can't be read: the
    // folder list finds that out when it goes there.
    void SetDrive(const std::string& d);
    // Puts the box on a drive at start-up, without an event.
    void InitDrive(const std::string& d);
    // The drives on offer; read anew by Refresh.
    const std::vector<std::string>& List() const { return list_; }
    void Refresh();

    Event<> Change;

private:
    std::string drive_;
    std::vector<std::string> list_;
};

class DirListBox : public Control {
public:
    using Control::Control;
    const std::string& Path() const { return path_; }
    // Goes to a folder (relative paths and ".." are taken from the current
    // one). A folder that can't be listed raises error 76, "Path not found",
    // and the box stays where it was. A new folder raises Change.
    void SetPath(const std::string& p);
    // The entries: the folders from the root down to the current one, then
    // the current folder's sub-folders. Each is a full path.
    int32_t ListCount() const { return static_cast<int32_t>(list_.size()); }
    const std::string& List(int32_t index) const;
    // Depth of an entry in the tree, for indenting.
    int32_t Depth(int32_t index) const;
    // The highlighted entry; starts on the current folder.
    int32_t ListIndex = 0;
    // Index of the current folder in List.
    int32_t CurrentIndex() const { return current_; }

    Event<> Change;
    Event<int16_t&> KeyPress;
    // Raised when the list gives the keyboard focus to another control of
    // its window.
    Event<> LostFocus;

private:
    std::string path_;
    std::vector<std::string> list_;
    std::vector<int32_t> depth_;
    int32_t current_ = 0;
};

class FileListBox : public Control {
public:
    using Control::Control;
    const std::string& Path() const { return path_; }
    // Lists every file of a folder; raises error 76 for a folder that can't be
    // read, and keeps the old list.
    void SetPath(const std::string& p);
    // Reads the folder again.
    void Refresh();
    // The selected entry's name; empty when nothing is selected.
    std::string FileName() const;
    int32_t ListCount() const { return static_cast<int32_t>(list_.size()); }
    const std::string& List(int32_t index) const;
    int32_t ListIndex() const { return listIndex_; }
    // Selecting an entry raises Click, as the control does when its selection
    // changes.
    void SetListIndex(int32_t index);
    // Selects the entry of that name, if there is one.
    bool Select(const std::string& name);

    Event<> Click;
    Event<> DblClick;
    Event<int16_t&> KeyPress;
    Event<> PathChange;

private:
    std::string path_;
    std::vector<std::string> list_;
    int32_t listIndex_ = -1;
};
