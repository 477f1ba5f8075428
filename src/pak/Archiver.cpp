#include "pak/Archiver.h"

#include "pak/ZipReader.h"
#include "platform/Files.h"

int32_t RunArchiverExtract(const std::string& sZip, const std::string& sFolder, std::ostream& out,
                           std::ostream& err) {
    const bool here = NormaliseFolder(".") == NormaliseFolder(sFolder);
    const std::string zip = here || (!sZip.empty() && sZip[0] == '/') ? sZip : sFolder + "/" + sZip;
    const bool ok = ExtractZipToFolder(zip, here ? "." : sFolder, out, err);
    return ok ? 0 : 1;
}
