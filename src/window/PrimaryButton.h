#pragma once

#include <QPushButton>

namespace vorn {

// The button of the one action that everything else leads to: filled with the desktop's accent
// colour. It is no default button: the Enter key elsewhere never presses it.
class PrimaryButton : public QPushButton
{
    Q_OBJECT

public:
    explicit PrimaryButton(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace vorn
