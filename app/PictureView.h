#pragma once
// The view of a picture box with a persistent image: it draws the model's
// image at one screen pixel per picture pixel from its top left. The box's
// container clips it, as a child widget is clipped by its parent.
#include <QFrame>

class PictureBox;

class PictureView : public QFrame {
public:
    PictureView(const PictureBox& model, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const PictureBox& model_;
};
