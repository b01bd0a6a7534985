// The study board's side of the Anki settings panel: opening, closing and
// the connection test.

#include "lexicorn/anki/panel/anki_setting_view.h"

#include "lexicorn/anki/ksw_ankiconnect.h"

#include "foundation/dispatch.h"

#include "runtime/hosting.h"

#include <QColor>
#include <QRectF>

namespace lexicorn {

namespace {

using runtime::makeImp;
using runtime::Object;
using runtime::send;
using ObjectRef = std::shared_ptr<Object>;

constexpr double panelWidth = 600;
constexpr double panelHeight = 280;
constexpr int touchUpInside = 1 << 6;
const QString busyTitle = QStringLiteral("…");

void showConnection(Object& panel, const std::optional<QJsonValue>& version)
{
    const ObjectRef connect = send<ObjectRef>(panel, "connect");
    send<void>(*connect, "setEnabled:", true);
    const QString title = version ? QStringLiteral("Connected! v%1").arg(describeReplyValue(*version)) : QStringLiteral("Not Connect!");
    send<void>(*connect, "setBackgroundColor:", version ? QColor(Qt::cyan) : QColor(Qt::red));
    send<void>(*connect, "setTitleColor:forState:", version ? QColor(Qt::black) : QColor(Qt::white), 0);
    send<void>(*connect, "setTitle:forState:", title, 0);
}

// Only the latest test's answer is shown.
const char connectionTestKey = 0;

// Asks Anki for its version in the background; the button says "…" until
// the answer arrives.
void testConnection(Object& panel)
{
    const std::any stored = panel.associatedObject(&connectionTestKey);
    const int test = (stored.has_value() ? std::any_cast<int>(stored) : 0) + 1;
    panel.setAssociatedObject(&connectionTestKey, test);
    const ObjectRef connect = send<ObjectRef>(panel, "connect");
    send<void>(*connect, "setTitle:forState:", busyTitle, 0);
    send<void>(*connect, "setEnabled:", false);
    std::weak_ptr<Object> weakPanel = panel.weak_from_this();
    globalQueue().async([weakPanel, test] {
        std::optional<QJsonValue> version = KSWAnkiconnect::shareInstance().getVersion();
        mainQueue().async([weakPanel, test, version = std::move(version)] {
            const ObjectRef panel = weakPanel.lock();
            if (panel && std::any_cast<int>(panel->associatedObject(&connectionTestKey)) == test)
                showConnection(*panel, version);
        });
    });
}

ObjectRef makePanel(Object& board)
{
    runtime::Class& cls = *runtime::Runtime::shared().classNamed(ankiSettingViewClassName);
    const QRectF frame(0, 0, panelWidth, panelHeight);
    const ObjectRef panel = send<ObjectRef>(*runtime::sendClass<ObjectRef>(cls, "viewWithFrame:", frame), "initWithFrame:", frame);
    const ObjectRef self = board.shared_from_this();
    send<void>(*send<ObjectRef>(*panel, "close"), "addTarget:action:forControlEvents:", self,
               QStringLiteral("closeAnkiconnectSettingPanel:"), touchUpInside);
    send<void>(*send<ObjectRef>(*panel, "connect"), "addTarget:action:forControlEvents:", self, QStringLiteral("connectToAnki:"),
               touchUpInside);
    send<void>(*send<ObjectRef>(board, "view"), "addSubview:", panel);
    send<void>(board, "setAnkiconnectSettingView:", panel);
    return panel;
}

void ankiconnectSetting(Object& board, ObjectRef /*sender*/)
{
    if (runtime::respondsTo(board, "dismissPopover"))
        send<void>(board, "dismissPopover");
    ObjectRef panel = send<ObjectRef>(board, "ankiconnectSettingView");
    if (!panel)
        panel = makePanel(board);
    const ObjectRef view = send<ObjectRef>(board, "view");
    const QRectF bounds = send<QRectF>(*view, "bounds");
    send<void>(*panel, "setFrame:",
               QRectF((bounds.width() - panelWidth) / 2, (bounds.height() - panelHeight) / 2, panelWidth, panelHeight));
    send<void>(*panel, "setHidden:", false);
    // On top of whatever the board added since it was last shown.
    send<void>(*view, "addSubview:", panel);
    send<void>(*send<ObjectRef>(*panel, "ip"), "setText:", KSWAnkiconnect::shareInstance().ipString());
    testConnection(*panel);
}

void connectToAnki(Object& board, ObjectRef /*sender*/)
{
    const ObjectRef panel = send<ObjectRef>(board, "ankiconnectSettingView");
    if (!panel)
        return;
    KSWAnkiconnect::shareInstance().setIpString_(send<QString>(*send<ObjectRef>(*panel, "ip"), "text"));
    testConnection(*panel);
}

void closeAnkiconnectSettingPanel(Object& board, ObjectRef /*sender*/)
{
    if (const ObjectRef panel = send<ObjectRef>(board, "ankiconnectSettingView"))
        send<void>(*panel, "setHidden:", true);
}

}  // namespace

void installAnkiSettingPanel(runtime::Runtime& runtime, runtime::Class& board)
{
    for (const char* needed : {"UIView", "UIButton", "UILabel", "UITextField", "UITableView", "UITableViewCell"}) {
        if (!runtime.classNamed(needed))
            return;
    }
    registerAnkiSettingViewClass(runtime);
    runtime.addMethod(board, "ankiconnectSetting:", makeImp(ankiconnectSetting));
    runtime.addMethod(board, "connectToAnki:", makeImp(connectToAnki));
    runtime.addMethod(board, "closeAnkiconnectSettingPanel:", makeImp(closeAnkiconnectSettingPanel));
}

}  // namespace lexicorn
