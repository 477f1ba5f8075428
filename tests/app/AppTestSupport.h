#pragma once
// Helpers of the front end's tests: the user's double click, and waiting for
// the event loop.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>
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

}  // namespace apptest
