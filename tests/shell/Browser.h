#pragma once
// A main window over a folder of its own, driven as the user drives it.
#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures/PlanarBuilder.h"
#include "shell/frmMain.h"

class Browser : public ::testing::Test {
protected:
    void Add(const std::string& name, const std::string& bytes) { fixtures::WriteFile(dir / name, bytes); }
    // Lists the folder anew and selects a file, which raises the click.
    void Select(const std::string& name) {
        form.oDir.SetPath(dir.Path());
        form.oFile.Refresh();
        ASSERT_TRUE(form.oFile.Select(name)) << name;
    }
    void Preview(const std::string& name) {
        Select(name);
        form.oFile_DblClick();
    }
    std::string Panel(int32_t i) { return form.oStatusBar.Panels(i).Text; }
    std::string Report(size_t length) { return form.tReport.Text().substr(0, length); }
    // The colour that a rainbow palette's index shows.
    static uint32_t Rainbow(int32_t index) { return fixtures::RainbowPalette()[index][2] & 0xFFFFFF; }

    fixtures::TempDir dir;
    frmMain form;
};
