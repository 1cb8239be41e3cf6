#include "window/PlainTextButton.h"

#include <QStyleOptionButton>

namespace {

QString withMnemonic(QString text)
{
    return text.replace(QLatin1Char('&'), QStringLiteral("&&")).prepend(QLatin1Char('&'));
}

} // namespace

namespace vorn {

void PlainTextButton::initStyleOption(QStyleOptionButton *option) const
{
    QPushButton::initStyleOption(option);
    option->text = withMnemonic(text());
}

void PlainTextButton::paintEvent(QPaintEvent *event)
{
    // Setting a text drops the shortcut and tells nobody but the screen; so the mnemonic comes
    // into force when it is shown.
    const QKeySequence mnemonic = QKeySequence::mnemonic(withMnemonic(text()));
    if (shortcut() != mnemonic)
        setShortcut(mnemonic);
    QPushButton::paintEvent(event);
}

} // namespace vorn
