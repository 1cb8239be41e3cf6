#pragma once

#include <QLabel>

namespace vorn {

// A step's number in a disc.
class StepBadge : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace vorn
