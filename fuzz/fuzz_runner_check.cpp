// Feeds whole command files to the runner's line check. A line that passes
// must be one the program itself could have written for this folder and
// these archivers: the writer, given the line's parts, writes it back byte
// for byte, its folder is the command file's own, its archiver is allowed,
// and its name stays inside the folder.
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include "pak/BatchScript.h"
#include "pak/MemberPath.h"
#include "platform/Files.h"

namespace {

const BatchPolicy& Policy() {
    static const BatchPolicy policy = [] {
        // A fixed folder, so that the seeds and the dictionary can name it.
        const char* folder = "/tmp/quarrin-fuzz-runner";
        ::mkdir(folder, 0700);
        std::ofstream(std::string(folder) + "/pk") << "archiver";
        BatchPolicy p;
        p.Folder = folder;
        p.Archivers = {std::string(folder) + "/pk"};
        p.BuiltInArchiver = std::string(folder) + "/built-in";
        return p;
    }();
    return policy;
}

bool HasParentPart(const std::string& path) {
    size_t start = 0;
    for (;;) {
        size_t end = path.find('/', start);
        if (path.substr(start, end - start) == "..") return true;
        if (end == std::string::npos) return false;
        start = end + 1;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const BatchPolicy& policy = Policy();
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (const BatchScriptLine& line : SplitBatchScript(text)) {
        CheckedBatchLine checked;
        std::string why;
        if (!CheckBatchLine(line.Text, policy, checked, why)) {
            if (why.empty()) std::abort();
            continue;
        }
        const BatchLine& l = checked.Line;
        switch (l.Command) {
            case BatchCommand::NotUnderstood: std::abort();
            case BatchCommand::ChangeFolder:
                if (BatchCdLine(l.Folder) != line.Text || NormaliseFolder(l.Folder) != policy.Folder) std::abort();
                break;
            case BatchCommand::Extract:
                if (BatchExtractLine(l.Shell == "command", l.Archiver, l.Name) != line.Text) std::abort();
                if (checked.Archiver.empty() || checked.BuiltIn) std::abort();
                [[fallthrough]];
            case BatchCommand::Delete:
                if (l.Command == BatchCommand::Delete && BatchDelLine(l.Name) != line.Text) std::abort();
                if (!IsSafeMemberName(l.Name + ".zip") || checked.Zip.empty() || checked.Zip[0] == '/' ||
                    HasParentPart(checked.Zip) || checked.Zip.size() < 4 ||
                    checked.Zip.compare(checked.Zip.size() - 4, 4, ".zip") != 0)
                    std::abort();
                break;
        }
    }
    return 0;
}
