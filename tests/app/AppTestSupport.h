#pragma once
// Helpers of the front end's tests: the user's double click, a modal dialog's
// user, and a child widget by name.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QTimer>

namespace apptest {

// A double click as the platform delivers it: press, release, double click,
// release. QTest's own double click sends the third event alone.
inline void DoubleClick(QWidget* widget, QPoint pos) {
    QTest::mousePress(widget, Qt::LeftButton, {}, pos);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, pos);
    QTest::mouseDClick(widget, Qt::LeftButton, {}, pos);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, pos);
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
