#pragma once

#include <QMessageBox>

namespace vorn {

// Asks before closing the window or the device ends a running update, which goes on behind the
// question. Main thread only.
class CloseQuestion final : public QMessageBox
{
    Q_OBJECT

public:
    enum class Subject { Window, Device };

    explicit CloseQuestion(QWidget *window);

    // Asks whether `subject` may be closed. Does nothing while a question is shown.
    void ask(Subject subject);
    // Says in a shown question that the update has ended. The question stays, so that a key or
    // click meant for it reaches nothing else.
    void updateDidEnd();

signals:
    // The user chose to close `subject`.
    void confirmed(vorn::CloseQuestion::Subject subject);

private:
    QPushButton *const m_keep;
    QPushButton *const m_close;
    Subject m_subject = Subject::Window;
};

} // namespace vorn
