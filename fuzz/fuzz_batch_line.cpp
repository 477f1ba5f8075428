// Parses command-file text of arbitrary bytes. A line that is understood
// must be exactly what the writer makes of its parts, so the runner never
// acts on anything but the three line forms.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "pak/BatchScript.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string joined;
    for (const BatchScriptLine& line : SplitBatchScript(text)) {
        joined += line.Text;
        if (line.Ended) joined += "\r\n";
        BatchLine parsed = ParseBatchLine(line.Text);
        std::string again;
        switch (parsed.Command) {
            case BatchCommand::NotUnderstood: continue;
            case BatchCommand::ChangeFolder: again = BatchCdLine(parsed.Folder); break;
            case BatchCommand::Extract:
                again = BatchExtractLine(parsed.Shell == "command", parsed.Archiver, parsed.Name);
                if (parsed.Archiver.find("\" -Extract \"") != std::string::npos) std::abort();
                break;
            case BatchCommand::Delete: again = BatchDelLine(parsed.Name); break;
        }
        if (again != line.Text) std::abort();
        for (unsigned char c : PrintableLine(line.Text))
            if (c < 0x20 || c >= 0x7F) std::abort();
    }
    if (joined != text) std::abort();
    return 0;
}
