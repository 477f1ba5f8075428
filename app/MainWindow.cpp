#include "MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFile>
#include <QFontDatabase>
#include <QHeaderView>
#include <QKeyEvent>
#include <QWheelEvent>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimer>
#include <QToolBar>
#include <QTreeView>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "EventPump.h"
#include "FileListModel.h"
#include "Icons.h"
#include "KeyCodes.h"
#include "ListViewModel.h"
#include "PictureView.h"
#include "ScrollBarView.h"
#include "Text1252.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"

namespace {

// Gives a key's character code to a control's KeyPress, and answers whether
// the key is done with: a handler that sets the code to 0 swallows it, and
// where `enterDone` Enter has done its work in the handler.
template <typename... Args>
bool RaiseKeyPress(Event<Args...>& keyPress, const QKeyEvent& key, bool enterDone) {
    int16_t code = KeyCodes::KeyAscii(key);
    if (code == 0) return false;
    const bool enter = code == 13;
    PassOver([&] { keyPress.Raise(code); });
    return code == 0 || (enterDone && enter);
}

// A text of bytes for a widget: Windows-1252, one byte to one character, with
// CR LF as the line break.
QString Shown(const std::string& bytes) {
    QString text = FromBytes(bytes);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text;
}

QString ShownPath(const std::string& path) { return QFile::decodeName(QByteArray::fromStdString(path)); }

// A colour of the form runtime: a system colour when the high bit is set
// (its index in the low byte), otherwise red, green and blue from the low
// byte up.
QColor OleColor(uint32_t value, const QPalette& palette) {
    if ((value & 0x80000000u) == 0)
        return QColor(static_cast<int>(value & 0xFF), static_cast<int>((value >> 8) & 0xFF),
                      static_cast<int>((value >> 16) & 0xFF));
    switch (value & 0xFF) {
        case 5: return palette.color(QPalette::Base);             // window background
        case 8: return palette.color(QPalette::WindowText);       // window text
        case 12: return palette.color(QPalette::Dark);            // application workspace
        case 13: return palette.color(QPalette::Highlight);
        case 14: return palette.color(QPalette::HighlightedText);
        case 15: return palette.color(QPalette::Button);          // button face
        case 16: return palette.color(QPalette::Mid);             // button shadow
        case 18: return palette.color(QPalette::ButtonText);
        case 20: return palette.color(QPalette::Light);           // button highlight
        default: return palette.color(QPalette::Window);
    }
}

// The area below the menu bar. The form's controls lie in it at their own
// places, so it has no layout; its size is the form's client size.
class ClientWidget : public QWidget {
public:
    using QWidget::QWidget;
    std::function<void()> Resized;

protected:
    void resizeEvent(QResizeEvent* event) override {
        QWidget::resizeEvent(event);
        if (Resized) Resized();
    }
};

// A picture box: its background colour, inside a sunken border for oImg.
class PictureArea : public QFrame {
public:
    PictureArea(PictureBox& model, QWidget* parent) : QFrame(parent), model_(model) {}

protected:
    void paintEvent(QPaintEvent* event) override {
        {
            QPainter p(this);
            p.fillRect(contentsRect(), OleColor(model_.BackColor, palette()));
        }
        QFrame::paintEvent(event);
    }

private:
    PictureBox& model_;
};

// The drive list reads the drives anew each time it opens, as mounts come and go.
class DriveCombo : public QComboBox {
public:
    using QComboBox::QComboBox;
    std::function<void()> Opening;
    void showPopup() override {
        if (Opening) Opening();
        QComboBox::showPopup();
    }
};

// The folder list: a tree indented by depth, without the branch lines and
// the expanding arrows of a tree, as every folder of it stands open.
class FolderTree : public QTreeWidget {
public:
    using QTreeWidget::QTreeWidget;

protected:
    void drawBranches(QPainter*, const QRect&, const QModelIndex&) const override {}
};

QString ToolTipOf(const ToolButton& button) {
    QString tip = FromBytes(button.ToolTipText);
    if (!button.Path.empty()) tip += QLatin1Char('\n') + ShownPath(button.Path);
    return tip;
}

QFrame* MakeFrame(QWidget* parent, const char* name) {
    auto* frame = new QFrame(parent);
    frame->setObjectName(QLatin1String(name));
    frame->setFrameStyle(QFrame::Box | QFrame::Sunken);
    return frame;
}

}  // namespace

