#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QProgressBar>

namespace vorn {

// A slim progress bar that never walks back, and whose busy state costs next to no processor time.
class ProgressLine : public QProgressBar
{
    Q_OBJECT

public:
    explicit ProgressLine(QWidget *parent = nullptr);

    // Shows `percent` (0 to 100), or what was shown before if that is more.
    void showPercent(int percent);
    // Shows activity of unknown length until the next call.
    void showBusy();
    // Back to an empty bar.
    void clear();
    // A hidden bar takes the same room as a visible one, so that nothing around it moves.
    void keepPlaceWhenHidden();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    bool isBusy() const;
    void animateWhileSeen();

    int m_percent = 0;
    QBasicTimer m_frame;
    QElapsedTimer m_busySince;
};

} // namespace vorn
