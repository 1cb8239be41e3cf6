#pragma once

#include <QPushButton>

namespace vorn {

// The window's main button, in the accent colour. Disabled it looks like any other.
class AccentButton : public QPushButton
{
    Q_OBJECT

public:
    explicit AccentButton(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace vorn
