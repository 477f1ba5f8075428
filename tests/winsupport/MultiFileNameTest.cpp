#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "winsupport/cCommonDialog.h"

// The list form of a multi-select answer: pieces between single zeros, ended
// by two zeros. The last piece is always a file, also when it is the only one.
TEST(MultiFileName, TheLastPieceOfAListIsAlwaysAFile) {
    struct Case {
        std::string buffer;
        std::string folderBefore;
        std::string folder;
        std::vector<std::string> files;
    };
    const Case cases[] = {
        {std::string("\0\0", 2), "", "", {""}},
        {std::string("\0\0", 2), "/given", "/given", {""}},
        {std::string("\0\0junk", 6), "", "", {""}},
        {std::string("/d\0\0", 4), "", "", {"/d"}},
        {std::string("/d\0a\0\0", 6), "", "/d", {"a"}},
        {std::string("\0a\0\0", 4), "", "", {"a"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.buffer.size());
        cCommonDialog dlg;
        dlg.SetFilename(c.buffer);
        std::string folder = c.folderBefore;
        std::vector<std::string> files{"kept"};
        int32_t count = 1;
        dlg.ParseMultiFileName(folder, files, count);
        std::vector<std::string> expected{"kept"};
        expected.insert(expected.end(), c.files.begin(), c.files.end());
        EXPECT_EQ(folder, c.folder);
        EXPECT_EQ(files, expected);
        EXPECT_EQ(count, static_cast<int32_t>(expected.size()));
    }
}
