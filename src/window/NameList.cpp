#include "window/NameList.h"

#include <QStyle>
#include <QStyleOptionComboBox>
#include <QWheelEvent>

namespace vorn {

void NameList::initStyleOption(QStyleOptionComboBox *option) const
{
    QComboBox::initStyleOption(option);
    constexpr int padding = 4;
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, option, QStyle::SC_ComboBoxEditField, this);
    option->currentText =
        fontMetrics().elidedText(option->currentText, Qt::ElideMiddle, field.width() - padding);
}

void NameList::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

} // namespace vorn