// ---- Units --------------------------------------------------------------------

int MainWindow::Pixels(int32_t twips) { return static_cast<int>(std::lround(twips / double(kTwipsPerPixel))); }

QRect MainWindow::PixelRect(const Rect& twips) {
    const int left = Pixels(twips.Left), top = Pixels(twips.Top);
    // The far edges are rounded, not the sizes, so that neighbours meet as
    // they do in twips.
    return QRect(QPoint(left, top),
                 QPoint(Pixels(twips.Left + twips.Width) - 1, Pixels(twips.Top + twips.Height) - 1));
}

int MainWindow::PixelsOfHimetric(int32_t himetric) {
    // 2540 hundredths of a millimetre to the inch, 96 pixels to the inch.
    return static_cast<int>(std::lround(himetric * 96.0 / 2540.0));
}

QSize MainWindow::ClientSizeOf(int32_t outerWidth, int32_t outerHeight) {
    return QSize(std::max(0, Pixels(outerWidth - kFrameTwips)),
                 std::max(0, Pixels(outerHeight - kFrameTwips - kCaptionTwips)));
}

// ---- Building -------------------------------------------------------------------

template <typename... Args, typename F>
void MainWindow::Listen(Event<Args...>& event, F&& handler) {
    const int32_t token = event.Connect(std::forward<F>(handler));
    disconnect_.push_back([&event, token] { event.Disconnect(token); });
}

MainWindow::MainWindow(frmMain& form, QWidget* parent) : QMainWindow(parent), form_(form) {
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(FromBytes(form_.Caption));
    setWindowIcon(Icons::Application());
    // The controls of the window were laid out for a small sans-serif face.
    QFont small = font();
    small.setPointSizeF(8.25);
    setFont(small);

    auto* client = new ClientWidget(this);
    client->setObjectName(QStringLiteral("frmMainClient"));
    client->Resized = [this] { ClientResized(); };
    client_ = client;
    setCentralWidget(client_);

    BuildMenus();

    // fraMain and its children. Of the children, oListView lies on top, then
    // fraDocMain, then oImg, then oSSTab: later siblings lie above earlier ones.
    QFrame* fraMain = MakeFrame(client_, "fraMain");
    Bind(form_.fraMain, fraMain);

    auto* tab = new QTabWidget(fraMain);
    tab->setObjectName(QStringLiteral("oSSTab"));
    tab->addTab(new QWidget(tab), Shown(form_.oSSTab.Caption()));
    Bind(form_.oSSTab, tab, [this, tab] { tab->setTabText(0, Shown(form_.oSSTab.Caption())); });

    auto* img = new PictureArea(form_.oImg, fraMain);
    img->setObjectName(QStringLiteral("oImg"));
    // The border is as wide as the model says, so that the inside of the
    // widget is the box's inner size.
    img->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    img->setLineWidth(form_.oImg.BorderPixels);
    img_ = img;
    // The inside of the border clips the picture, which scrolls under it.
    imgClient_ = new QWidget(img_);
    imgClient_->setObjectName(QStringLiteral("oImgClient"));
    imgClient_->installEventFilter(this);
    auto* picture = new PictureView(form_.oPicture, imgClient_);
    picture->setObjectName(QStringLiteral("oPicture"));
    picture->installEventFilter(this);
    picture_ = picture;
    BuildImgBars();
    Bind(form_.oImg, img_, [this] {
        imgClient_->setGeometry(img_->contentsRect());
        Place(form_.oPicture, picture_);
        PlaceImgBars();
        img_->update();
    });
    Bind(form_.oPicture, picture_, [this] { picture_->update(); });

    QFrame* fraDocMain = MakeFrame(fraMain, "fraDocMain");
    Bind(form_.fraDocMain, fraDocMain);
    BuildDocuments();

    BuildListView();

    // The bars lie over the edges of fraMain, as docked bars do.
    toolbar_ = new QToolBar(client_);
    toolbar_->setObjectName(QStringLiteral("oToolbar"));
    toolbar_->setAutoFillBackground(true);
    BuildToolbar(toolbar_, form_.oToolbar, false);
    BuildStatusBar();

    Listen(form_.Changed, [this] { ScheduleFollowForm(); });
    Listen(form_.screen.MousePointerChanged, [this](int32_t pointer) { SetMousePointer(pointer); });
    form_.CloseWindow = [this] { close(); };

    const QSize clientSize = ClientSizeOf(form_.Bounds().Width, form_.Bounds().Height);
    resize(clientSize.width(), clientSize.height() + menuBar()->sizeHint().height());
}

