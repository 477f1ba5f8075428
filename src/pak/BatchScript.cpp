#include "pak/BatchScript.h"

#include <cstdio>

#include "pak/MemberPath.h"
#include "platform/Files.h"
#include "platform/Shell.h"

namespace {

bool StartsWith(const std::string& s, const std::string& prefix) {
    return s.size() >= prefix.size() && s.compare(0, prefix.size(), prefix) == 0;
}

bool EndsWith(const std::string& s, const std::string& suffix) {
    return s.size() >= suffix.size() && s.compare(s.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// A folder joined with a name below it.
std::string Below(const std::string& folder, const std::string& name) {
    return folder.empty() || folder.back() == '/' ? folder + name : folder + "/" + name;
}

}  // namespace

std::string BatchCdLine(const std::string& sDest) { return "cd \"" + sDest + "\""; }

std::string BatchExtractLine(bool bWin9x, const std::string& sPkzip, const std::string& sName) {
    return std::string(bWin9x ? "command" : "cmd") + " /c \"" + sPkzip + "\" -Extract \"" + sName + ".zip\"";
}

std::string BatchDelLine(const std::string& sName) { return "Del \"" + sName + ".zip\""; }

BatchLine ParseBatchLine(const std::string& sLine) {
    BatchLine line;
    static const std::string kCd = "cd \"";
    static const std::string kDel = "Del \"";
    static const std::string kZipEnd = ".zip\"";
    if (StartsWith(sLine, kCd)) {
        if (sLine.size() < kCd.size() + 1 || sLine.back() != '"') return line;
        line.Command = BatchCommand::ChangeFolder;
        line.Folder = sLine.substr(kCd.size(), sLine.size() - kCd.size() - 1);
        return line;
    }
    if (StartsWith(sLine, kDel)) {
        if (sLine.size() < kDel.size() + kZipEnd.size() || !EndsWith(sLine, kZipEnd)) return line;
        line.Command = BatchCommand::Delete;
        line.Name = sLine.substr(kDel.size(), sLine.size() - kDel.size() - kZipEnd.size());
        return line;
    }
    std::string shell;
    if (StartsWith(sLine, "cmd /c \"")) {
        shell = "cmd";
    } else if (StartsWith(sLine, "command /c \"")) {
        shell = "command";
    } else {
        return line;
    }
    // The archiver's path comes from the settings and stands first, so the
    // first closing quote and " -Extract " end it; whatever the name holds
    // comes behind.
    const size_t start = shell.size() + 5;
    static const std::string kMiddle = "\" -Extract \"";
    size_t middle = sLine.find(kMiddle, start);
    if (middle == std::string::npos) return line;
    size_t nameStart = middle + kMiddle.size();
    if (sLine.size() < nameStart + kZipEnd.size() || !EndsWith(sLine, kZipEnd)) return line;
    line.Command = BatchCommand::Extract;
    line.Shell = shell;
    line.Archiver = sLine.substr(start, middle - start);
    line.Name = sLine.substr(nameStart, sLine.size() - nameStart - kZipEnd.size());
    return line;
}

std::vector<BatchScriptLine> SplitBatchScript(const std::string& sText) {
    std::vector<BatchScriptLine> lines;
    size_t pos = 0;
    while (pos < sText.size()) {
        size_t end = sText.find("\r\n", pos);
        if (end == std::string::npos) {
            lines.push_back({sText.substr(pos), false});
            break;
        }
        lines.push_back({sText.substr(pos, end - pos), true});
        pos = end + 2;
    }
    return lines;
}

std::string PrintableLine(const std::string& sLine) {
    std::string out;
    out.reserve(sLine.size());
    for (unsigned char c : sLine) {
        if (c < 0x20 || c >= 0x7F) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\x%02X", c);
            out += buf;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

bool RunBatchScript(const std::string& sText, const std::string& sStartFolder, std::ostream& out,
                    const BatchProgramRunner& run) {
    std::string folder = sStartFolder;
    bool haveFolder = IsDirectory(folder);
    bool allGood = true;
    int32_t number = 0;
    for (const BatchScriptLine& text : SplitBatchScript(sText)) {
        ++number;
        out << "[" << number << "] " << PrintableLine(text.Text) << "\n";
        auto fail = [&](const std::string& why) {
            out << "    failed: " << why << "\n";
            allGood = false;
        };
        BatchLine line = text.Ended ? ParseBatchLine(text.Text) : BatchLine{};
        switch (line.Command) {
            case BatchCommand::NotUnderstood:
                out << "    not understood" << (text.Ended ? "" : " (the line has no end)") << ", not executed\n";
                allGood = false;
                break;
            case BatchCommand::ChangeFolder: {
                std::string target = !line.Folder.empty() && line.Folder[0] == '/' ? line.Folder : Below(folder, line.Folder);
                if (line.Folder.empty() || !IsDirectory(target)) {
                    // Nothing may run in the folder before: a Del there would
                    // remove files the user never meant.
                    haveFolder = false;
                    fail("no such folder");
                    break;
                }
                folder = NormaliseFolder(target);
                haveFolder = true;
                out << "    ok: now in " << PrintableLine(folder) << "\n";
                break;
            }
            case BatchCommand::Extract: {
                if (!haveFolder) {
                    fail("skipped, since the folder change before it failed");
                    break;
                }
                // The wrapper's name is a path below the current folder, in
                // which a backslash separates folders.
                const std::string zip = MemberPath("", line.Name + ".zip");
                if (zip.empty()) {
                    fail("the name leaves the folder");
                    break;
                }
                std::string archiver = line.Archiver;
                if (archiver.find('/') == std::string::npos) {
                    archiver = FindProgram(archiver);
                } else if (archiver[0] != '/') {
                    archiver = Below(folder, archiver);
                }
                if (archiver.empty()) {
                    fail("the archiver " + PrintableLine(line.Archiver) + " was not found");
                    break;
                }
                std::string error;
                out.flush();
                int32_t status = run({archiver, "-Extract", zip}, folder, error);
                if (status < 0) {
                    fail("the archiver could not be started: " + error);
                } else if (status != 0) {
                    fail("the archiver ended with status " + std::to_string(status));
                } else {
                    out << "    ok\n";
                }
                break;
            }
            case BatchCommand::Delete: {
                if (!haveFolder) {
                    fail("skipped, since the folder change before it failed");
                    break;
                }
                std::string path = MemberPath(folder + "/", line.Name + ".zip");
                if (path.empty()) {
                    fail("the name leaves the folder");
                } else if (!DeleteFileA(path)) {
                    fail("could not be deleted");
                } else {
                    out << "    ok\n";
                }
                break;
            }
        }
    }
    out.flush();
    return allGood;
}

bool RunBatchScript(const std::string& sText, const std::string& sStartFolder, std::ostream& out) {
    return RunBatchScript(sText, sStartFolder, out, RunProgram);
}
