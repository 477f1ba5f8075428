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

// Carries out a command file, starting in sStartFolder (an absolute folder),
// and reports each line and its outcome on `out`. Lines that are not one of
// the three forms are reported and not executed; after a cd that failed, no
// line touches a file until the next cd succeeds. A name in an Extract or Del
// line that would leave the current folder is refused. Gives true when every
// line was understood and succeeded.
bool RunBatchScript(const std::string& sText, const std::string& sStartFolder, std::ostream& out,
                    const BatchProgramRunner& run);
bool RunBatchScript(const std::string& sText, const std::string& sStartFolder, std::ostream& out);

// A line made printable for a report: bytes below 32 and from 127 up are
// written as \xNN, so that a crafted name can't drive the terminal.
std::string PrintableLine(const std::string& sLine);