MainWindow::~MainWindow() {
    for (auto& undo : disconnect_) undo();
    disconnect_.clear();
    form_.CloseWindow = nullptr;
    SetMousePointer(0);
    // The widgets go while this object's members still stand, and tell it
    // nothing more on their way.
    unloaded_ = true;
    syncing_ = true;
    delete client_;
    client_ = nullptr;
}

QWidget* MainWindow::ViewOf(const Control& control) const {
    auto it = views_.find(&control);
    return it == views_.end() ? nullptr : it->second;
}

void MainWindow::Bind(Control& model, QWidget* widget, std::function<void()> refresh) {
    views_[&model] = widget;
    auto update = [this, &model, widget, refresh = std::move(refresh)] {
        if (unloaded_) return;
        Place(model, widget);
        if (refresh) refresh();
    };
    Listen(model.Changed, update);
    update();
}

void MainWindow::Place(const Control& model, QWidget* widget) {
    if (&model == &form_.oPicture) {
        // Inside oImg the scale unit is the pixel, and places count from the
        // inside of its border.
        const Rect& b = model.Bounds();
        widget->setGeometry(QRect(b.Left, b.Top, b.Width, b.Height));
    } else {
        widget->setGeometry(PixelRect(model.Bounds()));
    }
    widget->setVisible(model.Visible());
    widget->setEnabled(model.Enabled());
}

void MainWindow::BuildMenus() {
    auto build = [this](MenuItem& top, std::vector<std::unique_ptr<MenuItem>>& entries, std::vector<QAction*>& actions) {
        QMenu* menu = menuBar()->addMenu(FromBytes(top.Caption()));
        menu->setObjectName(QString::fromStdString(top.Name));
        QAction* topAction = menu->menuAction();
        auto refreshTop = [this, &top, topAction] {
            if (unloaded_) return;
            topAction->setEnabled(top.Enabled());
            topAction->setVisible(top.Visible());
        };
        Listen(top.Changed, refreshTop);
        refreshTop();
        for (auto& entry : entries) {
            MenuItem& item = *entry;
            QAction* action = item.IsSeparator() ? menu->addSeparator() : menu->addAction(FromBytes(item.Caption()));
            action->setObjectName(QStringLiteral("%1_%2").arg(QString::fromStdString(item.Name)).arg(item.Index));
            if (!item.Shortcut.empty()) action->setShortcut(QKeySequence(QString::fromStdString(item.Shortcut)));
            connect(action, &QAction::triggered, this, [this, &item] {
                if (!unloaded_) PassOver([&] { item.Click.Raise(); });
            });
            auto refresh = [this, &item, action] {
                if (unloaded_) return;
                action->setEnabled(item.Enabled());
                action->setVisible(item.Visible());
            };
            Listen(item.Changed, refresh);
            refresh();
            actions.push_back(action);
        }
    };
    build(form_.mnuFile, form_.mnuSubFile, fileActions_);
    build(form_.mnuTools, form_.mnuSubTools, toolsActions_);
}

void MainWindow::BuildToolbar(QToolBar* bar, Toolbar& model, bool folderImages) {
    bar->setMovable(false);
    bar->setFloatable(false);
    bar->setIconSize(QSize(16, 16));
    bar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    for (int32_t i = 1; i <= model.ButtonCount(); ++i) {
        const ToolButton& button = model.Buttons(i);
        QAction* action = nullptr;
        switch (button.Kind) {
            case ToolButton::Separator: action = bar->addSeparator(); break;
            case ToolButton::Placeholder: {
                auto* gap = new QWidget(bar);
                gap->setFixedWidth(Pixels(button.Width));
                action = bar->addWidget(gap);
                break;
            }
            default: {
                QIcon icon = folderImages ? Icons::FolderImage(button.Image) : Icons::ToolImage(button.Image);
                action = bar->addAction(icon, FromBytes(button.ToolTipText));
                connect(action, &QAction::triggered, this, [this, &model, i] {
                    if (!unloaded_) PassOver([&] { model.ButtonClick.Raise(i); });
                });
                break;
            }
        }
        action->setObjectName(QStringLiteral("%1_%2").arg(QString::fromStdString(model.Name)).arg(i));
    }
    Bind(model, bar, [this, bar, &model] { RefreshToolbar(bar, model); });
}

