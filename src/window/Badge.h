#pragma once

#include <QLabel>

namespace vorn {

// A step's number on a disc.
class Badge : public QLabel
{
    Q_OBJECT

public:
    explicit Badge(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace vorn
