#pragma once
// The command file _unpak_.bat: its three line forms, written by the batch
// unpack dialog and carried out by the command-file runner quarrin-runbat.
// Lines end in CR LF; every path and name stands in double quotes.
//
//   cd "{dest}"
//   {shell} /c "{pkzip}" -Extract "{name}.zip"      ({shell} is cmd or command)
//   Del "{name}.zip"
//
// The runner does these three things and nothing else. Quotes, &, |, %, ;
// and backquotes inside a name are bytes of the name, and no line ever
// reaches a shell.
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

// The texts of the three lines, without their line end.
std::string BatchCdLine(const std::string& sDest);
std::string BatchExtractLine(bool bWin9x, const std::string& sPkzip, const std::string& sName);
std::string BatchDelLine(const std::string& sName);

enum class BatchCommand { NotUnderstood, ChangeFolder, Extract, Delete };

struct BatchLine {
    BatchCommand Command = BatchCommand::NotUnderstood;
    std::string Folder;    // cd: the folder as written
    std::string Shell;     // Extract: "cmd" or "command"
    std::string Archiver;  // Extract: the archiver's path as written
    std::string Name;      // Extract and Del: the member name, without ".zip"
};

// Parses one line, given without its line end.
BatchLine ParseBatchLine(const std::string& sLine);

struct BatchScriptLine {
    std::string Text;
    bool Ended = true;  // false for a last line that has no CR LF
};

// Splits the text of a command file into lines at each CR LF. A last piece
// without CR LF comes back with Ended false; a lone CR or LF is a byte of
// its line.
std::vector<BatchScriptLine> SplitBatchScript(const std::string& sText);

// Starts the archiver with its arguments (argv[0] its path) in a folder and
// waits; gives its exit status or -1 with `error` set when it didn't start.
using BatchProgramRunner =
    std::function<int32_t(const std::vector<std::string>& argv, const std::string& folder, std::string& error)>;

// What a command file may do: exactly what the program itself writes. The
// file can have been replaced by anyone who could write into its folder, so
// the runner trusts no line of it.
struct BatchPolicy {
    // The folder that holds the command file: absolute, without a trailing
    // separator. Every line works here; a cd must name this folder.
    std::string Folder;
    // The archivers an Extract line may name, compared as files (device and
    // inode): the one the settings name, and the one built beside the runner.
    std::vector<std::string> Archivers;
    // The archiver built beside the runner: a line naming it is unpacked in
    // this process, by the same code the archiver program runs.
    std::string BuiltInArchiver;

    // The archivers' identities (device, inode), taken at the first Extract
    // line that asks, so each later line costs one stat.
    struct Identity {
        uint64_t Device = 0;
        uint64_t Inode = 0;
        bool Known = false;
    };
    mutable std::vector<Identity> ArchiverIds;
    mutable Identity BuiltInId;
    mutable bool IdsTaken = false;
};

// The policy for a command file at `sScriptPath`: its folder, the archiver
// that the settings name (empty: none) and the one beside this program.
BatchPolicy MakeBatchPolicy(const std::string& sScriptPath, const std::string& sConfiguredArchiver);

// A line that passed the check, ready to be carried out.
struct CheckedBatchLine {
    BatchLine Line;
    std::string Archiver;  // Extract: the archiver's resolved path
    bool BuiltIn = false;  // Extract: that archiver is the built-in one
    std::string Zip;       // Extract and Del: the wrapper's path below Folder
};

// Checks one line against the policy. False with `why` set for any line that
// is not one of the three forms as the program writes them: a cd to another
// folder, an archiver that isn't allowed, a name that is not a plain
// relative ".zip" name inside the folder.
bool CheckBatchLine(const std::string& sLine, const BatchPolicy& policy, CheckedBatchLine& checked,
                    std::string& why);

// Carries out a command file under a policy and reports each line and its
// outcome on `out`; a refused line is reported on `err` with its number,
// runs nothing, and the lines around it go on. `run` starts archivers other
// than the built-in one. Gives true when every line passed and succeeded.
bool RunBatchScript(const std::string& sText, const BatchPolicy& policy, std::ostream& out, std::ostream& err,
                    const BatchProgramRunner& run);
bool RunBatchScript(const std::string& sText, const BatchPolicy& policy, std::ostream& out, std::ostream& err);

// A line made printable for a report: bytes below 32 and from 127 up are
// written as \xNN, so that a crafted name can't drive the terminal.
std::string PrintableLine(const std::string& sLine);
