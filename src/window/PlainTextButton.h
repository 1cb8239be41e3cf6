#pragma once

#include <QPushButton>

namespace vorn {

// A push button whose text is read and set as it stands, without the "&" that marks a mnemonic,
// and that has a mnemonic all the same: Alt and the first letter of its present text.
class PlainTextButton : public QPushButton
{
    Q_OBJECT

public:
    using QPushButton::QPushButton;

protected:
    void initStyleOption(QStyleOptionButton *option) const override;
    void paintEvent(QPaintEvent *event) override;
};

} // namespace vorn
