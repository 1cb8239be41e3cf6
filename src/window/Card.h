#pragma once

#include <QFrame>

namespace vorn {

// A rounded area, a little lighter than the window, that groups controls.
class Card : public QFrame
{
    Q_OBJECT

public:
    explicit Card(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace vorn
