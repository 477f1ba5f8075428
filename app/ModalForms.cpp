#include "ModalForms.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QFocusEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>
#include <memory>

#include "Text1252.h"
#include "pak/frmOpt.h"
#include "pak/frmScript.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"

namespace {

QString Caption(const std::string& c) { return FromBytes(c); }

// A line edit bound to a text box model: typing sets the model's text, and
// the model's text shows here.
QLineEdit* BindText(TextBox& model, QWidget* parent, bool isPath) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(QString::fromStdString(model.Name));
    auto show = [&model, edit, isPath] {
        QString text = isPath ? QFile::decodeName(QByteArray::fromStdString(model.Text())) : FromBytes(model.Text());
        if (edit->text() != text) edit->setText(text);
        edit->setVisible(model.Visible());
        edit->setEnabled(model.Enabled());
        edit->setReadOnly(model.Locked);
    };
    show();
    model.Changed.Connect(show);
    QObject::connect(edit, &QLineEdit::textEdited, edit, [&model, edit, isPath](const QString& t) {
        model.SetText(isPath ? QFile::encodeName(t).toStdString() : ToBytes(t));
    });
    return edit;
}

// A control's LostFocus, raised when its widget gives the keyboard focus to
// another widget of the window. A focus that leaves with the window (another
// window activated, a menu popped up) is not lost inside it.
class FocusOut : public QObject {
public:
    FocusOut(QWidget* widget, Event<>& lostFocus) : QObject(widget), lostFocus_(lostFocus) {
        widget->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::FocusOut) {
            const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
            if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
                PassOver([this] { lostFocus_.Raise(); });
        }
        return QObject::eventFilter(watched, event);
    }

private:
    Event<>& lostFocus_;
};

// A push button of a dialog. None is a default button: Enter in a text box
// does what it does in a text box, and only a click or the button's own key
// presses a button.
QPushButton* NewButton(const QString& caption, QWidget* parent) {
    auto* button = new QPushButton(caption, parent);
    button->setAutoDefault(false);
    button->setDefault(false);
    return button;
}

QPushButton* BindButton(CommandButton& model, QWidget* parent) {
    auto* button = NewButton(Caption(model.Caption), parent);
    button->setObjectName(QString::fromStdString(model.Name));
    auto show = [&model, button] {
        button->setVisible(model.Visible());
        button->setEnabled(model.Enabled());
    };
    show();
    model.Changed.Connect(show);
    QObject::connect(button, &QPushButton::clicked, button, [&model] { model.Click.Raise(); });
    return button;
}

QRadioButton* BindOption(OptionButton& model, QWidget* parent) {
    auto* radio = new QRadioButton(Caption(model.Caption), parent);
    radio->setObjectName(QString::fromStdString(model.Name));
    radio->setAutoExclusive(false);  // the model keeps the group
    auto show = [&model, radio] {
        radio->setChecked(model.Value());
        radio->setEnabled(model.Enabled());
        radio->setVisible(model.Visible());
    };
    show();
    model.Changed.Connect(show);
    QObject::connect(radio, &QRadioButton::clicked, radio, [&model, radio] {
        model.SetValue(true);
        radio->setChecked(model.Value());
    });
    return radio;
}

QLabel* BindLabel(Label& model, QWidget* parent) {
    auto* label = new QLabel(Caption(model.Caption()), parent);
    label->setObjectName(QString::fromStdString(model.Name));
    model.Changed.Connect([&model, label] { label->setText(Caption(model.Caption())); });
    return label;
}

// "&Ok" and "&Cancel" at the foot of a dialog; Esc is "&Cancel" (reject).
void AddButtonRow(QGridLayout& grid, CommandButton (&cmdValidate)[2], QWidget* parent, int row) {
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(BindButton(cmdValidate[1], parent));
    buttons->addWidget(BindButton(cmdValidate[0], parent));
    grid.addLayout(buttons, row, 0, 1, 3);
}

// Runs a modal form's dialog until the form unloads.
void RunDialog(QDialog& dialog, ModalForm& form) {
    form.Unloading.Connect([&dialog] { dialog.done(0); });
    if (!form.IsUnloaded()) dialog.exec();
}

