#pragma once

#include <QComboBox>

namespace vorn {

// A combo box that elides a text that is too long in the middle instead of cutting off its end. It
// ignores the mouse wheel: scrolling must not choose another firmware.
class ElidingComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit ElidingComboBox(QWidget *parent = nullptr);

    void showPopup() override;

protected:
    void initStyleOption(QStyleOptionComboBox *option) const override;
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace vorn
