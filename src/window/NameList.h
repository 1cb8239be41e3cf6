#pragma once

#include <QComboBox>

namespace vorn {

// A pop-up list of names that may be longer than its box: the middle of such a name gives way to
// an ellipsis where others would cut its end off. The mouse wheel scrolls past it: nobody should
// choose another firmware by scrolling.
class NameList : public QComboBox
{
    Q_OBJECT

public:
    using QComboBox::QComboBox;

protected:
    void initStyleOption(QStyleOptionComboBox *option) const override;
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace vorn
