#pragma once
// Models of the form runtime's simple controls. Behaviour lives here once; a
// view only shows a model and turns what the user does into its events.
#include <cstdint>
#include <string>
#include <vector>

#include "controls/Event.h"
#include "platform/Gdi.h"
#include "platform/Picture.h"
#include "platform/Windows.h"

// Position and size, in the parent's scale units (twips on frmMain).
struct Rect {
    int32_t Left = 0;
    int32_t Top = 0;
    int32_t Width = 0;
    int32_t Height = 0;
};

// What every control has: a name, a place, visibility and an enabled state.
class Control {
public:
    explicit Control(std::string name = {}) : Name(std::move(name)) {}
    virtual ~Control() = default;

    std::string Name;

    bool Visible() const { return visible_; }
    void SetVisible(bool v);
    bool Enabled() const { return enabled_; }
    void SetEnabled(bool e);

    const Rect& Bounds() const { return bounds_; }
    // Move with a size below zero raises error 380, "Invalid property value",
    // and leaves the control as it was.
    void Move(int32_t left, int32_t top, int32_t width, int32_t height);
    void SetLeft(int32_t v) { Move(v, bounds_.Top, bounds_.Width, bounds_.Height); }
    void SetTop(int32_t v) { Move(bounds_.Left, v, bounds_.Width, bounds_.Height); }
    void SetWidth(int32_t v) { Move(bounds_.Left, bounds_.Top, v, bounds_.Height); }
    void SetHeight(int32_t v) { Move(bounds_.Left, bounds_.Top, bounds_.Width, v); }

    // Raised after a property that a view shows has changed.
    Event<> Changed;
    // Raised when the size changed.
    Event<> Resize;

protected:
    void Notify() { Changed.Raise(); }

private:
    bool visible_ = true;
    bool enabled_ = true;
    Rect bounds_;
};

// A caption: labels, frames, buttons, menu entries.
class Label : public Control {
public:
    using Control::Control;
    const std::string& Caption() const { return caption_; }
    void SetCaption(const std::string& c);

private:
    std::string caption_;
};

using Frame = Label;

// A text box. Its capacity stands for the limit of the platform's text
// control: setting a longer text raises error 7, "Out of memory", and leaves
// the old text.
class TextBox : public Control {
public:
    explicit TextBox(std::string name = {}, size_t capacity = 4u * 1024u * 1024u)
        : Control(std::move(name)), capacity_(capacity) {}

    const std::string& Text() const { return text_; }
    void SetText(const std::string& t);
    size_t Capacity() const { return capacity_; }
    void SetCapacity(size_t c) { capacity_ = c; }
    bool Locked = false;

    Event<> Change;
    // Key code, reference parameter; shift state.
    Event<int16_t&, int16_t> KeyDown;
    Event<int16_t&> KeyPress;
    Event<> LostFocus;

private:
    std::string text_;
    size_t capacity_;
};

// The runtime's scroll bar. Value, Min and Max are 16-bit signed; setting Value
// outside Min..Max raises error 380. A new Value raises Change.
class ScrollBar : public Control {
public:
    using Control::Control;
    int16_t Value() const { return value_; }
    void SetValue(int32_t v);
    int16_t Min() const { return min_; }
    void SetMin(int32_t v);
    int16_t Max() const { return max_; }
    void SetMax(int32_t v);
    int16_t LargeChange = 1;
    int16_t SmallChange = 1;

    Event<> Change;

private:
    void Clamp();
    int16_t value_ = 0;
    int16_t min_ = 0;
    int16_t max_ = 32767;
};

// A panel of the status bar.
struct Panel {
    std::string Text;
    int32_t Width = 0;  // hundredths of a millimetre
};

class StatusBar : public Control {
public:
    using Control::Control;
    // Panels(1) and Panels(2); index from 1.
    const Panel& Panels(int32_t index) const;
    void SetPanelText(int32_t index, const std::string& text);
    void AddPanel(int32_t width);
    int32_t PanelCount() const { return static_cast<int32_t>(panels_.size()); }