void MainWindow::RefreshToolbar(QToolBar* bar, const Toolbar& model) {
    const QList<QAction*> actions = bar->actions();
    for (int32_t i = 1; i <= model.ButtonCount() && i <= actions.size(); ++i) {
        const ToolButton& button = model.Buttons(i);
        QAction* action = actions[i - 1];
        action->setEnabled(button.Enabled);
        if (button.Kind == ToolButton::Default) action->setToolTip(ToolTipOf(button));
    }
}

void MainWindow::BuildStatusBar() {
    statusBar_ = new QStatusBar(client_);
    statusBar_->setObjectName(QStringLiteral("oStatusBar"));
    statusBar_->setAutoFillBackground(true);
    for (int32_t i = 1; i <= form_.oStatusBar.PanelCount(); ++i) {
        auto* panel = new QLabel(statusBar_);
        panel->setObjectName(QStringLiteral("oStatusBar_Panel%1").arg(i));
        panel->setFixedWidth(PixelsOfHimetric(form_.oStatusBar.Panels(i).Width));
        panel->setTextFormat(Qt::PlainText);
        panel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
        panel->installEventFilter(this);
        statusBar_->addWidget(panel);
        panels_.push_back(panel);
    }
    Bind(form_.oStatusBar, statusBar_, [this] { RefreshStatusBar(); });
}

void MainWindow::RefreshStatusBar() {
    for (size_t i = 0; i < panels_.size(); ++i) {
        const Panel& panel = form_.oStatusBar.Panels(static_cast<int32_t>(i) + 1);
        const QString text = Shown(panel.Text);
        if (panels_[i]->text() != text) panels_[i]->setText(text);
    }
}

void MainWindow::BuildDocuments() {
    QWidget* doc = ViewOf(form_.fraDocMain);

    folderBar_ = new QToolBar(doc);
    folderBar_->setObjectName(QStringLiteral("oFolderTbar"));
    BuildToolbar(folderBar_, form_.oFolderTbar, true);

    dir_ = new FolderTree(doc);
    dir_->setObjectName(QStringLiteral("oDir"));
    dir_->setHeaderHidden(true);
    dir_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    dir_->header()->setStretchLastSection(false);
    dir_->setRootIsDecorated(false);
    dir_->setItemsExpandable(false);
    dir_->setIndentation(10);
    dir_->setUniformRowHeights(true);
    dir_->installEventFilter(this);
    connect(dir_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* current) {
        if (syncing_ || unloaded_ || current == nullptr) return;
        form_.oDir.ListIndex = current->data(0, Qt::UserRole).toInt();
    });
    connect(dir_, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
        if (unloaded_ || item == nullptr) return;
        // The folder list opens a folder on a double click by itself.
        const int index = item->data(0, Qt::UserRole).toInt();
        PassOver([&] { form_.oDir.SetPath(form_.oDir.List(index)); });
    });
    Bind(form_.oDir, dir_, [this] { RefreshDir(); });

    auto* drive = new DriveCombo(doc);
    drive->Opening = [this] {
        if (!unloaded_) PassOver([&] { form_.oDrive.Refresh(); });
    };
    drive_ = drive;
    drive_->setObjectName(QStringLiteral("oDrive"));
    connect(drive_, &QComboBox::activated, this, [this](int index) {
        if (syncing_ || unloaded_ || index < 0 || static_cast<size_t>(index) >= drivesShown_.size()) return;
        const std::string drive = drivesShown_[static_cast<size_t>(index)];
        // Choosing the drive that is already chosen changes nothing.
        if (drive == form_.oDrive.Drive()) return;
        PassOver([&] { form_.oDrive.SetDrive(drive); });
    });
    Bind(form_.oDrive, drive_, [this] { RefreshDrive(); });

    file_ = new QListView(doc);
    file_->setObjectName(QStringLiteral("oFile"));
    fileModel_ = new FileListModel(form_.oFile, file_);
    file_->setModel(fileModel_);
    file_->setSelectionMode(QAbstractItemView::SingleSelection);
    file_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    file_->setUniformItemSizes(true);
    file_->installEventFilter(this);
    file_->viewport()->installEventFilter(this);
    connect(file_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (syncing_ || unloaded_) return;
        const QModelIndexList selected = file_->selectionModel()->selectedIndexes();
        if (selected.isEmpty()) return;
        clickRaisedByPress_ = true;
        const int row = selected.first().row();
        PassOver([&] { form_.oFile.SetListIndex(row); });
    });
    connect(file_, &QListView::clicked, this, [this](const QModelIndex& index) {
        if (syncing_ || unloaded_ || !index.isValid() || clickRaisedByPress_) return;
        // A click on the entry that is already selected is a click all the same.
        PassOver([&] { form_.oFile.SetListIndex(index.row()); });
    });
    connect(file_, &QListView::doubleClicked, this, [this] {
        if (!unloaded_) PassOver([&] { form_.oFile.DblClick.Raise(); });
    });
    Bind(form_.oFile, file_, [this] { RefreshFile(); });

    auto* info = new QLabel(doc);
    info->setObjectName(QStringLiteral("lInfo"));
    info->setAlignment(Qt::AlignCenter);
    info->setTextFormat(Qt::PlainText);
    Bind(form_.lInfo, info, [this, info] { info->setText(Shown(form_.lInfo.Caption())); });

    report_ = new QPlainTextEdit(doc);
    report_->setObjectName(QStringLiteral("tReport"));
    report_->setLineWrapMode(QPlainTextEdit::NoWrap);
    report_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    report_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    report_->setUndoRedoEnabled(false);
    // A locked text box still has its caret and moves it with the keys.
    report_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fixed.setPointSizeF(9);
    report_->setFont(fixed);
    report_->installEventFilter(this);
    Bind(form_.tReport, report_, [this] { RefreshReport(); });

    // Created after tReport so that it lies over the text box's right edge.
    vScroll_ = new QScrollBar(Qt::Vertical, doc);
    vScroll_->setObjectName(QStringLiteral("oVScroll"));
    // The bar's value changes when a dragged thumb is let go, as the control's
    // Change event comes then; each change redraws a page.
    vScroll_->setTracking(false);
    connect(vScroll_, &QScrollBar::valueChanged, this, [this](int value) {
        if (syncing_ || unloaded_) return;
        PassOver([&] { form_.oVScroll.SetValue(value); });
        // A value the model refused puts the bar back where the model stands.
        RefreshVScroll();
    });
    Bind(form_.oVScroll, vScroll_, [this] { RefreshVScroll(); });
}

