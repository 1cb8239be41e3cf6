#pragma once

#include "window/Tone.h"

#include <QLabel>

namespace vorn {

// A status text beside a small mark that shows its tone.
//
// It always takes the room of two lines, so that a long text moves nothing around it. A text that
// needs more loses its middle, never its end, which says how something went; the whole text is in
// the tool tip and in `text()`.
class StatusLabel : public QLabel
{
    Q_OBJECT

public:
    explicit StatusLabel(QWidget *parent = nullptr);

    void setTone(Tone tone);
    Tone tone() const { return m_tone; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    struct Arranged
    {
        QStringList lines;
        bool shortened = false;
    };
    Arranged arranged() const;
    int markSide() const;
    int lineHeight() const;
    int textStart() const;
    void paintMark(QPainter &painter, const QPointF &centre) const;

    Tone m_tone = Tone::Neutral;
};

} // namespace vorn
