#include "app/TaggedControls.h"

namespace vorn {
namespace {

enum class Tag {
    ConnectText = 1001,
    FileList = 1002,
    DeviceList = 1010,
    OpenButton = 1011,
    PerText = 1012,
    UpdateText = 1015,
    UpdateButton = 2001,
    DownloadButton = 2002,
};

template <typename Control>
Control *find(const QWidget *view, Tag tag)
{
    return qobject_cast<Control *>(getSub(view, 1, static_cast<int>(tag)));
}

} // namespace

TaggedControls TaggedControls::below(const QWidget *view)
{
    return {.connectText = find<StatusLine>(view, Tag::ConnectText),
            .perText = find<StatusLine>(view, Tag::PerText),
            .updateText = find<StatusLine>(view, Tag::UpdateText),
            .filePopUpBtn = find<QComboBox>(view, Tag::FileList),
            .devPopUpBtn = find<QComboBox>(view, Tag::DeviceList),
            .openBtn = find<QPushButton>(view, Tag::OpenButton),
            .updateBtn = find<QPushButton>(view, Tag::UpdateButton),
            .downloadBtn = find<QPushButton>(view, Tag::DownloadButton)};
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
