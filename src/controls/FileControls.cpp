#include "controls/FileControls.h"

#include <fstream>
#include <set>
#include <sstream>

#include "platform/Files.h"
#include "platform/Runtime.h"

std::vector<std::string> GetDriveList() {
    std::vector<std::string> drives{"/"};
    // Mount points of file systems that hold files, from the kernel's table.
    static const std::set<std::string> kPseudo = {
        "proc", "sysfs", "devtmpfs", "devpts", "tmpfs", "cgroup", "cgroup2", "securityfs", "pstore",
        "debugfs", "tracefs", "configfs", "fusectl", "mqueue", "hugetlbfs", "bpf", "autofs", "binfmt_misc",
        "rpc_pipefs", "nsfs", "overlay", "squashfs", "efivarfs", "ramfs", "fuse.gvfsd-fuse", "fuse.portal"};
    std::ifstream mounts("/proc/self/mounts");
    std::string line;
    while (std::getline(mounts, line)) {
        std::istringstream fields(line);
        std::string device, mountPoint, type;
        fields >> device >> mountPoint >> type;
        if (mountPoint.empty() || kPseudo.count(type) != 0) continue;
        // The kernel writes blanks in paths as \040.
        mountPoint = VbReplace(mountPoint, "\\040", " ");
        if (mountPoint == "/" || mountPoint.rfind("/proc", 0) == 0 || mountPoint.rfind("/sys", 0) == 0 ||
            mountPoint.rfind("/dev", 0) == 0 || mountPoint.rfind("/run", 0) == 0 || mountPoint.rfind("/boot", 0) == 0)
            continue;
        bool known = false;
        for (const auto& d : drives) known = known || d == mountPoint;
        if (!known) drives.push_back(mountPoint);
    }
    return drives;
}

void DriveListBox::Refresh() {
    list_ = GetDriveList();
    Notify();
}

void DriveListBox::InitDrive(const std::string& d) {
    if (list_.empty()) list_ = GetDriveList();
    drive_ = d;
    Notify();
}

void DriveListBox::SetDrive(const std::string& d) {
    if (list_.empty()) list_ = GetDriveList();
    drive_ = d;
    Notify();
    Change.Raise();
}

// ---- Folder list -----------------------------------------------------------

void DirListBox::SetPath(const std::string& p) {
    std::string target = p;
    if (!target.empty() && target[0] != '/' && !path_.empty()) target = path_ + "/" + target;
    std::string folder = NormaliseFolder(target);
    std::vector<DirEntry> entries;
    if (folder.empty() || !ListDirectory(folder, entries)) RaiseError(vbErrPathNotFound);
    bool changed = folder != path_;
    path_ = folder;
    list_.clear();
    depth_.clear();
    // The chain of folders from the root down to this one.
    std::vector<std::string> chain;
    for (std::string f = folder;;) {
        chain.insert(chain.begin(), f);
        if (f == "/") break;
        size_t cut = f.rfind('/');
        f = cut == 0 ? std::string("/") : f.substr(0, cut);
    }
    for (size_t i = 0; i < chain.size(); ++i) {
        list_.push_back(chain[i]);
        depth_.push_back(static_cast<int32_t>(i));
    }
    current_ = static_cast<int32_t>(chain.size()) - 1;
    for (const auto& e : entries) {
        if (!e.isDirectory) continue;
        list_.push_back(folder == "/" ? "/" + e.name : folder + "/" + e.name);
        depth_.push_back(static_cast<int32_t>(chain.size()));
    }
    ListIndex = current_;
    Notify();
    if (changed) Change.Raise();
}

const std::string& DirListBox::List(int32_t index) const {
    if (index < 0 || index >= ListCount()) RaiseError(381, {}, "Invalid property array index");
    return list_[static_cast<size_t>(index)];
}

int32_t DirListBox::Depth(int32_t index) const {
    if (index < 0 || index >= ListCount()) return 0;
    return depth_[static_cast<size_t>(index)];
}

// ---- File list -------------------------------------------------------------

void FileListBox::SetPath(const std::string& p) {
    std::string folder = NormaliseFolder(p);
    std::vector<DirEntry> entries;
    if (folder.empty() || !ListDirectory(folder, entries)) RaiseError(vbErrPathNotFound);
    path_ = folder;
    list_.clear();
    for (const auto& e : entries)
        if (!e.isDirectory) list_.push_back(e.name);
    listIndex_ = -1;
    Notify();
    PathChange.Raise();
}

void FileListBox::Refresh() {
    if (path_.empty()) return;
    std::string keep = FileName();
    std::vector<DirEntry> entries;
    if (!ListDirectory(path_, entries)) return;
    list_.clear();
    for (const auto& e : entries)
        if (!e.isDirectory) list_.push_back(e.name);
    listIndex_ = -1;
    for (size_t i = 0; i < list_.size(); ++i)
        if (list_[i] == keep) listIndex_ = static_cast<int32_t>(i);
    Notify();
}

std::string FileListBox::FileName() const {
    if (listIndex_ < 0 || listIndex_ >= ListCount()) return {};
    return list_[static_cast<size_t>(listIndex_)];
}

const std::string& FileListBox::List(int32_t index) const {
    if (index < 0 || index >= ListCount()) RaiseError(381, {}, "Invalid property array index");
    return list_[static_cast<size_t>(index)];
}

void FileListBox::SetListIndex(int32_t index) {
    if (index < -1 || index >= ListCount()) RaiseError(380, {}, "Invalid property value");
    listIndex_ = index;
    Notify();
    // The control raises Click whenever its selection is set, also to the same entry.
    if (index >= 0) Click.Raise();
}

bool FileListBox::Select(const std::string& name) {
    for (size_t i = 0; i < list_.size(); ++i) {
        if (list_[i] == name) {
            SetListIndex(static_cast<int32_t>(i));
            return true;
        }
    }
    return false;
}