void MainWindow::BuildListView() {
    listView_ = new QTreeView(ViewOf(form_.fraMain));
    listView_->setObjectName(QStringLiteral("oListView"));
    listModel_ = new ListViewModel(form_.oListView, listView_);
    listView_->setModel(listModel_);
    listView_->setRootIsDecorated(false);
    listView_->setItemsExpandable(false);
    listView_->setUniformRowHeights(true);
    listView_->setAllColumnsShowFocus(true);
    listView_->setSortingEnabled(false);
    listView_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    listView_->setSelectionBehavior(QAbstractItemView::SelectRows);
    listView_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    listView_->installEventFilter(this);
    QHeaderView* header = listView_->header();
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(false);
    header->setStretchLastSection(false);
    header->setSectionsMovable(false);
    for (size_t c = 0; c < form_.oListView.ColumnHeaders.size(); ++c)
        header->resizeSection(static_cast<int>(c), PixelsOfHimetric(form_.oListView.ColumnHeaders[c].Width));
    connect(header, &QHeaderView::sectionClicked, this, [this](int section) {
        if (!unloaded_) PassOver([&] { form_.oListView.ColumnClick.Raise(section + 1); });
    });
    connect(listView_, &QTreeView::doubleClicked, this, [this] {
        if (!unloaded_) PassOver([&] { form_.oListView.DblClick.Raise(); });
    });
    connect(listView_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MainWindow::ListSelectionChanged);
    connect(listView_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) {
                if (syncing_ || unloaded_ || !current.isValid()) return;
                mirroring_ = true;
                PassOver([&] { form_.oListView.SetFocusItem(current.row() + 1); });
                mirroring_ = false;
            });
    Bind(form_.oListView, listView_, [this] { RefreshListView(); });
}

