#include <gtest/gtest.h>

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <filesystem>

#include "AppTestSupport.h"
#include "ModalForms.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "fixtures/ScriptedDialogs.h"
#include "identify/modGlobal.h"
#include "shell/frmMain.h"

using apptest::Child;
using apptest::WhenShown;

namespace {

class ModalForms : public ::testing::Test {
protected:
    void SetUp() override { fixtures::WriteFile(dir / "pkzip", ""); }
    void TearDown() override {
        g_sPkzipPath.clear();
        g_sUnpakPath.clear();
        g_sShortCutPath.clear();
    }
    // Types into a text box as the user does.
    static void Type(QLineEdit* edit, const char* text) {
        edit->setText(text);
        emit edit->textEdited(edit->text());
    }
    // Gives a widget the keyboard focus as a click or Tab would, once its
    // dialog is the active window.
    static void FocusOn(QDialog* d, QWidget* w) {
        d->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(d));
        w->setFocus(Qt::TabFocusReason);
    }
    fixtures::RegistryHome home;
    fixtures::TempDir dir;
    frmMain main;
};

}  // namespace

// Ok on Options stores what was typed. Enter in a text
// box does what it does in a text box: no button is the default, so it
// presses no "&Ok".
TEST_F(ModalForms, OptionsOkStoresWhatWasTyped) {
    WhenShown<QDialog>([](QDialog* d) {
        auto* path = Child<QLineEdit>(d, "tPath");
        FocusOn(d, path);
        Type(path, "/usr/bin/quarrin-pkzip");
        QTest::keyClick(path, Qt::Key_Return);
        QTest::keyClick(path, Qt::Key_Enter);
        EXPECT_EQ(QApplication::activeModalWidget(), d);
        Child<QPushButton>(d, "cmdValidate_1")->click();
    });
    ShowModalFormView(main, "frmOpt", nullptr);
    EXPECT_EQ(g_sPkzipPath, "/usr/bin/quarrin-pkzip");
    EXPECT_TRUE(std::filesystem::exists(home.UserFile()));
}

// Without the archiver Unpak says so and closes; without a PAK it offers the
// script's state, whose path stands beside its label in the destination's row.
TEST_F(ModalForms, UnpakWithoutTheArchiverOrAPak) {
    fixtures::ScriptedMessageBoxes boxes;
    ShowModalFormView(main, "frmScript", nullptr);
    ASSERT_EQ(boxes.Calls.size(), 1u);
    g_sPkzipPath = dir / "pkzip";
    WhenShown<QDialog>([](QDialog* d) {
        auto* script = Child<QLineEdit>(d, "tScript");
        auto* label = Child<QLabel>(d, "lPath_2");
        EXPECT_TRUE(script->isVisibleTo(d) && !Child<QLineEdit>(d, "cbPath")->isVisibleTo(d));
        const int labelMiddle = label->mapTo(d, QPoint(0, 0)).y() + label->height() / 2;
        const QRect box(script->mapTo(d, QPoint(0, 0)), script->size());
        EXPECT_TRUE(box.top() <= labelMiddle && labelMiddle <= box.bottom());
        EXPECT_FALSE(Child<QRadioButton>(d, "OptSel_1")->isEnabled());
        Child<QPushButton>(d, "cmdValidate_0")->click();
    });
    ShowModalFormView(main, "frmScript", nullptr);
    EXPECT_EQ(boxes.Calls.size(), 1u);
}

// The folder list of the destination gives its folder to the combo box and
// closes when the focus goes elsewhere; "*.*" in the member pattern turns
// back into all members when the pattern box loses the focus. Enter in the
// pattern presses no button.
TEST_F(ModalForms, UnpakControlsTakeTheirLostFocus) {
    g_sPkzipPath = dir / "pkzip";
    g_sUnpakPath = dir.Path();
    // A PAK is shown: its members can be saved and the list is up.
    main.SetSaveOffer(true);
    main.oListView.SetVisible(true);
    WhenShown<QDialog>([](QDialog* d) {
        auto* combo = Child<QLineEdit>(d, "cbPath");
        auto* dirs = Child<QListWidget>(d, "oDirFld");
        auto* pattern = Child<QLineEdit>(d, "tSel");
        Child<QPushButton>(d, "cbPath_DropDown")->click();
        ASSERT_TRUE(dirs->isVisibleTo(d));
        FocusOn(d, dirs);
        const QString folder = combo->text();
        Type(combo, "/elsewhere");
        pattern->setFocus(Qt::TabFocusReason);
        EXPECT_FALSE(dirs->isVisibleTo(d));
        EXPECT_EQ(combo->text(), folder);
        Type(pattern, "*.*");
        QTest::keyClick(pattern, Qt::Key_Return);
        EXPECT_EQ(QApplication::activeModalWidget(), d);
        EXPECT_TRUE(Child<QRadioButton>(d, "OptSel_2")->isChecked());
        combo->setFocus(Qt::TabFocusReason);
        EXPECT_TRUE(Child<QRadioButton>(d, "OptSel_0")->isChecked() && !Child<QRadioButton>(d, "OptSel_2")->isChecked());
        d->reject();
    });
    ShowModalFormView(main, "frmScript", nullptr);
}
