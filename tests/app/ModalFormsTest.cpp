#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
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

// Options shows the settings; Ok stores what was typed, Escape nothing.
TEST_F(ModalForms, OptionsOkStoresWhatWasTypedAndEscapeNothing) {
    for (const bool ok : {true, false}) {
        SCOPED_TRACE(ok);
        g_sPkzipPath = "/old/pkzip";
        WhenShown([ok](QDialog& d) {
            EXPECT_EQ(d.windowTitle(), "Options");
            auto* path = d.findChild<QLineEdit*>("tPath");
            ASSERT_NE(path, nullptr);
            EXPECT_EQ(path->text(), "/old/pkzip");
            EXPECT_TRUE(d.findChild<QRadioButton*>("optOS_1")->isChecked());
            path->setText("/usr/bin/quarrin-pkzip");
            emit path->textEdited(path->text());
            ok ? d.findChild<QPushButton*>("cmdValidate_1")->click() : d.reject();
        });
        ShowModalFormView(main, "frmOpt", nullptr);
        EXPECT_EQ(g_sPkzipPath, ok ? "/usr/bin/quarrin-pkzip" : "/old/pkzip");
        EXPECT_EQ(std::filesystem::exists(home.UserFile()), ok);
        std::filesystem::remove(home.UserFile());
    }
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
        // The script's path stands beside its label, in the destination's row.
        auto* script = d.findChild<QLineEdit*>("tScript");
        auto* label = d.findChild<QLabel*>("lPath_2");
        ASSERT_NE(label, nullptr);
        EXPECT_EQ(label->text(), "Script:");
        const QRect box(script->mapTo(&d, QPoint(0, 0)), script->size());
        const int labelMiddle = label->mapTo(&d, QPoint(0, 0)).y() + label->height() / 2;
        EXPECT_GE(labelMiddle, box.top());
        EXPECT_LE(labelMiddle, box.bottom());
        EXPECT_FALSE(d.findChild<QRadioButton*>("OptSel_1")->isEnabled());
        d.findChild<QPushButton*>("cmdValidate_0")->click();
    });
    ShowModalFormView(main, "frmScript", nullptr);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

namespace {

// Gives a widget the keyboard focus as a click or Tab would, once its dialog
// is the active window.
void FocusOn(QDialog& d, QWidget* w) {
    d.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&d));
    w->setFocus(Qt::TabFocusReason);
}

}  // namespace

// Enter in a text box does what it does in a text box: neither dialog has a
// default button, so no Enter presses "&Ok".
TEST_F(ModalForms, EnterInATextBoxPressesNoButton) {
    fixtures::TempDir dir;
    fixtures::WriteFile(dir / "pkzip", "");
    struct Case {
        const char* form;
        const char* box;
    };
    const Case cases[] = {{"frmOpt", "tPath"}, {"frmOpt", "tShortcut"}, {"frmScript", "tSel"}, {"frmScript", "tScript"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.form) + "." + c.box);
        g_sPkzipPath = dir / "pkzip";
        fixtures::ScriptedMessageBoxes boxes;
        bool stayedOpen = false;
        WhenShown([&](QDialog& d) {
            auto* edit = d.findChild<QLineEdit*>(c.box);
            ASSERT_NE(edit, nullptr);
            FocusOn(d, edit);
            edit->setText("typed");
            emit edit->textEdited(edit->text());
            QTest::keyClick(edit, Qt::Key_Return);
            QTest::keyClick(edit, Qt::Key_Enter);
            stayedOpen = QApplication::activeModalWidget() == &d;
            for (auto* button : d.findChildren<QPushButton*>()) EXPECT_FALSE(button->isDefault());
            d.reject();
        });
        ShowModalFormView(main, c.form, nullptr);
        EXPECT_TRUE(stayedOpen);
        EXPECT_TRUE(boxes.Calls.empty());
        EXPECT_EQ(g_sPkzipPath, dir / "pkzip");
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    }
}

// The folder list of the destination gives its folder to the combo box and
// closes when the focus goes elsewhere; "*.*" in the member pattern turns
// back into all members when the pattern box loses the focus.
TEST_F(ModalForms, UnpakControlsTakeTheirLostFocus) {
    fixtures::TempDir dir;
    fixtures::WriteFile(dir / "pkzip", "");
    g_sPkzipPath = dir / "pkzip";
    g_sUnpakPath = dir.Path();
    // A PAK is shown: its members can be saved and the list is up.
    main.SetSaveOffer(true);
    main.oListView.SetVisible(true);
    WhenShown([](QDialog& d) {
        auto* combo = d.findChild<QLineEdit*>("cbPath");
        auto* dirs = d.findChild<QListWidget*>("oDirFld");
        auto* pattern = d.findChild<QLineEdit*>("tSel");
        ASSERT_NE(combo, nullptr);
        ASSERT_NE(dirs, nullptr);
        ASSERT_NE(pattern, nullptr);
        d.findChild<QPushButton*>("cbPath_DropDown")->click();
        ASSERT_TRUE(dirs->isVisibleTo(&d));
        FocusOn(d, dirs);
        const QString folder = combo->text();
        combo->setText("/elsewhere");
        emit combo->textEdited(combo->text());
        pattern->setFocus(Qt::TabFocusReason);
        EXPECT_FALSE(dirs->isVisibleTo(&d));
        EXPECT_EQ(combo->text(), folder);

        pattern->setText("*.*");
        emit pattern->textEdited(pattern->text());
        EXPECT_TRUE(d.findChild<QRadioButton*>("OptSel_2")->isChecked());
        combo->setFocus(Qt::TabFocusReason);
        EXPECT_TRUE(d.findChild<QRadioButton*>("OptSel_0")->isChecked());
        EXPECT_FALSE(d.findChild<QRadioButton*>("OptSel_2")->isChecked());
        d.reject();
    });
    ShowModalFormView(main, "frmScript", nullptr);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}