void MainWindow::BuildImgBars() {
    const int32_t hWnd = form_.oImg.hWnd();
    for (int32_t nBar : {SB_HORZ, SB_VERT}) {
        auto* bar = new ScrollBarView(hWnd, nBar, img_);
        bar->setObjectName(nBar == SB_HORZ ? QStringLiteral("oImg_HScroll") : QStringLiteral("oImg_VScroll"));
        imgBars_[nBar] = bar;
    }
    imgCorner_ = new QWidget(img_);
    imgCorner_->setAutoFillBackground(true);
    imgCorner_->setBackgroundRole(QPalette::Button);
    // The platform tells when anything the bars show has changed.
    SetScrollBarObserver([this, hWnd](int32_t changed) {
        if (changed == hWnd) RefreshImgBars();
    });
    disconnect_.push_back([] { SetScrollBarObserver({}); });
}

void MainWindow::PlaceImgBars() {
    // The bars lie inside the border along the right and bottom edges; where
    // both show, the corner between them stays the pane's.
    const QRect inside = img_->contentsRect();
    ScrollBarView* h = imgBars_[0];
    ScrollBarView* v = imgBars_[1];
    const int hExtent = h->State().shown ? h->Extent() : 0;
    const int vExtent = v->State().shown ? v->Extent() : 0;
    h->setGeometry(inside.left(), inside.bottom() + 1 - hExtent, std::max(0, inside.width() - vExtent), hExtent);
    v->setGeometry(inside.right() + 1 - vExtent, inside.top(), vExtent, std::max(0, inside.height() - hExtent));
    imgCorner_->setGeometry(inside.right() + 1 - vExtent, inside.bottom() + 1 - hExtent, vExtent, hExtent);
    imgCorner_->setVisible(hExtent > 0 && vExtent > 0);
}

void MainWindow::RefreshImgBars() {
    if (unloaded_) return;
    for (ScrollBarView* bar : imgBars_) bar->Refresh();
    PlaceImgBars();
}

// ---- Models to widgets -------------------------------------------------------------

void MainWindow::RefreshDir() {
    const DirListBox& dir = form_.oDir;
    std::vector<std::string> list;
    list.reserve(static_cast<size_t>(dir.ListCount()));
    for (int32_t i = 0; i < dir.ListCount(); ++i) list.push_back(dir.List(i));
    syncing_ = true;
    if (list != dirShown_) {
        dir_->clear();
        // Each entry hangs under the last one a level higher, so that the
        // tree indents the folders by their depth.
        std::vector<QTreeWidgetItem*> lastAtDepth;
        for (int32_t i = 0; i < dir.ListCount(); ++i) {
            const std::string& path = list[static_cast<size_t>(i)];
            const auto depth = static_cast<size_t>(std::max(0, dir.Depth(i)));
            QTreeWidgetItem* parent = depth > 0 && depth - 1 < lastAtDepth.size() ? lastAtDepth[depth - 1] : nullptr;
            auto* item = parent != nullptr ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(dir_);
            const size_t cut = path.rfind('/');
            const std::string name = path == "/" || cut == std::string::npos ? path : path.substr(cut + 1);
            item->setText(0, ShownPath(name));
            item->setToolTip(0, ShownPath(path));
            item->setIcon(0, Icons::Folder(i <= dir.CurrentIndex()));
            item->setData(0, Qt::UserRole, i);
            lastAtDepth.resize(depth + 1);
            lastAtDepth[depth] = item;
        }
        dir_->expandAll();
        dirShown_ = std::move(list);
    }
    QTreeWidgetItemIterator it(dir_);
    for (; *it != nullptr; ++it) {
        if ((*it)->data(0, Qt::UserRole).toInt() == dir.ListIndex) {
            dir_->setCurrentItem(*it);
            dir_->scrollToItem(*it);
            break;
        }
    }
    syncing_ = false;
}

void MainWindow::RefreshDrive() {
    std::vector<std::string> list = form_.oDrive.List();
    const std::string& drive = form_.oDrive.Drive();
    if (!drive.empty() && std::find(list.begin(), list.end(), drive) == list.end()) list.push_back(drive);
    syncing_ = true;
    QSignalBlocker block(drive_);
    if (list != drivesShown_) {
        drive_->clear();
        for (const auto& d : list) drive_->addItem(ShownPath(d));
        drivesShown_ = std::move(list);
    }
    const auto found = std::find(drivesShown_.begin(), drivesShown_.end(), drive);
    drive_->setCurrentIndex(found == drivesShown_.end() ? -1 : static_cast<int>(found - drivesShown_.begin()));
    syncing_ = false;
}

