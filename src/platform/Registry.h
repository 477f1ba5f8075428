#pragma once
// The registry: keys and typed values in hives, behind the calls of the Win32
// registry API. Each hive is a text file in the registry's own export format
// ("REGEDIT4"), so a person can read and edit it:
//   HKEY_CURRENT_USER   $XDG_CONFIG_HOME/quarrin/user.reg (default ~/.config)
//   HKEY_CLASSES_ROOT   $XDG_CONFIG_HOME/quarrin/classes.reg
//   HKEY_LOCAL_MACHINE  <first of $XDG_CONFIG_DIRS>/quarrin/machine.reg
//                       (default /etc/xdg), read-only: writes are refused
//                       with ERROR_ACCESS_DENIED.
// A hive is read when first needed and again when its file changed on disk.
// Every change is written at once to a temporary file in the same folder that
// is then renamed over the hive, so a crash leaves either the old or the new
// settings, never half of them. Key names compare without regard to case.
//
// A write changes only the lines of what it writes; the rest of the file, a
// person's comments, lines the reader passes over, sections of other roots,
// blank lines and the file's line ends, stays byte for byte (see the edits of
// regtext in RegistryText.h). A file that does not exist yet is written whole.
// A hive file of more than 4 MB is not read (like a damaged one, below), so a
// write that would make the file larger is refused with ERROR_NOT_ENOUGH_MEMORY.
//
// Keys nest at most 512 deep below their root. A hive file that holds a
// deeper key is damaged: like a file that can't be read, it reads as an empty
// hive and refuses every write, so it is never replaced. Memory follows the
// file: reading a hive takes a small multiple of its size, whatever its shape.
#include <cstdint>
#include <string>
#include <vector>

using HKEY = int32_t;
using LONG = int32_t;
using DWORD = uint32_t;
using REGSAM = uint32_t;

// The predefined roots. A key opened below them is a small positive number.
inline constexpr HKEY HKEY_CLASSES_ROOT = static_cast<HKEY>(0x80000000u);
inline constexpr HKEY HKEY_CURRENT_USER = static_cast<HKEY>(0x80000001u);
inline constexpr HKEY HKEY_LOCAL_MACHINE = static_cast<HKEY>(0x80000002u);
inline constexpr HKEY HKEY_USERS = static_cast<HKEY>(0x80000003u);

// Value types.
inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_DWORD_BIG_ENDIAN = 5;
inline constexpr DWORD REG_LINK = 6;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;

// Access rights of a key handle.
inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_SET_VALUE = 0x0002;
inline constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_NOTIFY = 0x0010;
inline constexpr REGSAM KEY_CREATE_LINK = 0x0020;
inline constexpr REGSAM KEY_DELETE = 0x00010000;
inline constexpr REGSAM KEY_READ = 0x00020019;
inline constexpr REGSAM KEY_WRITE = 0x00020006;
inline constexpr REGSAM KEY_ALL_ACCESS = 0x000F003F;

// Dispositions of RegCreateKeyExA.
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

// Result codes.
inline constexpr LONG ERROR_SUCCESS = 0;
inline constexpr LONG ERROR_FILE_NOT_FOUND = 2;
inline constexpr LONG ERROR_ACCESS_DENIED = 5;
inline constexpr LONG ERROR_INVALID_HANDLE = 6;
inline constexpr LONG ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr LONG ERROR_WRITE_FAULT = 29;
inline constexpr LONG ERROR_INVALID_PARAMETER = 87;
inline constexpr LONG ERROR_DISK_FULL = 112;
inline constexpr LONG ERROR_MORE_DATA = 234;
inline constexpr LONG ERROR_NO_MORE_ITEMS = 259;
inline constexpr LONG ERROR_KEY_DELETED = 1018;

// Opens a key below `hKey` (a root or an open key); an empty `lpSubKey` opens
// `hKey` itself again. A key of HKEY_LOCAL_MACHINE asked for any writing right
// gives ERROR_ACCESS_DENIED.
LONG RegOpenKeyExA(HKEY hKey, const std::string& lpSubKey, DWORD ulOptions, REGSAM samDesired, HKEY* phkResult);
// Opens a key, creating it and the keys above it where missing. `lpClass`,
// `dwOptions` and the security attributes are accepted and not kept.
LONG RegCreateKeyExA(HKEY hKey, const std::string& lpSubKey, DWORD Reserved, const std::string& lpClass,
                     DWORD dwOptions, REGSAM samDesired, const void* lpSecurityAttributes, HKEY* phkResult,
                     DWORD* lpdwDisposition);
LONG RegCloseKey(HKEY hKey);
// Reads a value; an empty name is the key's default value. With `lpData` null
// only the type and the size come back; a buffer too small gives
// ERROR_MORE_DATA and the size needed.
LONG RegQueryValueExA(HKEY hKey, const std::string& lpValueName, DWORD* lpReserved, DWORD* lpType, void* lpData,
                      DWORD* lpcbData);
LONG RegSetValueExA(HKEY hKey, const std::string& lpValueName, DWORD Reserved, DWORD dwType, const void* lpData,
                    DWORD cbData);
// Deletes a key that has no sub-keys.
LONG RegDeleteKeyA(HKEY hKey, const std::string& lpSubKey);
LONG RegDeleteValueA(HKEY hKey, const std::string& lpValueName);
// Counts and longest lengths of a key's sub-keys and values; each out pointer
// may be null. The class is always empty and the security size and the time
// are not kept (0).
LONG RegQueryInfoKeyA(HKEY hKey, char* lpClass, DWORD* lpcClass, DWORD* lpReserved, DWORD* lpcSubKeys,
                      DWORD* lpcMaxSubKeyLen, DWORD* lpcMaxClassLen, DWORD* lpcValues, DWORD* lpcMaxValueNameLen,
                      DWORD* lpcMaxValueLen, DWORD* lpcbSecurityDescriptor, void* lpftLastWriteTime);
// The value at `dwIndex`, in the order the values were made. `lpcValueName`
// holds the buffer's size in characters and gives back the name's length.
LONG RegEnumValueA(HKEY hKey, DWORD dwIndex, char* lpValueName, DWORD* lpcValueName, DWORD* lpReserved,
                   DWORD* lpType, void* lpData, DWORD* lpcbData);
// The sub-key at `dwIndex`, in order of name, zero-terminated in `lpName`.
LONG RegEnumKeyA(HKEY hKey, DWORD dwIndex, char* lpName, DWORD cchName);

// Replaces each %NAME% of `lpSrc` whose NAME is set in the process environment
// by its value; other percent signs stay. Gives the size of the result with
// its terminating zero, and writes it only when `nSize` is large enough.
DWORD ExpandEnvironmentStringsA(const char* lpSrc, char* lpDst, DWORD nSize);

// The file that holds a root's hive, as the environment names it now; empty
// for a root that has no file.
std::string RegHiveFile(HKEY hKey);

// The hive text format (namespace regtext).
#include "platform/RegistryText.h"
