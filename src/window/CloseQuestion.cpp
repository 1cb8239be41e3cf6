#include "window/CloseQuestion.h"

#include <QPushButton>

namespace vorn {

CloseQuestion::CloseQuestion(QWidget *window)
    : QMessageBox(Warning, tr("Update Running"), {}, NoButton, window),
      m_keep(addButton(QString(), RejectRole)), m_close(addButton(QString(), DestructiveRole))
{
    setDefaultButton(m_keep);
    setEscapeButton(m_keep);
    connect(m_close, &QPushButton::clicked, this, [this] { emit confirmed(m_subject); });
}

void CloseQuestion::ask(Subject subject)
{
    if (isVisible())
        return;
    m_subject = subject;
    setText(tr("The device is being updated."));
    setInformativeText(subject == Subject::Window
                           ? tr("Closing the window stops the update, and the device cannot be "
                                "used until it has been updated again.")
                           : tr("Closing the device stops the update, and it cannot be used until "
                                "it has been updated again."));
    m_keep->setText(tr("&Keep Updating"));
    m_close->setText(tr("Close &Anyway"));
    // The focus may have been left on the other button last time.
    m_keep->setFocus();
    open();
}

void CloseQuestion::updateDidEnd()
{
    setText(tr("The update has ended."));
    setInformativeText(tr("The window shows the result."));
    m_keep->setText(tr("&Keep Open"));
    m_close->setText(m_subject == Subject::Window ? tr("Close &Window") : tr("Close &Device"));
}

} // namespace vorn
