#include "window/ElidingComboBox.h"

#include <QListView>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QWheelEvent>

namespace vorn {
namespace {

// Opening a menu measures each of its texts, which takes half a second for 100,000 files. Longer
// lists open as a scrolling list of the box's width.
constexpr int kMostInMenu = 1000;

} // namespace

ElidingComboBox::ElidingComboBox(QWidget *parent) : QComboBox(parent)
{
    if (auto *const list = qobject_cast<QListView *>(view()))
        list->setUniformItemSizes(true);
}

void ElidingComboBox::showPopup()
{
    const QString look = count() > kMostInMenu ? QStringLiteral("combobox-popup: 0") : QString();
    if (styleSheet() != look)
        setStyleSheet(look);
    QComboBox::showPopup();
}

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
