#pragma once

#include <QPushButton>

namespace vorn {

// A push button whose `text()` holds no "&": its mnemonic is always Alt and the first letter of its
// current text.
class AutoMnemonicButton : public QPushButton
{
    Q_OBJECT

public:
    using QPushButton::QPushButton;

protected:
    void initStyleOption(QStyleOptionButton *option) const override;
    void paintEvent(QPaintEvent *event) override;
};

} // namespace vorn
