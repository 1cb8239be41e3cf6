#pragma once

#include <QWidget>

namespace vorn {

// A quiet rounded surface that holds what belongs to one step.
class Card : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace vorn
