#include "lexicorn/settings/settings_menu.h"

#include "lexicorn/anki/panel/anki_setting_view.h"
#include "lexicorn/anki/sync/batch_button.h"
#include "lexicorn/settings/settings_actions.h"

#include "runtime/hook.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/services/ksw_translate.h"

#include <QColor>
#include <QSizeF>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

namespace lexicorn {

namespace {

using runtime::makeImp;
using runtime::Object;
using runtime::send;
using settings::ObjectRef;

const QString menuTitle = QStringLiteral("特异功能");
const QString sectionTitle = QStringLiteral("Dictionary");
const QStringList dictionaries{QStringLiteral("LDOCE5"), QStringLiteral("collins")};
const QStringList engines{QStringLiteral("自动"), QStringLiteral("Google cn"), QStringLiteral("有道"), QStringLiteral("Google"),
                          QStringLiteral("Eudic")};
const QStringList cardWidths{QStringLiteral("700"),  QStringLiteral("900"),  QStringLiteral("1100"), QStringLiteral("1300"),
                             QStringLiteral("1500"), QStringLiteral("2000"), QStringLiteral("2500"), QStringLiteral("3000"),
                             QStringLiteral("3500"), QStringLiteral("4000"), QStringLiteral("4500"), QStringLiteral("5000")};
constexpr double menuWidth = 320;
constexpr int touchUpInside = 1 << 6;

constinit runtime::Hook<void()> boardDidLoad{"MbUIStudyboardController", "viewDidLoad"};
constinit runtime::Hook<void(bool)> boardWillAppear{"MbUIStudyboardController", "viewWillAppear:"};

// The host's icon of that name, in the board's tint colour when asked.
ObjectRef icon(Object& board, const QString& name, bool tinted)
{
    runtime::Class* images = runtime::Runtime::shared().classNamed("UIImage");
    const ObjectRef image = images ? runtime::sendClass<ObjectRef>(*images, "imageNamed:", name) : nullptr;
    if (!image || !tinted || !runtime::respondsTo(board, "defaultTintColor"))
        return image;
    return send<ObjectRef>(*image, "imageWithTintColor:", send<QColor>(board, "defaultTintColor"));
}

bool flagOf(const ObjectRef& object, const char* name)
{
    return object && runtime::respondsTo(*object, name) && send<bool>(*object, name);
}

// One row bound to an action of the board; the board is not kept alive by it.
QVariantMap row(Object& board, const QString& title, const char* selector, const ObjectRef& image)
{
    return {
        {QStringLiteral("title"), title},
        {QStringLiteral("object"), QVariant::fromValue(board.weak_from_this())},
        {QStringLiteral("selector"), QString::fromLatin1(selector)},
        {QStringLiteral("image"), QVariant::fromValue(image)},
    };
}

QVariantMap switchRow(Object& board, const QString& title, const char* selector, const ObjectRef& image, bool checked)
{
    QVariantMap made = row(board, title, selector, image);
    made.insert(QStringLiteral("checked"), checked);
    return made;
}

QVariantMap segmentRow(Object& board, const QString& title, const char* selector, const ObjectRef& image, int index,
                       const QStringList& segments)
{
    QVariantMap made = row(board, title, selector, image);
    made.insert(QStringLiteral("segmentIndex"), index);
    made.insert(QStringLiteral("segments"), segments);
    return made;
}

QVariantList menuRows(Object& board)
{
    const ObjectRef reader = settings::readerOf(board);
    const ObjectRef delegate = settings::delegateObject();
    const ObjectRef dictionary = icon(board, QStringLiteral("dictionary"), true);
    const ObjectRef copy = icon(board, QStringLiteral("copy"), true);
    const ObjectRef translation = icon(board, QStringLiteral("translation"), true);
    const double cardWidth = reader && runtime::respondsTo(*reader, "cardWidth") ? send<double>(*reader, "cardWidth") : 0;

    QVariantList rows{
        switchRow(board, QStringLiteral("打开字典"), "enableDict:", dictionary, flagOf(reader, "enableDict")),
        switchRow(board, QStringLiteral("字典卡牌格式保护"), "shieldDictCard:", icon(board, QStringLiteral("lock"), true),
                  flagOf(delegate, "shieldDictCard")),
        switchRow(board, QStringLiteral("自动添加到 Anki"), "autoAddToAnki:", icon(board, QStringLiteral("anki64"), false),
                  flagOf(reader, "autoAddToAnki")),
        switchRow(board, QStringLiteral("选择复制"), "selectingCopy:", copy, flagOf(reader, "selectingCopy")),
        switchRow(board, QStringLiteral("作为字典视图"), "asDictView:", dictionary, flagOf(reader, "asDictView")),
        switchRow(board, QStringLiteral("选中后发音"), "autoAudio:", icon(board, QStringLiteral("speech"), true),
                  flagOf(reader, "autoAudio")),
        switchRow(board, QStringLiteral("句子卡片"), "asSentenceCard:", copy, flagOf(reader, "sentenceCard")),
        switchRow(board, QStringLiteral("翻译卡片"), "asTranslationCard:", copy, flagOf(reader, "translationCard")),
        segmentRow(board, QStringLiteral("选择词典"), "selectDict:", translation, EnWordServer::shared().dictTypeNumber(), dictionaries),
        segmentRow(board, QStringLiteral("翻译引擎"), "selectTE:", translation, static_cast<int>(KSWTranslate::shareInstance().engine()),
                   engines),
        segmentRow(board, QStringLiteral("新建卡片宽度设置"), "selectCardWidth:", translation, settings::cardWidthIndex(cardWidth),
                   cardWidths),
        row(board, QStringLiteral("Ankiconnect 设置"), "ankiconnectSetting:", icon(board, QStringLiteral("anki64"), false)),
    };
    if (delegate && runtime::respondsTo(*delegate, "enableMouse3"))
        rows.append(switchRow(board, QStringLiteral("Mouse3控制"), "mouse3Control:", icon(board, QStringLiteral("drag"), false),
                              flagOf(delegate, "enableMouse3")));
    return rows;
}

void settingDict(Object& board, ObjectRef sender)
{
    runtime::Class* tables = runtime::Runtime::shared().classNamed("CommandTableController");
    if (!tables || !runtime::respondsTo(board, "presentPopover:fromView:preferredSize:"))
        return;
    send<void>(board, "dismissPopover");
    const QVariantList rows = menuRows(board);
    const QVariantList sections{QVariantMap{
        {QStringLiteral("title"), sectionTitle}, {QStringLiteral("offset"), 0}, {QStringLiteral("count"), static_cast<int>(rows.size())}}};
    const ObjectRef menu = runtime::sendClass<ObjectRef>(*tables, "controllerWithTitle:sections:commands:", menuTitle, sections, rows);
    send<void>(board, "presentPopover:fromView:preferredSize:", menu, sender, QSizeF(menuWidth, send<double>(*menu, "contentHeight")));
}

// The settings button shows selected while the reader's dictionary is on.
void showDictionaryState(Object& board)
{
    const ObjectRef button = send<ObjectRef>(board, "dictSetting");
    if (button)
        send<void>(*button, "setSelected:", flagOf(settings::readerOf(board), "enableDict"));
}

void placeDictSettingButton(Object& board)
{
    runtime::Class* buttons = runtime::Runtime::shared().classNamed("UIButton");
    if (!buttons || !runtime::respondsTo(board, "clipBar"))
        return;
    const ObjectRef clipBar = send<ObjectRef>(board, "clipBar");
    if (!clipBar)
        return;
    const ObjectRef button = runtime::sendClass<ObjectRef>(*buttons, "buttonWithType:", 0);
    send<void>(*button, "setImage:forState:", icon(board, QStringLiteral("dictionary"), true), 0);
    send<void>(*button, "addTarget:action:forControlEvents:", board.shared_from_this(), QStringLiteral("settingDict:"), touchUpInside);
    send<void>(board, "setDictSetting:", button);
    send<void>(*clipBar, "addSubview:", button);
    showDictionaryState(board);
}

void viewDidLoad(Object& board)
{
    boardDidLoad.callPrevious(board);
    placeDictSettingButton(board);
    placeBatchButton(board);
}

void viewWillAppear(Object& board, bool animated)
{
    boardWillAppear.callPrevious(board, animated);
    const ObjectRef reader = settings::readerOf(board);
    if (reader && runtime::respondsTo(*reader, "setCardWidth:"))
        send<void>(*reader, "setCardWidth:", settings::storedCardWidth());
    showDictionaryState(board);
}

}  // namespace

void installSettingsMenuHooks()
{
    boardDidLoad.install(viewDidLoad);
    boardWillAppear.install(viewWillAppear);
}

void installSettingsMenu()
{
    runtime::Runtime& runtime = runtime::Runtime::shared();
    runtime::Class* board = runtime.classNamed("MbUIStudyboardController");
    if (!board)
        return;
    runtime.addMethod(*board, "settingDict:", makeImp(settingDict));
    settings::addSettingActions(runtime, *board);
    installAnkiSettingPanel(runtime, *board);
}

}  // namespace lexicorn
