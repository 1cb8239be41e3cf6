#include "app/CloseQuestion.h"

#include <QPushButton>

namespace vorn {

CloseQuestion::CloseQuestion(QWidget *window)
    : QMessageBox(Warning, tr("Update Running"), tr("The device is being updated."), NoButton,
                  window)
{
    setInformativeText(
        tr("Closing the window stops the update, and the device cannot be used until "
           "it has been updated again."));
    QPushButton *stay = addButton(tr("&Keep Updating"), RejectRole);
    const QPushButton *leave = addButton(tr("Close &Anyway"), DestructiveRole);
    setDefaultButton(stay);
    setEscapeButton(stay);
    connect(this, &QDialog::finished, this, [this, leave] {
        if (clickedButton() == leave)
            emit closeAnyway();
    });
}

} // namespace vorn
