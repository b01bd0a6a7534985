// The panel's class: its views, the setting buttons and the list of choices.

#include "lexicorn/anki/panel/anki_setting_view.h"

#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/render/anki_fields.h"

#include "foundation/dispatch.h"
#include "foundation/index_path.h"
#include "foundation/log.h"
#include "foundation/user_defaults.h"

#include "runtime/hosting.h"

#include <QColor>
#include <QRectF>
#include <QStringList>

#include <functional>

namespace lexicorn {

namespace {

using runtime::makeImp;
using runtime::Object;
using runtime::send;
using ObjectRef = std::shared_ptr<Object>;

// One setting: its label, its button's tag and property, and its key.
struct Setting {
    const char* label;
    int tag;
    const char* property;
    const QString& key;
};

const Setting settings[] = {
    {"Deck Name", 1000, "deckName", ankiset::deckName},
    {"Type Name", 1001, "typeName", ankiset::typeName},
    {"Expression", 1002, "expression", ankiset::expression},
    {"Sentence", 1003, "sentence", ankiset::sentence},
    {"Reading", 1004, "reading", ankiset::reading},
    {"ExtraInfo", 1005, "extraInfo", ankiset::extraInfo},
    {"Definition", 1006, "definition", ankiset::definition},
    {"URL", 1007, "url", ankiset::url},
    {"Definitions", 1008, "definitions", ankiset::definitions},
    {"Audio", 1009, "audio", ankiset::audio},
    {"Duplicate", 1010, "duplicate", ankiset::duplicate},
};
constexpr int deckTag = 1000;
constexpr int typeTag = 1001;
constexpr int lastFieldTag = 1009;
constexpr int duplicateTag = 1010;
// The field settings are the rows between the note type and "Duplicate".
constexpr int firstField = 2;
constexpr int fieldCount = 8;

const char* const objectProperties[] = {"ipLabel", "ip", "connect", "deckName", "typeName", "expression", "sentence", "reading",
                                        "extraInfo", "definition", "url", "definitions", "audio", "duplicate", "close",
                                        "selectionTableView", "settingButton"};

const QString cellIdentifier = QStringLiteral("selectionTableViewCell");
constexpr int cellLabelTag = 77;
constexpr double fontSize = 12;
constexpr int touchUpInside = 1 << 6;

const QColor panelColour(44, 44, 48);
const QColor buttonColour(78, 78, 86);

ObjectRef make(const char* className, const QRectF& frame)
{
    return runtime::sendClass<ObjectRef>(*runtime::Runtime::shared().classNamed(className), "viewWithFrame:", frame);
}

ObjectRef property(Object& panel, const char* name)
{
    return send<ObjectRef>(panel, name);
}

void setProperty(Object& panel, const char* name, const ObjectRef& value)
{
    send<void>(panel, runtime::setterName(name), value);
}

QString titleOf(const ObjectRef& button)
{
    return button ? send<QString>(*button, "currentTitle") : QString();
}

void setTitle(const ObjectRef& button, const QString& title)
{
    send<void>(*button, "setTitle:forState:", title, 0);
}

const Setting* settingWithTag(int tag)
{
    for (const Setting& setting : settings) {
        if (setting.tag == tag)
            return &setting;
    }
    return nullptr;
}

ObjectRef label(const QRectF& frame, const QString& text)
{
    const ObjectRef made = make("UILabel", frame);
    send<void>(*made, "setText:", text);
    send<void>(*made, "setTextColor:", QColor(Qt::white));
    send<void>(*made, "setFontSize:", fontSize);
    return made;
}

ObjectRef button(const QRectF& frame, const QString& title)
{
    const ObjectRef made = make("UIButton", frame);
    setTitle(made, title);
    send<void>(*made, "setBackgroundColor:", buttonColour);
    send<void>(*made, "setFontSize:", fontSize);
    return made;
}

// The IP row at the top, the settings in two columns below, "关闭" at the
// bottom and the list of choices on the right.
ObjectRef initWithFrame(Object& panel, QRectF /*frame*/)
{
    const ObjectRef self = panel.shared_from_this();
    send<void>(panel, "setBackgroundColor:", panelColour);
    const auto add = [&panel](const char* name, const ObjectRef& view) {
        send<void>(panel, "addSubview:", view);
        if (name)
            setProperty(panel, name, view);
    };
    add("ipLabel", label(QRectF(12, 12, 26, 26), QStringLiteral("IP:")));
    const ObjectRef ip = make("UITextField", QRectF(40, 12, 200, 26));
    send<void>(*ip, "setFontSize:", fontSize);
    add("ip", ip);
    add("connect", button(QRectF(248, 12, 136, 26), QStringLiteral("Not Connect!")));

    UserDefaults& defaults = UserDefaults::standard();
    int index = 0;
    for (const Setting& setting : settings) {
        const double left = 12 + (index / 6) * 190;
        const double top = 48 + (index % 6) * 32;
        add(nullptr, label(QRectF(left, top, 72, 26), QString::fromLatin1(setting.label)));
        const ObjectRef settingButton = button(QRectF(left + 74, top, 108, 26), defaults.string(setting.key));
        send<void>(*settingButton, "setTag:", setting.tag);
        send<void>(*settingButton, "addTarget:action:forControlEvents:", self, QStringLiteral("argSelect:"), touchUpInside);
        add(setting.property, settingButton);
        ++index;
    }
    add("close", button(QRectF(143, 244, 110, 26), QStringLiteral("关闭")));

    runtime::Class& tableClass = *runtime::Runtime::shared().classNamed("UITableView");
    const ObjectRef table = runtime::sendClass<ObjectRef>(tableClass, "tableViewWithFrame:style:", QRectF(396, 12, 192, 256), 0);
    send<void>(*table, "setRowHeight:", 35.0);
    send<void>(*table, "setBackgroundColor:", QColor(Qt::black));
    send<void>(*table, "setDataSource:", self);
    send<void>(*table, "setDelegate:", self);
    send<void>(*table, "setHidden:", true);
    add("selectionTableView", table);
    return self;
}

void showChoices(Object& panel, const ObjectRef& pressed, const KSWAnkiconnect::Reply& reply)
{
    logLine(reply ? reply->text() : QStringLiteral("(null)"));
    if (!reply || !reply->result().isArray())
        return;
    QStringList strings{QString()};
    for (const QJsonValue& value : reply->result().toArray())
        strings.append(value.toString());
    send<void>(panel, "setStrings:", strings);
    const ObjectRef table = property(panel, "selectionTableView");
    send<void>(*table, "reloadData");
    send<void>(*table, "setHidden:", false);
    setProperty(panel, "settingButton", pressed);
}

// Which list a setting button asks Anki for; nothing for a field button
// while no note type is chosen.
std::function<KSWAnkiconnect::Reply()> listRequest(Object& panel, int tag)
{
    if (tag == deckTag)
        return [] { return KSWAnkiconnect::shareInstance().getDeckNames(); };
    if (tag == typeTag)
        return [] { return KSWAnkiconnect::shareInstance().getModelNames(); };
    if (tag > typeTag && tag <= lastFieldTag) {
        const QString noteType = titleOf(property(panel, "typeName"));
        if (noteType.isEmpty())
            return {};
        return [noteType] { return KSWAnkiconnect::shareInstance().getModelFieldNames_(noteType); };
    }
    return {};
}

// Only the answer to the latest press opens a list.
const char listRequestKey = 0;

int nextListRequest(Object& panel)
{
    const std::any stored = panel.associatedObject(&listRequestKey);
    const int next = (stored.has_value() ? std::any_cast<int>(stored) : 0) + 1;
    panel.setAssociatedObject(&listRequestKey, next);
    return next;
}

bool isLatestListRequest(Object& panel, int request)
{
    const std::any stored = panel.associatedObject(&listRequestKey);
    return stored.has_value() && std::any_cast<int>(stored) == request;
}

void argSelect(Object& panel, ObjectRef pressed)
{
    const int tag = send<int>(*pressed, "tag");
    if (tag == duplicateTag) {
        const QString next = titleOf(pressed) == QStringLiteral("YES") ? QStringLiteral("NO") : QStringLiteral("YES");
        setTitle(pressed, next);
        UserDefaults::standard().set(ankiset::duplicate, next);
        return;
    }
    const std::function<KSWAnkiconnect::Reply()> request = listRequest(panel, tag);
    if (!request)
        return;
    // The button stays dimmed while Anki is asked.
    send<void>(*pressed, "setEnabled:", false);
    const int requestNumber = nextListRequest(panel);
    std::weak_ptr<Object> weakPanel = panel.weak_from_this();
    globalQueue().async([request, weakPanel, pressed, requestNumber] {
        KSWAnkiconnect::Reply reply = request();
        mainQueue().async([weakPanel, pressed, requestNumber, reply = std::move(reply)] {
            send<void>(*pressed, "setEnabled:", true);
            const ObjectRef panel = weakPanel.lock();
            if (panel && isLatestListRequest(*panel, requestNumber))
                showChoices(*panel, pressed, reply);
        });
    });
}

void choose(Object& panel, int row)
{
    const ObjectRef table = property(panel, "selectionTableView");
    send<void>(*table, "setHidden:", true);
    const QStringList strings = send<QStringList>(panel, "strings");
    const ObjectRef chosenFor = property(panel, "settingButton");
    if (!chosenFor || row < 0 || row >= strings.size())
        return;
    const QString chosen = strings[row];
    setTitle(chosenFor, chosen);
    UserDefaults& defaults = UserDefaults::standard();
    if (chosenFor == property(panel, "typeName") && chosen.isEmpty()) {
        // No note type: its field mappings and the duplicate rule go too.
        for (int i = firstField; i < firstField + fieldCount; ++i) {
            setTitle(property(panel, settings[i].property), QString());
            defaults.remove(settings[i].key);
        }
        defaults.remove(ankiset::duplicate);
    }
    const int tag = send<int>(*chosenFor, "tag");
    if (const Setting* setting = settingWithTag(tag); setting && tag <= lastFieldTag)
        defaults.set(setting->key, chosen);
}

ObjectRef choiceCell(Object& panel, const ObjectRef& table, IndexPath path)
{
    ObjectRef cell = send<ObjectRef>(*table, "dequeueReusableCellWithIdentifier:", cellIdentifier);
    if (!cell) {
        runtime::Class& cellClass = *runtime::Runtime::shared().classNamed("UITableViewCell");
        cell = runtime::sendClass<ObjectRef>(cellClass, "newWithStyle:reuseIdentifier:", 0, cellIdentifier);
        send<void>(*cell, "setBackgroundColor:", QColor(Qt::black));
        const ObjectRef content = send<ObjectRef>(*cell, "contentView");
        const QRectF bounds = send<QRectF>(*content, "bounds");
        const ObjectRef text = label(bounds.adjusted(10, 0, -6, 0), QString());
        send<void>(*text, "setTag:", cellLabelTag);
        send<void>(*text, "setAutoresizingMask:", 18);
        send<void>(*content, "addSubview:", text);
    }
    const ObjectRef text = send<ObjectRef>(*send<ObjectRef>(*cell, "contentView"), "viewWithTag:", cellLabelTag);
    send<void>(*text, "setText:", send<QStringList>(panel, "strings").value(path.row));
    return cell;
}

void addTableMethods(runtime::Runtime& runtime, runtime::Class& panel)
{
    runtime.addMethod(panel, "numberOfSectionsInTableView:", makeImp([](Object&, ObjectRef) { return 1; }));
    runtime.addMethod(panel, "tableView:numberOfRowsInSection:", makeImp([](Object& self, ObjectRef, int) {
        return static_cast<int>(send<QStringList>(self, "strings").size());
    }));
    runtime.addMethod(panel, "tableView:heightForRowAtIndexPath:", makeImp([](Object&, ObjectRef, IndexPath) { return 35.0; }));
    runtime.addMethod(panel, "tableView:cellForRowAtIndexPath:", makeImp(choiceCell));
    runtime.addMethod(panel, "tableView:didSelectRowAtIndexPath:",
                      makeImp([](Object& self, ObjectRef, IndexPath path) { choose(self, path.row); }));
}

}  // namespace

void registerAnkiSettingViewClass(runtime::Runtime& runtime)
{
    if (runtime.classNamed(ankiSettingViewClassName))
        return;
    runtime::Class& panel = runtime.registerClass(ankiSettingViewClassName, "UIView");
    for (const char* name : objectProperties)
        runtime::addProperty<ObjectRef>(panel, name);
    runtime::addProperty<QStringList>(panel, "strings");
    runtime.addMethod(panel, "initWithFrame:", makeImp(initWithFrame));
    runtime.addMethod(panel, "argSelect:", makeImp(argSelect));
    addTableMethods(runtime, panel);
}

}  // namespace lexicorn
