#pragma once

#include <QMessageBox>

namespace vorn {

/// Asked when the window is to close during an update. It blocks nothing: the update goes on behind
/// it. Main thread only.
class CloseQuestion final : public QMessageBox
{
    Q_OBJECT

public:
    explicit CloseQuestion(QWidget *window);

signals:
    void closeAnyway();
};

} // namespace vorn
