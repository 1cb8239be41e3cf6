#pragma once

#include <QLabel>

namespace vorn {

// What a status reports. Shown by a mark of its own shape and colour.
enum class StatusTone {
    Neutral, // a state, or a step in progress
    Good,    // something was done
    Bad,     // something failed
};

// A status text with a mark that shows its tone.
//
// It always has the height of two lines, so that a long text moves nothing around it. A text that
// needs more is elided in the middle, since its end says how something went; the tool tip then has
// the whole text, and `text()` always has. Main thread only.
class StatusLine : public QLabel
{
    Q_OBJECT

public:
    explicit StatusLine(QWidget *parent = nullptr);

    using QLabel::show;
    void show(const QString &text, StatusTone tone);
    // Changes the mark and leaves the text.
    void setTone(StatusTone tone);
    StatusTone tone() const { return m_tone; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    // The text as it fits into the lines, and whether it was elided for that.
    struct FittedText
    {
        QStringList lines;
        bool elided = false;
    };
    FittedText fittedText() const;
    int markSide() const;
    int lineHeight() const;
    int textStart() const;
    void paintMark(QPainter &painter, const QPointF &centre) const;

    StatusTone m_tone = StatusTone::Neutral;
};

} // namespace vorn
