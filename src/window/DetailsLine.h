#pragma once

#include "window/Colours.h"
#include "window/FittedLabel.h"

namespace vorn {

// What belongs to the status line above it: the cause and the cure of a failure, or the progress of
// a run. Empty when all is well. It begins right below the status. Main thread only.
class DetailsLine : public FittedLabel
{
    Q_OBJECT

public:
    explicit DetailsLine(QWidget *parent = nullptr) : FittedLabel(Qt::ElideRight, parent)
    {
        setAlignment(Qt::AlignTop);
    }

protected:
    QColor textColour() const override { return mutedTextColour(palette()); }
};

} // namespace vorn
