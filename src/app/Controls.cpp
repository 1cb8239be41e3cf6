#include "app/Controls.h"

namespace vorn {
namespace {

enum Tag {
    kConnectText = 1001,
    kFileList = 1002,
    kDeviceList = 1010,
    kOpenButton = 1011,
    kPerText = 1012,
    kUpdateText = 1015,
    kUpdateButton = 2001,
    kDownloadButton = 2002,
};

template <typename Control>
Control *find(const QWidget *view, Tag tag)
{
    return qobject_cast<Control *>(getSub(view, 1, tag));
}

} // namespace

Controls Controls::below(const QWidget *view)
{
    return {.connectText = find<StatusLine>(view, kConnectText),
            .perText = find<StatusLine>(view, kPerText),
            .updateText = find<StatusLine>(view, kUpdateText),
            .filePopUpBtn = find<QComboBox>(view, kFileList),
            .devPopUpBtn = find<QComboBox>(view, kDeviceList),
            .openBtn = find<QPushButton>(view, kOpenButton),
            .updateBtn = find<QPushButton>(view, kUpdateButton),
            .downloadBtn = find<QPushButton>(view, kDownloadButton)};
}

QWidget *getSub(const QWidget *view, int andLevel, int tag)
{
    for (QObject *child : view->children()) {
        auto *widget = qobject_cast<QWidget *>(child);
        if (!widget)
            continue;
        if (widget->property("tag").toInt() == tag)
            return widget;
        if (QWidget *found = getSub(widget, andLevel + 1, tag))
            return found;
    }
    return nullptr;
}

} // namespace vorn
