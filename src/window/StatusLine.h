#pragma once

#include "window/FittedLabel.h"

namespace vorn {

// What a status reports. Shown by a mark of its own shape and colour.
enum class StatusTone {
    Neutral, // a state, or a step in progress
    Good,    // something was done
    Bad,     // something failed
};

// A status text with a mark that shows its tone. A text that is too long is elided in the middle,
// since its end says how something went. Main thread only.
class StatusLine : public FittedLabel
{
    Q_OBJECT

public:
    explicit StatusLine(QWidget *parent = nullptr);

    using FittedLabel::show;
    void show(const QString &text, StatusTone tone);
    // Changes the mark and leaves the text.
    void setTone(StatusTone tone);
    StatusTone tone() const { return m_tone; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void paintMark(QPainter &painter, const QPointF &centre) const;

    StatusTone m_tone = StatusTone::Neutral;
};

} // namespace vorn
