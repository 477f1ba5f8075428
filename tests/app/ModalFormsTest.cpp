#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <filesystem>
#include <functional>

#include "ModalForms.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "shell/frmMain.h"

namespace {

// Plays the user's part once the modal dialog is up.
void WhenShown(const std::function<void(QDialog&)>& act) {
    QTimer::singleShot(0, [act] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(*dialog);
    });
}

class ModalForms : public ::testing::Test {
protected:
    void TearDown() override {
        g_sPkzipPath.clear();
        g_sUnpakPath.clear();
        g_sShortCutPath.clear();
    }
    fixtures::RegistryHome home;
    frmMain main;
};

}  // namespace

TEST_F(ModalForms, OptionsShowsTheSettingsAndOkStoresWhatWasTyped) {
    g_sPkzipPath = "/old/pkzip";
    WhenShown([](QDialog& d) {
        EXPECT_EQ(d.windowTitle(), "Options");
        auto* path = d.findChild<QLineEdit*>("tPath");
        ASSERT_NE(path, nullptr);
        EXPECT_EQ(path->text(), "/old/pkzip");
        EXPECT_TRUE(d.findChild<QRadioButton*>("optOS_1")->isChecked());
        path->setText("/usr/bin/quarrin-pkzip");
        emit path->textEdited(path->text());
        d.findChild<QPushButton*>("cmdValidate_1")->click();
    });
    ShowModalFormView(main, "frmOpt", nullptr);
    EXPECT_EQ(g_sPkzipPath, "/usr/bin/quarrin-pkzip");
    EXPECT_TRUE(std::filesystem::exists(home.UserFile()));
}

TEST_F(ModalForms, EscapeInOptionsStoresNothing) {
    WhenShown([](QDialog& d) {
        d.findChild<QLineEdit*>("tPath")->setText("/changed");
        d.reject();
    });
    ShowModalFormView(main, "frmOpt", nullptr);
    EXPECT_EQ(g_sPkzipPath, "");
    EXPECT_FALSE(std::filesystem::exists(home.UserFile()));
}

TEST_F(ModalForms, UnpakWithoutTheArchiverSaysSoAndCloses) {
    fixtures::ScriptedMessageBoxes boxes;
    ShowModalFormView(main, "frmScript", nullptr);
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].title, "Missing Utility");
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(ModalForms, UnpakWithoutAPakOffersTheScriptState) {
    fixtures::TempDir dir;
    fixtures::WriteFile(dir / "pkzip", "");
    g_sPkzipPath = dir / "pkzip";
    WhenShown([](QDialog& d) {
        EXPECT_EQ(d.windowTitle(), "Unpak");
        EXPECT_TRUE(d.findChild<QLineEdit*>("tScript")->isVisibleTo(&d));
        EXPECT_FALSE(d.findChild<QLineEdit*>("cbPath")->isVisibleTo(&d));
        EXPECT_FALSE(d.findChild<QRadioButton*>("OptSel_1")->isEnabled());
        d.findChild<QPushButton*>("cmdValidate_0")->click();
    });
    ShowModalFormView(main, "frmScript", nullptr);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}