void MainWindow::RefreshFile() {
    syncing_ = true;
    fileModel_->Reload();
    const int row = form_.oFile.ListIndex();
    QItemSelectionModel* selection = file_->selectionModel();
    if (row >= 0 && row < fileModel_->rowCount()) {
        const QModelIndex index = fileModel_->index(row);
        if (selection->currentIndex() != index || !selection->isSelected(index)) {
            selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
            file_->scrollTo(index);
        }
    } else if (selection->hasSelection()) {
        selection->clearSelection();
    }
    syncing_ = false;
}

void MainWindow::RefreshReport() {
    const std::string& text = form_.tReport.Text();
    if (!reportEverShown_ || text != reportShown_) {
        reportEverShown_ = true;
        reportShown_ = text;
        report_->setPlainText(Shown(text));
    }
    report_->setReadOnly(form_.tReport.Locked);
    if (form_.tReport.Locked)
        report_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void MainWindow::RefreshVScroll() {
    const ScrollBar& bar = form_.oVScroll;
    syncing_ = true;
    QSignalBlocker block(vScroll_);
    vScroll_->setRange(std::min(bar.Min(), bar.Max()), std::max(bar.Min(), bar.Max()));
    vScroll_->setInvertedAppearance(bar.Min() > bar.Max());
    vScroll_->setPageStep(std::max<int>(1, bar.LargeChange));
    vScroll_->setSingleStep(std::max<int>(1, bar.SmallChange));
    vScroll_->setValue(bar.Value());
    syncing_ = false;
}

void MainWindow::RefreshListView() {
    // The list's own changes of the selection, made for the user, are already
    // on screen.
    if (mirroring_) return;
    const bool reset = listModel_->Reload();
    listModel_->HeadsChanged();
    if (reset || form_.oListView.Visible()) ScheduleListMirror();
}

void MainWindow::ScheduleListMirror() {
    // A sort sets the key, the order and the icons one after the other; the
    // selection is shown once they are all done, so a long list is sorted once.
    if (listMirrorPending_) return;
    listMirrorPending_ = true;
    QTimer::singleShot(0, this, [this] {
        listMirrorPending_ = false;
        if (!unloaded_) MirrorListSelection();
    });
}

void MainWindow::MirrorListSelection() {
    ListView& list = form_.oListView;
    const int rows = std::min(listModel_->rowCount(), static_cast<int>(list.Count()));
    const int lastColumn = std::max(0, listModel_->columnCount() - 1);
    const ListItem* focus = list.SelectedItem();
    QItemSelection selection;
    int start = -1;
    int focusRow = -1;
    for (int r = 0; r <= rows; ++r) {
        const ListItem* item = r < rows ? &list.Item(r + 1) : nullptr;
        const bool selected = item != nullptr && item->Selected;
        if (item != nullptr && item == focus) focusRow = r;
        if (selected && start < 0) start = r;
        if (!selected && start >= 0) {
            selection.select(listModel_->index(start, 0), listModel_->index(r - 1, lastColumn));
            start = -1;
        }
    }
    syncing_ = true;
    QItemSelectionModel* model = listView_->selectionModel();
    model->select(selection, QItemSelectionModel::ClearAndSelect);
    if (focusRow >= 0) model->setCurrentIndex(listModel_->index(focusRow, 0), QItemSelectionModel::NoUpdate);
    syncing_ = false;
}

void MainWindow::ListSelectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    if (syncing_ || unloaded_) return;
    ListView& list = form_.oListView;
    mirroring_ = true;
    PassOver([&] {
        for (const QItemSelectionRange& range : deselected)
            for (int r = range.top(); r <= range.bottom(); ++r) list.SetSelected(r + 1, false);
        for (const QItemSelectionRange& range : selected)
            for (int r = range.top(); r <= range.bottom(); ++r) list.SetSelected(r + 1, true);
        const QModelIndex current = listView_->selectionModel()->currentIndex();
        if (current.isValid()) list.SetFocusItem(current.row() + 1);
    });
    mirroring_ = false;
}

void MainWindow::SetMousePointer(int32_t pointer) {
    constexpr int32_t kHourglass = 11;
    if (pointer == kHourglass && !waitCursor_) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        waitCursor_ = true;
    } else if (pointer != kHourglass && waitCursor_) {
        QApplication::restoreOverrideCursor();
        waitCursor_ = false;
    }
}

