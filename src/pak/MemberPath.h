#pragma once
// Member names of PAK archives and ZIP wrappers become paths below a
// destination folder. Such names come from files that anyone can craft, so
// every writer asks these two functions before a name touches the disk.
#include <string>

// True when `sName` names a file strictly inside the folder it is unpacked
// into: not empty, no absolute path, no drive, no ".." part, and a file name
// at its end.
bool IsSafeMemberName(const std::string& sName);

// The path of a member below a folder: a backslash in the name is a folder
// separator. Gives an empty text for a name that IsSafeMemberName refuses.
// `sFolder` is taken as it stands and should end in a separator.
std::string MemberPath(const std::string& sFolder, const std::string& sName);
