#pragma once
// The small pictures of the main window, drawn in code: the images of the
// tool bars, the sort arrows of the list's column heads, the folder list's
// folders and the program's own icon.
#include <QIcon>

namespace Icons {

// An image of the main tool bar's image list, by its number from 1: 1 open,
// 2 save, 3 quick view, 4 ascending, 5 descending, 6 extract.
QIcon ToolImage(int image);
// An image of the folder tool bar's image list: 1 a folder, 2 the parent folder.
QIcon FolderImage(int image);
// The arrow shown in a column head for the image keys "ASC" and "DESC"; a
// null icon for any other key.
QIcon SortArrow(bool descending);
// An open or a closed folder, as the folder list shows them.
QIcon Folder(bool open);
// The program's icon.
QIcon Application();

}  // namespace Icons
