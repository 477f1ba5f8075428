#pragma once
// The view of frmMain: the Qt widgets of the main window's controls, each
// placed where its model says, showing what its model holds, and turning what
// the user does into the model's events. Behaviour stays in the models.
#include <QMainWindow>
#include <QRect>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "controls/Controls.h"

class frmMain;
class FileListModel;
class ListViewModel;
class QAbstractItemView;
class QAction;
class QComboBox;
class QItemSelection;
class QLabel;
class QListView;
class QPlainTextEdit;
class QScrollBar;
class QStatusBar;
class QToolBar;
class QTreeView;
class QTreeWidget;
class ScrollBarView;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(frmMain& form, QWidget* parent = nullptr);
    ~MainWindow() override;
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    frmMain& Form() { return form_; }
    // The area below the menu bar, which the form's controls are placed in.
    QWidget* ClientArea() const { return client_; }
    // The widget that shows a control.
    QWidget* ViewOf(const Control& control) const;

    // Positions of frmMain are kept in twips, shown at 15 twips per pixel.
    static constexpr int kTwipsPerPixel = 15;
    // The window's frame and its caption with the menu bar, in twips: the
    // form's outer size is its client size and these.
    static constexpr int32_t kFrameTwips = 120;
    static constexpr int32_t kCaptionTwips = 615;
    static int Pixels(int32_t twips);
    static QRect PixelRect(const Rect& twips);
    // Widths of column heads and status panels are in hundredths of a millimetre.
    static int PixelsOfHimetric(int32_t himetric);

    // The client size in pixels that shows the form's outer size in twips.
    static QSize ClientSizeOf(int32_t outerWidth, int32_t outerHeight);

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildMenus();
    void BuildToolbar(QToolBar* bar, Toolbar& model, bool folderImages);
    void BuildStatusBar();
    void BuildDocuments();
    void BuildListView();
    // oImg's two bars, kept by the platform for oImg's window.
    void BuildImgBars();
    void PlaceImgBars();
    void RefreshImgBars();

    // Shows a model's place, visibility and enabled state on its widget, and
    // calls `refresh` for the rest each time the model changes.
    void Bind(Control& model, QWidget* widget, std::function<void()> refresh = {});
    void Place(const Control& model, QWidget* widget);
    template <typename... Args, typename F>
    void Listen(Event<Args...>& event, F&& handler);

    void ClientResized();
    void FollowForm();
    void ScheduleFollowForm();

    void RefreshToolbar(QToolBar* bar, const Toolbar& model);
    void RefreshStatusBar();
    void RefreshDir();
    void RefreshDrive();
    void RefreshFile();
    void RefreshReport();
    void RefreshVScroll();
    void RefreshListView();
    void ScheduleListMirror();
    void MirrorListSelection();
    void ListSelectionChanged(const QItemSelection& selected, const QItemSelection& deselected);
    void SetMousePointer(int32_t pointer);

    bool KeyInReport(QKeyEvent* key);

    frmMain& form_;
    QWidget* client_ = nullptr;
    std::map<const Control*, QWidget*> views_;
    // Undo the connections to the models' events when the view goes.
    std::vector<std::function<void()>> disconnect_;

    QToolBar* toolbar_ = nullptr;
    QToolBar* folderBar_ = nullptr;
    QStatusBar* statusBar_ = nullptr;
    std::vector<QLabel*> panels_;
    QTreeWidget* dir_ = nullptr;
    QComboBox* drive_ = nullptr;
    QListView* file_ = nullptr;
    FileListModel* fileModel_ = nullptr;
    QPlainTextEdit* report_ = nullptr;
    QScrollBar* vScroll_ = nullptr;
    QTreeView* listView_ = nullptr;
    ListViewModel* listModel_ = nullptr;
    QWidget* img_ = nullptr;
    QWidget* picture_ = nullptr;
    QWidget* imgClient_ = nullptr;
    // Horizontal (bar 0), then vertical (bar 1).
    ScrollBarView* imgBars_[2] = {nullptr, nullptr};
    QWidget* imgCorner_ = nullptr;
    std::vector<QAction*> fileActions_;
    std::vector<QAction*> toolsActions_;

    // What the folder and drive lists and the report pane show now, so that a
    // model's change of something else doesn't rebuild them.
    std::vector<std::string> dirShown_;
    std::vector<std::string> drivesShown_;
    std::string reportShown_;
    bool reportEverShown_ = false;

    // Set while the view writes into a widget, so that the widget's signals
    // are not taken for the user's doing.
    bool syncing_ = false;
    // Set while the view writes the user's selection into the list model.
    bool mirroring_ = false;
    // Set once a press in the file list has raised Click through a new
    // selection, so that the click that ends the press doesn't raise it again.
    bool clickRaisedByPress_ = false;
    bool laidOut_ = false;
    bool followPending_ = false;
    bool listMirrorPending_ = false;
    bool waitCursor_ = false;
    bool unloaded_ = false;
};
