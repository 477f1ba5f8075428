#pragma once
// Helpers of the front end's tests: the user's double click, a modal dialog's
// user, and waiting for the event loop.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>
#include <functional>

namespace apptest {

// A double click as the platform delivers it: press, release, double click,
// release. QTest's own double click sends the third event alone.
inline void DoubleClick(QWidget* widget, QPoint pos) {
    QTest::mousePress(widget, Qt::LeftButton, {}, pos);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, pos);
    QTest::mouseDClick(widget, Qt::LeftButton, {}, pos);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, pos);
}

// Lets the event loop run until a condition holds; it gives up after a
// generous while, so that a broken condition fails instead of hanging.
inline bool EventsUntil(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > 10000) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

// Plays the user's part once the modal dialog of kind Dialog is up.
template <typename Dialog, typename Act>
void WhenShown(Act act) {
    QTimer::singleShot(0, [act] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(dialog);
    });
}

// The child widget of that name; a missing one fails the test.
template <typename T>
T* Child(QWidget* parent, const char* name) {
    T* widget = parent->findChild<T*>(QLatin1String(name));
    if (widget == nullptr) ADD_FAILURE() << "no widget " << name;
    return widget;
}

}  // namespace apptest
