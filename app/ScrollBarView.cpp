#include "ScrollBarView.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionSlider>
#include <QWheelEvent>
#include <algorithm>

#include "platform/Runtime.h"
#include "platform/Windows.h"

namespace {

// A held arrow or page area repeats after the delay, then at the rate.
constexpr int kRepeatDelayMs = 400;
constexpr int kRepeatRateMs = 50;

}  // namespace

ScrollBarView::ScrollBarView(int32_t hWnd, int32_t nBar, QWidget* parent)
    : QWidget(parent), hWnd_(hWnd), nBar_(nBar) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    Refresh();
}

void ScrollBarView::Refresh() {
    if (!GetScrollBarState(hWnd_, nBar_, state_)) state_ = ScrollBarState{};
    setVisible(state_.shown);
    update();
}

int ScrollBarView::Extent() const { return style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this); }

void ScrollBarView::Options(QStyleOptionSlider& option) const {
    const SCROLLINFO& info = state_.info;
    option.initFrom(this);
    option.orientation = nBar_ == SB_HORZ ? Qt::Horizontal : Qt::Vertical;
    if (nBar_ == SB_HORZ) option.state |= QStyle::State_Horizontal;
    option.minimum = info.nMin;
    option.maximum = static_cast<int32_t>(std::clamp<int64_t>(ScrollPosLimit(info), info.nMin, INT32_MAX));
    if (!state_.enabled || option.maximum <= option.minimum) option.state &= ~QStyle::State_Enabled;
    option.pageStep = static_cast<int>(std::min<uint32_t>(info.nPage, INT32_MAX));
    option.singleStep = 1;
    // While the thumb is dragged it stands where the mouse took it.
    const int32_t pos = state_.tracking ? info.nTrackPos : info.nPos;
    option.sliderPosition = std::clamp(pos, option.minimum, option.maximum);
    option.sliderValue = option.sliderPosition;
    option.subControls = QStyle::SC_All;
    if (held_ != QStyle::SC_None) {
        option.activeSubControls = held_;
        option.state |= QStyle::State_Sunken;
    }
}

int32_t ScrollBarView::PositionAt(const QPoint& point) const {
    QStyleOptionSlider option;
    Options(option);
    const QRect groove = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarGroove, this);
    const QRect thumb = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    const bool across = nBar_ == SB_HORZ;
    const int span = across ? groove.width() - thumb.width() : groove.height() - thumb.height();
    const int at = (across ? point.x() - groove.x() : point.y() - groove.y()) - grabOffset_;
    return QStyle::sliderValueFromPosition(option.minimum, option.maximum, at, std::max(0, span));
}

void ScrollBarView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QStyleOptionSlider option;
    Options(option);
    if (!state_.flat || state_.style == 0) {
        // Style 0 is the regular look, for flat bars too.
        style()->drawComplexControl(QStyle::CC_ScrollBar, &option, &painter, this);
        return;
    }
    // The flat look: the same parts as plain areas, without bevels.
    const QPalette& colours = palette();
    painter.fillRect(rect(), colours.color(QPalette::Light));
    auto part = [&](QStyle::SubControl control) {
        return style()->subControlRect(QStyle::CC_ScrollBar, &option, control, this);
    };
    const bool across = nBar_ == SB_HORZ;
    const struct {
        QStyle::SubControl control;
        QStyle::PrimitiveElement arrow;
    } arrows[] = {{QStyle::SC_ScrollBarSubLine, across ? QStyle::PE_IndicatorArrowLeft : QStyle::PE_IndicatorArrowUp},
                  {QStyle::SC_ScrollBarAddLine, across ? QStyle::PE_IndicatorArrowRight : QStyle::PE_IndicatorArrowDown}};
    for (const auto& a : arrows) {
        QStyleOption glyph = option;
        glyph.rect = part(a.control);
        painter.fillRect(glyph.rect, colours.color(held_ == a.control ? QPalette::Mid : QPalette::Button));
        style()->drawPrimitive(a.arrow, &glyph, &painter, this);
    }
    if (option.state & QStyle::State_Enabled) {
        const QRect thumb = part(QStyle::SC_ScrollBarSlider);
        painter.fillRect(thumb, colours.color(QPalette::Button));
        painter.setPen(colours.color(QPalette::Mid));
        painter.drawRect(thumb.adjusted(0, 0, -1, -1));
    }
}

void ScrollBarView::Send(int32_t code) {
    PassOver([&] { SendMessageA(hWnd_, nBar_ == SB_HORZ ? WM_HSCROLL : WM_VSCROLL, code, 0); });
}

void ScrollBarView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || held_ != QStyle::SC_None) return;
    QStyleOptionSlider option;
    Options(option);
    if (!(option.state & QStyle::State_Enabled)) return;
    const QPoint point = event->position().toPoint();
    const auto control = style()->hitTestComplexControl(QStyle::CC_ScrollBar, &option, point, this);
    switch (control) {
        case QStyle::SC_ScrollBarSlider: {
            const QRect thumb = style()->subControlRect(QStyle::CC_ScrollBar, &option, control, this);
            grabOffset_ = nBar_ == SB_HORZ ? point.x() - thumb.x() : point.y() - thumb.y();
            held_ = control;
            // Taking the thumb starts the tracking where it stands.
            ScrollBarTrack(hWnd_, nBar_, option.sliderPosition);
            break;
        }
        case QStyle::SC_ScrollBarSubLine:
        case QStyle::SC_ScrollBarAddLine:
        case QStyle::SC_ScrollBarSubPage:
        case QStyle::SC_ScrollBarAddPage:
            held_ = control;
            pressPoint_ = point;
            repeating_ = false;
            repeat_.start(kRepeatDelayMs, this);
            Step();
            break;
        default: return;
    }
    update();
}

void ScrollBarView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    if (held_ != QStyle::SC_ScrollBarSlider) {
        // A held arrow or page area goes on only while the mouse is over it.
        pressPoint_ = point;
        return;
    }
    const int32_t pos = PositionAt(point);
    if (!state_.tracking || pos != state_.info.nTrackPos) ScrollBarTrack(hWnd_, nBar_, pos);
}

void ScrollBarView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || held_ == QStyle::SC_None) return;
    const QStyle::SubControl held = held_;
    held_ = QStyle::SC_None;
    repeat_.stop();
    // A thumb let go gives its position, then the end.
    if (held != QStyle::SC_ScrollBarSlider || !ScrollBarRelease(hWnd_, nBar_)) Send(SB_ENDSCROLL);
    Refresh();
}

void ScrollBarView::wheelEvent(QWheelEvent* event) {
    ScrollBarWheel(hWnd_, event->angleDelta().y());
    event->accept();
}

void ScrollBarView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != repeat_.timerId()) return QWidget::timerEvent(event);
    if (!repeating_) {
        repeating_ = true;
        repeat_.start(kRepeatRateMs, this);
    }
    Step();
}

void ScrollBarView::Step() {
    QStyleOptionSlider option;
    Options(option);
    // The page area under the mouse ends once the thumb has reached it.
    if (style()->hitTestComplexControl(QStyle::CC_ScrollBar, &option, pressPoint_, this) != held_) return;
    switch (held_) {
        case QStyle::SC_ScrollBarSubLine: Send(SB_LINEUP); break;
        case QStyle::SC_ScrollBarAddLine: Send(SB_LINEDOWN); break;
        case QStyle::SC_ScrollBarSubPage: Send(SB_PAGEUP); break;
        case QStyle::SC_ScrollBarAddPage: Send(SB_PAGEDOWN); break;
        default: break;
    }
}