    // Index of the panel from 1.
    Event<int32_t> PanelDblClick;

private:
    std::vector<Panel> panels_;
};

// A button of a toolbar.
struct ToolButton {
    enum Style { Default = 0, Separator = 3, Placeholder = 4 };
    int32_t Index = 0;
    Style Kind = Default;
    std::string ToolTipText;
    int32_t Image = 0;
    int32_t Width = 0;
    bool Enabled = true;
    std::string Path;  // what the button stands for, shown as a tool tip
};

class Toolbar : public Control {
public:
    using Control::Control;
    ToolButton& Buttons(int32_t index);
    const ToolButton& Buttons(int32_t index) const;
    int32_t ButtonCount() const { return static_cast<int32_t>(buttons_.size()); }
    void AddButton(ToolButton b);
    void SetButtonEnabled(int32_t index, bool enabled);

    // The clicked button's Index.
    Event<int32_t> ButtonClick;

private:
    std::vector<ToolButton> buttons_;
};

// A menu entry. Entries of a control array share a name and differ by index.
class MenuItem : public Control {
public:
    MenuItem(std::string name, int16_t index, std::string caption, std::string shortcut = {})
        : Control(std::move(name)), Index(index), Shortcut(std::move(shortcut)), caption_(std::move(caption)) {}
    int16_t Index;
    std::string Shortcut;  // "Ctrl+U", or empty
    const std::string& Caption() const { return caption_; }
    bool IsSeparator() const { return caption_ == "-"; }
    Event<> Click;

private:
    std::string caption_;
};

// A progress bar.
class ProgressBar : public Control {
public:
    using Control::Control;
    int32_t Min = 0;
    int32_t Max = 100;
    int32_t Value() const { return value_; }
    void SetValue(int32_t v);

private:
    int32_t value_ = 0;
};

// An option button; setting one of a group to true is the group's business.
class OptionButton : public Control {
public:
    using Control::Control;
    std::string Caption;
    bool Value() const { return value_; }
    void SetValue(bool v);
    Event<> Click;

private:
    bool value_ = false;
};

// A combo box of which the logic uses the text and the drop-down button.
class ComboBox : public Control {
public:
    using Control::Control;
    const std::string& Text() const { return text_; }
    // Raises Change whenever the text is set, as typing does.
    void SetText(const std::string& t) {
        text_ = t;
        Notify();
        Change.Raise();
    }
    Event<> Change;
    Event<> DropDown;

private:
    std::string text_;
};

class CommandButton : public Control {
public:
    using Control::Control;
    std::string Caption;
    Event<> Click;
};

// A picture box with a persistent image: a memory device context holding a
// 32-bit top-down bitmap of the box's inner size in pixels, which the file
// classes paint into and a view shows. The image takes a new size when the box
// is moved, and when it is next drawn into, cleared, refreshed or read after
// its units or border changed; it keeps what it held at the top left and fills
// the rest with the background colour.
class PictureBox : public Control {
public:
    explicit PictureBox(std::string name = {});
    ~PictureBox() override;
    PictureBox(const PictureBox&) = delete;
    PictureBox& operator=(const PictureBox&) = delete;
    // The picture box is a window of its own, which messages reach.
    int32_t hWnd() const { return window_.hWnd(); }
    // The inside of the box in its own scale unit, the pixel: its size in
    // whole pixels less the border on both sides, never below 0.
    int32_t ScaleWidth() const { return InnerPixels(Bounds().Width); }
    int32_t ScaleHeight() const { return InnerPixels(Bounds().Height); }
    // The parent's units to a pixel: 15 where the parent measures in twips,
    // 1 where it measures in pixels.
    int32_t ParentUnitsPerPixel = 1;
    // The width of the border on each side, in pixels: 2 for the sunken 3-D
    // border, 0 for none.
    int32_t BorderPixels = 0;
    // The background colour: a system colour when the high bit is set; the
    // runtime's default is the button face. Setting it clears the image to
    // the new colour, as the runtime does.
    class BackColorProperty {
    public:
        explicit BackColorProperty(PictureBox& box) : box_(box) {}
        BackColorProperty(const BackColorProperty&) = delete;
        BackColorProperty& operator=(uint32_t colour) {
            value_ = colour;
            box_.Cls();
            return *this;
        }
        operator uint32_t() const { return value_; }

