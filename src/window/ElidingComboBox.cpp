#include "window/ElidingComboBox.h"

#include <QStyle>
#include <QStyleOptionComboBox>
#include <QWheelEvent>

namespace vorn {

void ElidingComboBox::initStyleOption(QStyleOptionComboBox *option) const
{
    QComboBox::initStyleOption(option);
    constexpr int kPadding = 4;
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, option, QStyle::SC_ComboBoxEditField, this);
    option->currentText =
        fontMetrics().elidedText(option->currentText, Qt::ElideMiddle, field.width() - kPadding);
}

void ElidingComboBox::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

} // namespace vorn
