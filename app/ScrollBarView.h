#pragma once
// One scroll bar of a window whose bars the platform keeps (oImg's two bars):
// drawn from the platform's state of the bar, flat or in the regular look, and
// turning what the user does on it into the window's WM_HSCROLL or WM_VSCROLL
// messages. The bar keeps no value of its own: what the messages do to the
// platform's record is what it shows next.
#include <QBasicTimer>
#include <QStyle>
#include <QWidget>
#include <cstdint>

#include "platform/ScrollBars.h"

class QStyleOptionSlider;

class ScrollBarView : public QWidget {
public:
    // nBar is SB_HORZ or SB_VERT of the window hWnd.
    ScrollBarView(int32_t hWnd, int32_t nBar, QWidget* parent);

    // Reads the bar anew: shows or hides the view and repaints it.
    void Refresh();
    const ScrollBarState& State() const { return state_; }
    // The thickness of a bar, in pixels.
    int Extent() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void Options(QStyleOptionSlider& option) const;
    int32_t PositionAt(const QPoint& point) const;
    void Send(int32_t code);
    // One step of a held arrow or page area.
    void Step();

    int32_t hWnd_;
    int32_t nBar_;
    ScrollBarState state_;

    // The part that the held mouse button is on, and where the thumb was
    // taken.
    QStyle::SubControl held_ = QStyle::SC_None;
    QPoint pressPoint_;
    int grabOffset_ = 0;
    QBasicTimer repeat_;
    bool repeating_ = false;
};
