#include "window/AutoMnemonicButton.h"

#include <QStyleOptionButton>

namespace {

QString withMnemonic(QString text)
{
    return text.replace(QLatin1Char('&'), QStringLiteral("&&")).prepend(QLatin1Char('&'));
}

} // namespace

namespace vorn {

void AutoMnemonicButton::initStyleOption(QStyleOptionButton *option) const
{
    QPushButton::initStyleOption(option);
    option->text = withMnemonic(text());
}

void AutoMnemonicButton::paintEvent(QPaintEvent *event)
{
    // setText() clears the shortcut and is not virtual, but it always causes a repaint.
    const QKeySequence mnemonic = QKeySequence::mnemonic(withMnemonic(text()));
    if (shortcut() != mnemonic)
        setShortcut(mnemonic);
    QPushButton::paintEvent(event);
}

} // namespace vorn