    private:
        PictureBox& box_;
        uint32_t value_ = 0x8000000F;
    };
    BackColorProperty BackColor{*this};
    // The device context on the image, for the whole life of the box.
    const HDC hDC;

    // Clears the image to the background colour and draws the Picture over it.
    void Cls();
    // Sets the pixel at (x, y), rounded to the nearest pixel, to a colour word;
    // a system colour (high bit set) is resolved, and the high byte of any
    // other is not looked at. A point outside the image is passed over.
    void PSet(float x, float y, uint32_t color);
    // The colour word of a pixel of the image; -1 outside it.
    int32_t Point(float x, float y) const;
    // Asks the view to repaint.
    void Refresh() {
        SyncImage();
        Notify();
    }

    // The persistent image as a picture object that refers to the box's
    // bitmap; empty while the box has no pixels.
    ::Picture Image() const;
    // The background picture: setting it clears the image and draws the
    // picture at the top left.
    const ::Picture& Picture() const { return picture_; }
    void SetPicture(::Picture picture);

    // The image for a view: rows from top to bottom, 4 bytes a pixel (blue,
    // green, red, unused), no padding; null while the box has no pixels.
    const uint8_t* ImageBits() const {
        SyncImage();
        return bits_;
    }
    int32_t ImageWidth() const {
        SyncImage();
        return imageWidth_;
    }
    int32_t ImageHeight() const {
        SyncImage();
        return imageHeight_;
    }

private:
    int32_t InnerPixels(int32_t size) const;
    // Gives the image the box's present inner size.
    void SyncImage() const;
    uint32_t ResolvedBackColor() const;
    void FillBack(int32_t left, int32_t top) const;

    // The image follows the box's size even when it is only read.
    mutable HBITMAP image_ = 0;
    HBITMAP stock_ = 0;
    mutable uint8_t* bits_ = nullptr;
    mutable int32_t imageWidth_ = 0;
    mutable int32_t imageHeight_ = 0;
    // What the image's size was last worked out from.
    struct SyncKey {
        int32_t width, height, unitsPerPixel, border;
        bool operator==(const SyncKey&) const = default;
    };
    mutable SyncKey synced_{0, 0, 1, 0};
    ::Picture picture_;
    PlatformWindow window_;
};

// The screen object: the program's mouse pointer (0 default, 11 hourglass)
// and the fixed conversion of twips to pixels.
class Screen {
public:
    int32_t MousePointer() const { return mousePointer_; }
    void SetMousePointer(int32_t p) {
        mousePointer_ = p;
        MousePointerChanged.Raise(p);
    }
    int32_t TwipsPerPixelX = 15;
    int32_t TwipsPerPixelY = 15;
    Event<int32_t> MousePointerChanged;

private:
    int32_t mousePointer_ = 0;
};

// A form: a window with a handle and a caption. Handles are small positive
// numbers, unique for the run; the front end maps them to its windows.
class Form : public Control {
public:
    explicit Form(std::string name = {}) : Control(std::move(name)) {}
    int32_t hWnd() const { return window_.hWnd(); }
    std::string Caption;

private:
    PlatformWindow window_;
};

// A form shown modally over its owner. Unload closes it: the view listens to
// Unloading and ends the modal loop.
class ModalForm : public Form {
public:
    using Form::Form;
    void Unload() {
        if (unloaded_) return;
        unloaded_ = true;
        Unloading.Raise();
    }
    bool IsUnloaded() const { return unloaded_; }
    Event<> Unloading;
    // Moves the keyboard focus to a control; the view fills it.
    std::function<void(Control&)> SetFocus;

private:
    bool unloaded_ = false;
};
