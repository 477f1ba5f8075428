#pragma once
// The runtime's SavePicture, and the save of what the picture pane shows that
// the picture classes share: the save dialog offering a BMP of the file's own
// name, the replace question, and the write.
#include <cstdint>
#include <string>

#include "platform/Picture.h"

class PictureBox;

// Writes the picture's bitmap as an uncompressed 24-bit BMP. Raises 481,
// "Invalid picture", for a picture without pixels and 75, "Path/File access
// error", when the file can't be written; an older file then stays whole.
void SavePicture(const Picture& picture, const std::string& path);

// The name that the save dialog offers for a picture read from `sPathName`:
// its file name with every "." and extension (compared case-sensitively)
// replaced by ".bmp".
std::string BmpNameFor(const std::string& sPathName);

// Asks where to save the pane's image as a BMP, with the file's own name
// offered, and whether an existing file is to be replaced; then writes it.
// True when it was written or the user declined the replace; false for a
// cancelled dialog or a file that could not be written, with no message.
bool SavePaneAs(const std::string& sPathName, const PictureBox& pane, int32_t hOwner);
