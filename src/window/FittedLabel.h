#pragma once

#include <QLabel>
#include <QStringList>

namespace vorn {

// A text that always has the height of two lines, so that a long one moves nothing around it. It
// wraps between words, and a single line stands as `alignment()` says. What needs more room is
// elided, and the tool tip then has the whole text, as text() always has. Leaves room for a mark at
// the left. Plain text only: a device's name may look like markup. Main thread only.
class FittedLabel : public QLabel
{
    Q_OBJECT

public:
    // `elide` says which end of the second line is left out when the text is too long.
    FittedLabel(Qt::TextElideMode elide, QWidget *parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

    virtual QColor textColour() const { return palette().color(foregroundRole()); }
    // Where the lines stand: where the first one begins, mark included.
    QRect firstLine() const;
    int markSide() const;

private:
    // The text as it fits into the lines, and whether it was elided for that.
    struct FittedText
    {
        QStringList lines;
        bool elided = false;
    };
    FittedText fittedText() const;
    int lineHeight() const;
    int textStart() const;

    const Qt::TextElideMode m_elide;
};

} // namespace vorn
