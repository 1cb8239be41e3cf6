#include "window/CloseQuestion.h"

#include <QPushButton>

namespace vorn {

CloseQuestion::CloseQuestion(QWidget *window)
    : QMessageBox(Warning, tr("Update Running"), {}, NoButton, window),
      m_stay(addButton(QString(), RejectRole)), m_leave(addButton(QString(), DestructiveRole))
{
    setDefaultButton(m_stay);
    setEscapeButton(m_stay);
    connect(m_leave, &QPushButton::clicked, this, &CloseQuestion::closeAnyway);
}

void CloseQuestion::ask()
{
    setText(tr("The device is being updated."));
    setInformativeText(
        tr("Closing the window stops the update, and the device cannot be used until "
           "it has been updated again."));
    m_stay->setText(tr("&Keep Updating"));
    m_leave->setText(tr("Close &Anyway"));
    // Where it was when it was asked last may be the other one.
    m_stay->setFocus();
    open();
}

void CloseQuestion::updateDidEnd()
{
    setText(tr("The update has ended."));
    setInformativeText(tr("The window shows how it went."));
    m_stay->setText(tr("&Keep Window"));
    m_leave->setText(tr("Close &Window"));
}

} // namespace vorn
