#pragma once
// Process start. ShellExecuteA stands in for the platform's call as the
// program uses it: the command shell ("cmd", or "command" on the 9x family)
// running a command file, which here is our command-file runner
// quarrin-runbat, found beside the running executable. Programs are always
// started directly with an argument vector, never through a shell.
#include <cstdint>
#include <string>
#include <vector>

// Error results of ShellExecuteA; success is any value above 32.
inline constexpr int32_t SE_ERR_FNF = 2;
inline constexpr int32_t SE_ERR_PNF = 3;
inline constexpr int32_t SE_ERR_ACCESSDENIED = 5;
inline constexpr int32_t SE_ERR_OOM = 8;
inline constexpr int32_t ERROR_BAD_FORMAT = 11;
inline constexpr int32_t SE_ERR_NOASSOC = 31;
inline constexpr int32_t kShellExecuteStarted = 42;

inline constexpr int32_t SW_HIDE = 0;
inline constexpr int32_t SW_SHOWNORMAL = 1;

// Starts lpFile with lpParameters in lpDirectory and does not wait for it.
// Only the command shell with the parameters /c "<command file>" is known: it
// starts `quarrin-runbat <command file>`, detached from this program, in a
// terminal window when the desktop has one. Gives a value above 32 when the
// program started, otherwise an error code.
int32_t ShellExecuteA(int32_t hwnd, const std::string& lpOperation, const std::string& lpFile,
                      const std::string& lpParameters, const std::string& lpDirectory, int32_t nShowCmd);

// The argument vector ShellExecuteA would start for the command shell, or an
// empty vector (with `result` set to the error code) when the request is not
// one it knows. `withTerminal` asks for the terminal window.
std::vector<std::string> ShellCommandArgs(const std::string& lpFile, const std::string& lpParameters,
                                          bool withTerminal, int32_t& result);

// The full path of a program name as the PATH variable finds it; a name with a
// separator is taken as it stands. Empty when there is no such program.
std::string FindProgram(const std::string& name);

// Runs a program (argv[0] is its path) in a folder (empty: this process's
// folder) and waits for it. Gives its exit status, 128 + the signal number when
// a signal ended it, or -1 when it could not be started (`error` then says why).
int32_t RunProgram(const std::vector<std::string>& argv, const std::string& folder, std::string& error);

// Starts a program detached from this one: in a session of its own, not a
// child of this process, so it outlives the program and leaves no zombie.
// Gives 0, or the errno of the failed start.
int StartDetached(const std::vector<std::string>& argv, const std::string& folder);
