#pragma once
// The host of the targets that paint pictures: a 64 x 64 pane, and sections
// of up to 64 KiB, more than any input holds pixels for. Larger ones run the
// same code for longer, and a header that claims a huge picture would
// otherwise have megabytes cleared per input.
#include "identify/IFileHost.h"
#include "platform/Gdi.h"

inline FileHost& PictureHost() {
    static FileHost host;
    SetMaxBitmapBytes(64 << 10);
    if (host.oPicture.ImageWidth() == 0) host.oPicture.Move(0, 0, 64, 64);
    return host;
}
