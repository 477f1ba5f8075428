#pragma once
// The archiver's one operation, `-Extract NAME.zip`: every entry of the
// archive into a folder. The archiver program quarrin-pkzip runs it, and the
// command-file runner runs it in its own process for a line that names that
// archiver, so both give the same files, messages and outcome.
#include <cstdint>
#include <ostream>
#include <string>

// Extracts the archive `sZip` (a path relative to `sFolder`) into `sFolder`.
// Reports each entry on `out` and each problem on `err`, the archive named as
// `sZip` when `sFolder` is the current folder. Gives the archiver's exit
// status: 0 when every entry was written, 1 otherwise.
int32_t RunArchiverExtract(const std::string& sZip, const std::string& sFolder, std::ostream& out,
                           std::ostream& err);
