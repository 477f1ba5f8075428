#pragma once
// The hive files: where the file of each root lies, reading it whole, and
// writing a new text beside it that is then renamed over it, so a crash leaves
// either the old or the new settings, never half of them.
#include <sys/types.h>

#include <ctime>
#include <string>

#include "platform/Registry.h"
#include "platform/RegistryText.h"

namespace reghive {

// A hive file beyond this size is not read, and the hive refuses writes so as
// not to replace a file it could not read; a write that would make the file
// larger is refused too, as the file would not be read again.
constexpr off_t kMaxHiveFile = 4 * 1024 * 1024;

struct FileStamp {
    bool exists = false;
    dev_t dev = 0;
    ino_t ino = 0;
    off_t size = 0;
    timespec mtime{};
    bool operator==(const FileStamp& o) const {
        return exists == o.exists && dev == o.dev && ino == o.ino && size == o.size &&
               mtime.tv_sec == o.mtime.tv_sec && mtime.tv_nsec == o.mtime.tv_nsec;
    }
};

FileStamp StampOf(const std::string& path);

struct Hive {
    std::string rootName;
    bool readOnly = false;
    std::string file;  // empty when the environment names no place
    bool loaded = false;
    bool unreadable = false;  // the file could not be read, or is damaged
    FileStamp stamp;
    regtext::Index index;  // the file's text and its keys
};

// The file that holds a root's hive, as the environment names it now; empty
// for a root that has no file.
std::string FileOfRoot(HKEY root);
// Reads the hive's file into its keys. A hive that can't be read, or holds a
// key deeper than the registry allows, reads as empty and is marked unreadable.
void Load(Hive& hive);
// Writes a hive's new text beside its file and renames it over the file, so
// the file holds either the old or the new keys whatever happens in between.
LONG Save(Hive& hive, const std::string& text);

}  // namespace reghive
