#pragma once

#include <QComboBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

namespace vorn {

// The controls that the controller keeps, found by their tags at start-up and owned by the window.
// One that was not found is null, and every operation on it does nothing.
struct Controls
{
    QPointer<QLabel> connectText;
    QPointer<QLabel> perText;
    QPointer<QLabel> updateText;
    QPointer<QComboBox> filePopUpBtn;
    QPointer<QComboBox> devPopUpBtn;
    QPointer<QPushButton> openBtn;
};

inline void setText(QLabel *label, const QString &text)
{
    if (label)
        label->setText(text);
}

inline void setTitle(QPushButton *button, const QString &title)
{
    if (button)
        button->setText(title);
}

// The title of the list's current item, null when there is none.
inline QString currentTitle(const QComboBox *list)
{
    return list && list->currentIndex() >= 0 ? list->currentText() : QString();
}

} // namespace vorn
