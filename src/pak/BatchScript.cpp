#include "pak/BatchScript.h"

#include <sys/stat.h>

#include <cstdio>

#include "pak/Archiver.h"
#include "pak/MemberPath.h"
#include "platform/Files.h"
#include "platform/Runtime.h"
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

namespace {

BatchPolicy::Identity IdentityOf(const std::string& path) {
    BatchPolicy::Identity id;
    struct stat st {};
    if (path.empty() || ::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return id;
    id.Device = st.st_dev;
    id.Inode = st.st_ino;
    id.Known = true;
    return id;
}

bool Same(const BatchPolicy::Identity& a, const BatchPolicy::Identity& b) {
    return a.Known && b.Known && a.Device == b.Device && a.Inode == b.Inode;
}

// A program named the way the settings name it: a bare name through PATH, a
// path as it stands (a relative one from the command file's folder).
std::string ResolveProgram(const std::string& name, const std::string& folder) {
    if (name.find('/') == std::string::npos) return FindProgram(name);
    return name[0] == '/' ? name : Below(folder, name);
}

}  // namespace

BatchPolicy MakeBatchPolicy(const std::string& sScriptPath, const std::string& sConfiguredArchiver) {
    BatchPolicy policy;
    std::string folder = NormaliseFolder(sScriptPath);
    size_t slash = folder.rfind('/');
    policy.Folder = slash == 0 ? "/" : folder.substr(0, slash);
    policy.BuiltInArchiver = App::Path() + "/quarrin-pkzip";
    policy.Archivers.push_back(policy.BuiltInArchiver);
    const std::string configured = VbTrim(sConfiguredArchiver);
    if (!configured.empty()) policy.Archivers.push_back(ResolveProgram(configured, policy.Folder));
    return policy;
}

bool CheckBatchLine(const std::string& sLine, const BatchPolicy& policy, CheckedBatchLine& checked,
                    std::string& why) {
    checked = CheckedBatchLine{};
    checked.Line = ParseBatchLine(sLine);
    const BatchLine& line = checked.Line;
    switch (line.Command) {
        case BatchCommand::NotUnderstood:
            why = "not one of the three line forms";
            return false;
        case BatchCommand::ChangeFolder: {
            // Only the folder of the command file itself, where the program
            // put it: the same path once "." and doubled separators are
            // resolved, and the same folder on the disk.
            if (line.Folder.empty() || line.Folder[0] != '/' || NormaliseFolder(line.Folder) != policy.Folder) {
                why = "the folder is not the command file's own";
                return false;
            }
            struct stat a {}, b {};
            if (::stat(line.Folder.c_str(), &a) != 0 || ::stat(policy.Folder.c_str(), &b) != 0 ||
                a.st_dev != b.st_dev || a.st_ino != b.st_ino) {
                why = "the folder is not the command file's own";
                return false;
            }
            return true;
        }
        case BatchCommand::Extract:
        case BatchCommand::Delete: {
            // The same check as every writer of member files: a name inside
            // the folder, without "..", a drive or an absolute part.
            checked.Zip = MemberPath("", line.Name + ".zip");
            if (checked.Zip.empty()) {
                why = "the name leaves the folder";
                return false;
            }
            if (line.Command == BatchCommand::Delete) return true;
            if (!policy.IdsTaken) {
                policy.ArchiverIds.clear();
                for (const std::string& allowed : policy.Archivers) policy.ArchiverIds.push_back(IdentityOf(allowed));
                policy.BuiltInId = IdentityOf(policy.BuiltInArchiver);
                policy.IdsTaken = true;
            }
            const std::string archiver = ResolveProgram(line.Archiver, policy.Folder);
            const BatchPolicy::Identity id = IdentityOf(archiver);
            for (const BatchPolicy::Identity& allowed : policy.ArchiverIds) {
                if (Same(id, allowed)) {
                    checked.Archiver = archiver;
                    checked.BuiltIn = Same(id, policy.BuiltInId);
                    return true;
                }
            }
            why = "the program " + PrintableLine(line.Archiver) + " is not the archiver of the settings";
            return false;
        }
    }
    why = "not understood";
    return false;
}

bool RunBatchScript(const std::string& sText, const BatchPolicy& policy, std::ostream& out, std::ostream& err,
                    const BatchProgramRunner& run) {
    const std::string& folder = policy.Folder;
    bool allGood = true;
    int32_t number = 0;
    for (const BatchScriptLine& text : SplitBatchScript(sText)) {
        ++number;
        out << "[" << number << "] " << PrintableLine(text.Text) << "\n";
        auto fail = [&](const std::string& why) {
            out << "    failed: " << why << "\n";
            allGood = false;
        };
        CheckedBatchLine checked;
        std::string why;
        if (!text.Ended) why = "the line has no end";
        if (!text.Ended || !CheckBatchLine(text.Text, policy, checked, why)) {
            out << "    refused, not executed\n";
            out.flush();
            err << "quarrin-runbat: line " << number << " refused (" << why << "): " << PrintableLine(text.Text)
                << "\n";
            err.flush();
            allGood = false;
            continue;
        }
        switch (checked.Line.Command) {
            case BatchCommand::NotUnderstood: break;
            case BatchCommand::ChangeFolder:
                out << "    ok: now in " << PrintableLine(folder) << "\n";
                break;
            case BatchCommand::Extract: {
                int32_t status = 0;
                std::string error;
                if (checked.BuiltIn) {
                    status = RunArchiverExtract(checked.Zip, folder, out, err);
                } else {
                    // The program writes to the same streams: what stands
                    // before it goes out first.
                    out.flush();
                    status = run({checked.Archiver, "-Extract", checked.Zip}, folder, error);
                }
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
                if (!DeleteFileWithin(folder + "/", folder + "/" + checked.Zip)) {
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

bool RunBatchScript(const std::string& sText, const BatchPolicy& policy, std::ostream& out, std::ostream& err) {
    return RunBatchScript(sText, policy, out, err, RunProgram);
}