class ScriptDialog : public QDialog {
public:
    ScriptDialog(frmScript& form, QWidget* owner) : QDialog(owner), form_(form) {
        setObjectName("frmScript");
        setWindowTitle(Caption(form.Caption));
        auto* grid = new QGridLayout(this);
        grid->addWidget(BindLabel(form.lPath1, this), 0, 0);
        grid->addWidget(BindText(form.tPak, this, true), 0, 1);
        grid->addWidget(BindButton(form.Command1, this), 0, 2);
        grid->addWidget(BindLabel(form.lPath2, this), 1, 0);

        // The destination: a combo box whose drop-down button opens a folder list.
        auto* destination = new QWidget(this);
        auto* destLayout = new QVBoxLayout(destination);
        destLayout->setContentsMargins(0, 0, 0, 0);
        auto* cbRow = new QHBoxLayout;
        auto* cbPath = new QLineEdit(destination);
        cbPath->setObjectName("cbPath");
        auto* dropDown = NewButton(QString::fromUtf8("\u25BE"), destination);
        dropDown->setObjectName("cbPath_DropDown");
        dropDown->setFixedWidth(28);
        cbRow->addWidget(cbPath);
        cbRow->addWidget(dropDown);
        destLayout->addLayout(cbRow);
        auto* dirList = new QListWidget(destination);
        dirList->setObjectName("oDirFld");
        dirList->setMinimumHeight(140);
        destLayout->addWidget(dirList);
        new FocusOut(dirList, form.oDirFld.LostFocus);
        // Without a PAK the script's path takes the destination's place, so
        // that it stands beside the label of the same row.
        destLayout->addWidget(BindText(form.tScript, this, true));
        grid->addWidget(destination, 1, 1);
        grid->addWidget(BindButton(form.Command2, this), 1, 2, Qt::AlignTop);

        auto showCombo = [&form, cbPath, dropDown] {
            QString text = QFile::decodeName(QByteArray::fromStdString(form.cbPath.Text()));
            if (cbPath->text() != text) cbPath->setText(text);
            cbPath->setVisible(form.cbPath.Visible());
            dropDown->setVisible(form.cbPath.Visible());
        };
        showCombo();
        form.cbPath.Changed.Connect(showCombo);
        connect(cbPath, &QLineEdit::textEdited, this,
                [&form](const QString& t) { form.cbPath.SetText(QFile::encodeName(t).toStdString()); });
        connect(dropDown, &QPushButton::clicked, this, [&form] { form.cbPath.DropDown.Raise(); });

        auto showDirs = [&form, dirList] {
            dirList->clear();
            for (int32_t i = 0; i < form.oDirFld.ListCount(); ++i) {
                std::string entry = form.oDirFld.List(i);
                size_t cut = entry.rfind('/');
                std::string name = entry == "/" ? entry : entry.substr(cut + 1);
                QString indent(form.oDirFld.Depth(i) * 2, QChar(' '));
                dirList->addItem(indent + QFile::decodeName(QByteArray::fromStdString(name)));
            }
            dirList->setCurrentRow(form.oDirFld.ListIndex);
            dirList->setVisible(form.oDirFld.Visible());
        };
        showDirs();
        form.oDirFld.Changed.Connect(showDirs);
        connect(dirList, &QListWidget::currentRowChanged, this, [&form](int row) {
            if (row >= 0) form.oDirFld.ListIndex = row;
        });
        connect(dirList, &QListWidget::itemActivated, this, [&form, dirList] {
            int16_t enter = 13;
            form.oDirFld.ListIndex = dirList->currentRow();
            form.oDirFld.KeyPress.Raise(enter);
        });
        form.SetFocus = [dirList, this](Control& c) {
            if (&c == &form_.oDirFld) dirList->setFocus();
            else if (auto* w = findChild<QWidget*>(QString::fromStdString(c.Name))) w->setFocus();
        };

        auto* frame = new QGroupBox(Caption(form.fraSelect.Caption()), this);
        frame->setObjectName("fraSelect");
        auto* frameLayout = new QGridLayout(frame);
        frameLayout->addWidget(BindOption(form.OptSel[0], frame), 0, 0);
        frameLayout->addWidget(BindOption(form.OptSel[1], frame), 1, 0);
        frameLayout->addWidget(BindOption(form.OptSel[2], frame), 2, 0);
        auto* tSel = BindText(form.tSel, frame, false);
        frameLayout->addWidget(tSel, 2, 1);
        new FocusOut(tSel, form.tSel.LostFocus);
        grid->addWidget(frame, 3, 0, 1, 3);

        auto* bar = new QProgressBar(this);
        bar->setObjectName("oPBar");
        auto showBar = [&form, bar] {
            bar->setRange(form.oPBar.Min, form.oPBar.Max);
            bar->setValue(form.oPBar.Value());
            bar->setVisible(form.oPBar.Visible());
        };
        showBar();
        form.oPBar.Changed.Connect(showBar);
        grid->addWidget(bar, 4, 0, 1, 3);

        AddButtonRow(*grid, form.cmdValidate, this, 5);
        resize(460, sizeHint().height());
    }

protected:
    // Esc is the dialog's "&Cancel".
    void reject() override { form_.cmdValidate[0].Click.Raise(); }

private:
    frmScript& form_;
};

class OptionsDialog : public QDialog {
public:
    OptionsDialog(frmOpt& form, QWidget* owner) : QDialog(owner), form_(form) {
        setObjectName("frmOpt");
        setWindowTitle(Caption(form.Caption));
        auto* grid = new QGridLayout(this);
        grid->addWidget(BindLabel(form.lPath[0], this), 0, 0);
        grid->addWidget(BindText(form.tPath, this, true), 0, 1);
        grid->addWidget(BindButton(form.cmdPath, this), 0, 2);
        grid->addWidget(BindLabel(form.lPath[1], this), 1, 0);
        grid->addWidget(BindText(form.tPak, this, true), 1, 1);
        grid->addWidget(BindButton(form.Command1, this), 1, 2);
        grid->addWidget(BindLabel(form.lPath[2], this), 2, 0);
        grid->addWidget(BindText(form.tShortcut, this, true), 2, 1, 1, 2);
        auto* os = new QHBoxLayout;
        os->addWidget(BindOption(form.optOS[0], this));
        os->addWidget(BindOption(form.optOS[1], this));
        os->addStretch();
        grid->addLayout(os, 3, 1, 1, 2);
        AddButtonRow(*grid, form.cmdValidate, this, 4);
        resize(460, sizeHint().height());
    }

protected:
    void reject() override { form_.cmdValidate[0].Click.Raise(); }

private:
    frmOpt& form_;
};

}  // namespace

void ShowModalFormView(frmMain& main, const std::string& formName, QWidget* owner) {
    if (formName == "frmScript") {
        frmScript form(main);
        form.Form_Load();
        ScriptDialog dialog(form, owner);
        // The archiver check runs once the dialog is on the screen.
        QTimer::singleShot(0, &dialog, [&form] { form.Form_Activate(); });
        RunDialog(dialog, form);
    } else if (formName == "frmOpt") {
        frmOpt form;
        form.Form_Load();
        OptionsDialog dialog(form, owner);
        RunDialog(dialog, form);
    }
}
