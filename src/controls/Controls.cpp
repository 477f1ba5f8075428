#include "controls/Controls.h"

#include <algorithm>

#include "platform/Runtime.h"

namespace {
constexpr int32_t kInvalidPropertyValue = 380;
[[noreturn]] void InvalidProperty() { RaiseError(kInvalidPropertyValue, {}, "Invalid property value"); }
}  // namespace

void Control::SetVisible(bool v) {
    if (visible_ == v) return;
    visible_ = v;
    Notify();
}

void Control::SetEnabled(bool e) {
    if (enabled_ == e) return;
    enabled_ = e;
    Notify();
}

void Control::Move(int32_t left, int32_t top, int32_t width, int32_t height) {
    if (width < 0 || height < 0) InvalidProperty();
    bool resized = width != bounds_.Width || height != bounds_.Height;
    bounds_ = Rect{left, top, width, height};
    Notify();
    if (resized) Resize.Raise();
}

void Label::SetCaption(const std::string& c) {
    caption_ = c;
    Notify();
}

void TextBox::SetText(const std::string& t) {
    if (t.size() > capacity_) RaiseError(vbErrOutOfMemory);
    if (t == text_) return;
    text_ = t;
    Notify();
    Change.Raise();
}

void ScrollBar::SetValue(int32_t v) {
    int32_t lo = std::min(min_, max_), hi = std::max(min_, max_);
    if (v < lo || v > hi) InvalidProperty();
    if (v == value_) return;
    value_ = static_cast<int16_t>(v);
    Notify();
    Change.Raise();
}

void ScrollBar::SetMin(int32_t v) {
    min_ = VbToInteger(v);
    Clamp();
}

void ScrollBar::SetMax(int32_t v) {
    max_ = VbToInteger(v);
    Clamp();
}

void ScrollBar::Clamp() {
    int16_t lo = std::min(min_, max_), hi = std::max(min_, max_);
    int16_t v = std::clamp(value_, lo, hi);
    Notify();
    if (v != value_) {
        value_ = v;
        Change.Raise();
    }
}

int32_t PictureBox::InnerPixels(int32_t size) const {
    // A window has whole pixels: the size in the parent's units is rounded.
    const int64_t unit = std::max(1, ParentUnitsPerPixel);
    const int64_t pixels = (static_cast<int64_t>(size) + unit / 2) / unit;
    return static_cast<int32_t>(std::max<int64_t>(0, pixels - 2 * static_cast<int64_t>(BorderPixels)));
}

const Panel& StatusBar::Panels(int32_t index) const {
    if (index < 1 || index > PanelCount()) RaiseError(35600, {}, "Index out of bounds");
    return panels_[index - 1];
}

void StatusBar::SetPanelText(int32_t index, const std::string& text) {
    if (index < 1 || index > PanelCount()) RaiseError(35600, {}, "Index out of bounds");
    panels_[index - 1].Text = text;
    Notify();
}

void StatusBar::AddPanel(int32_t width) {
    panels_.push_back(Panel{{}, width});
    Notify();
}

ToolButton& Toolbar::Buttons(int32_t index) {
    if (index < 1 || index > ButtonCount()) RaiseError(35600, {}, "Index out of bounds");
    return buttons_[index - 1];
}

const ToolButton& Toolbar::Buttons(int32_t index) const {
    if (index < 1 || index > ButtonCount()) RaiseError(35600, {}, "Index out of bounds");
    return buttons_[index - 1];
}

void Toolbar::AddButton(ToolButton b) {
    b.Index = ButtonCount() + 1;
    buttons_.push_back(std::move(b));
    Notify();
}

void Toolbar::SetButtonEnabled(int32_t index, bool enabled) {
    Buttons(index).Enabled = enabled;
    Notify();
}

void ProgressBar::SetValue(int32_t v) {
    if (v < Min || v > Max) InvalidProperty();
    value_ = v;
    Notify();
}

void OptionButton::SetValue(bool v) {
    if (value_ == v) return;
    value_ = v;
    Notify();
    if (v) Click.Raise();
}

