#pragma once

#include "window/StatusLine.h"

#include <QComboBox>
#include <QPointer>
#include <QPushButton>

namespace vorn {

// The controls that the controller works with, owned by the window. One that was not found is null,
// and every operation on it does nothing.
struct TaggedControls
{
    QPointer<StatusLine> connectText;
    QPointer<StatusLine> perText;
    QPointer<StatusLine> updateText;
    QPointer<QComboBox> filePopUpBtn;
    QPointer<QComboBox> devPopUpBtn;
    QPointer<QPushButton> openBtn;
    QPointer<QPushButton> updateBtn;
    QPointer<QPushButton> downloadBtn;

    // Finds them below the view, by their tags.
    static TaggedControls below(const QWidget *view);
};

// The first control with this tag (the dynamic property "tag") below the view, depth first, a
// parent before its children; null when there is none. Nothing depends on the level.
QWidget *getSub(const QWidget *view, int andLevel, int tag);

inline void showStatus(StatusLine *line, const QString &text, StatusTone tone)
{
    if (line)
        line->show(text, tone);
}

inline void setStatusTone(StatusLine *line, StatusTone tone)
{
    if (line)
        line->setTone(tone);
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