// ---- The window's size -----------------------------------------------------------

void MainWindow::ClientResized() {
    if (unloaded_) return;
    const int32_t width = client_->width() * kTwipsPerPixel;
    const int32_t height = client_->height() * kTwipsPerPixel;
    // The docked bars follow the client area before the form hears of its
    // new size, as they do in the form runtime.
    PassOver([&] { form_.oToolbar.Move(0, 0, width, form_.oToolbar.Bounds().Height); });
    PassOver([&] {
        const int32_t barHeight = form_.oStatusBar.Bounds().Height;
        form_.oStatusBar.Move(0, height - barHeight, width, barHeight);
    });
    const Rect& bounds = form_.Bounds();
    const int32_t outerWidth = width + kFrameTwips;
    const int32_t outerHeight = height + kFrameTwips + kCaptionTwips;
    const bool resized = bounds.Width != outerWidth || bounds.Height != outerHeight;
    // A new size raises Resize through the model. The first showing raises it
    // in any case, which lays the panes out.
    PassOver([&] { form_.Move(bounds.Left, bounds.Top, outerWidth, outerHeight); });
    if (!resized && !laidOut_) PassOver([&] { form_.Resize.Raise(); });
    laidOut_ = true;
}

void MainWindow::ScheduleFollowForm() {
    if (unloaded_ || !laidOut_ || followPending_) return;
    if (ClientSizeOf(form_.Bounds().Width, form_.Bounds().Height) == client_->size()) return;
    // The form was sized by its own code, inside the resize that the window
    // is handling now; the window follows once that is over.
    followPending_ = true;
    QTimer::singleShot(0, this, [this] {
        followPending_ = false;
        FollowForm();
    });
}

void MainWindow::FollowForm() {
    if (unloaded_) return;
    const QSize target = ClientSizeOf(form_.Bounds().Width, form_.Bounds().Height);
    if (target == client_->size()) return;
    resize(size() + (target - client_->size()));
}

// ---- The user's input ----------------------------------------------------------------

void MainWindow::closeEvent(QCloseEvent* event) {
    if (unloaded_) {
        event->accept();
        return;
    }
    int16_t cancel = 0;
    PassOver([&] { form_.Form_Unload(cancel); });
    if (cancel != 0) {
        event->ignore();
        return;
    }
    event->accept();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (unloaded_) return QMainWindow::eventFilter(watched, event);
    switch (event->type()) {
        case QEvent::KeyPress: {
            auto* key = static_cast<QKeyEvent*>(event);
            // In the lists Enter has done its work in the handler.
            if (watched == file_) return RaiseKeyPress(form_.oFile.KeyPress, *key, true);
            if (watched == dir_) return RaiseKeyPress(form_.oDir.KeyPress, *key, true);
            if (watched == report_) return KeyInReport(key);
            if (watched == listView_) return RaiseKeyPress(form_.oListView.KeyPress, *key, true);
            break;
        }
        case QEvent::MouseButtonPress:
            if (file_ != nullptr && watched == file_->viewport()) clickRaisedByPress_ = false;
            break;
        case QEvent::Wheel:
            if (watched == imgClient_ || watched == picture_) {
                // The wheel over the picture pane scrolls its bars.
                ScrollBarWheel(form_.oImg.hWnd(), static_cast<QWheelEvent*>(event)->angleDelta().y());
                return true;
            }
            break;
        case QEvent::MouseButtonDblClick:
            for (size_t i = 0; i < panels_.size(); ++i) {
                if (watched == panels_[i]) {
                    PassOver([&] { form_.oStatusBar.PanelDblClick.Raise(static_cast<int32_t>(i) + 1); });
                    return true;
                }
            }
            break;
        default: break;
    }
    return QMainWindow::eventFilter(watched, event);
}

bool MainWindow::KeyInReport(QKeyEvent* key) {
    int16_t keyCode = KeyCodes::VirtualKey(*key);
    if (keyCode != 0) {
        PassOver([&] { form_.tReport.KeyDown.Raise(keyCode, KeyCodes::ShiftState(key->modifiers())); });
        if (keyCode == 0) return true;
    }
    // Unless a handler swallows it, the text box goes on to handle the key
    // itself, Enter included.
    return RaiseKeyPress(form_.tReport.KeyPress, *key, false);
}
