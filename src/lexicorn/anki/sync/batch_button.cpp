#include "lexicorn/anki/sync/batch_button.h"

#include <QRectF>
#include <QString>

namespace lexicorn {

namespace {

using runtime::send;
using ObjectRef = std::shared_ptr<runtime::Object>;

// The view kit's numbers, as UIKit numbers them.
constexpr int customButton = 0;
constexpr int normalState = 0;
constexpr int touchUpInside = 1 << 6;
constexpr int flexibleLeftMargin = 1;

constexpr double buttonSide = 28;
constexpr double rightInset = 6;

}  // namespace

void placeBatchButton(runtime::Object& board)
{
    send<void>(board, "setIsUpdating:", false);
    runtime::Runtime& runtime = runtime::Runtime::shared();
    runtime::Class* buttons = runtime.classNamed("UIButton");
    runtime::Class* images = runtime.classNamed("UIImage");
    if (!buttons || !images || !runtime::respondsTo(board, "organizingEditBar"))
        return;
    const ObjectRef bar = send<ObjectRef>(board, "organizingEditBar");
    if (!bar)
        return;
    const ObjectRef button = runtime::sendClass<ObjectRef>(*buttons, "buttonWithType:", customButton);
    const ObjectRef image = runtime::sendClass<ObjectRef>(*images, "imageNamed:", QStringLiteral("anki64"));
    send<void>(*button, "setImage:forState:", image, normalState);
    send<void>(*button, "addTarget:action:forControlEvents:", board.shared_from_this(), QStringLiteral("dictUpdateToAnki:"),
               touchUpInside);
    // At the bar's right end, where it stays as the bar grows.
    const QRectF bounds = send<QRectF>(*bar, "bounds");
    send<void>(*button, "setFrame:",
               QRectF(bounds.width() - rightInset - buttonSide, (bounds.height() - buttonSide) / 2, buttonSide, buttonSide));
    send<void>(*button, "setAutoresizingMask:", flexibleLeftMargin);
    send<void>(*bar, "addSubview:", button);
    send<void>(board, "setUpdateToAnki:", button);
}

}  // namespace lexicorn
