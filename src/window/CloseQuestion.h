#pragma once

#include <QMessageBox>

namespace vorn {

// Asked when the window is to close during an update. It blocks nothing: the update goes on behind
// it. Main thread only.
class CloseQuestion final : public QMessageBox
{
    Q_OBJECT

public:
    explicit CloseQuestion(QWidget *window);

    // Shows the question.
    void ask();
    // Says so in a question that is shown. It stays, so that a key or click meant for it reaches
    // nothing else.
    void updateDidEnd();

signals:
    void closeAnyway();

private:
    QPushButton *const m_stay;
    QPushButton *const m_leave;
};

} // namespace vorn
