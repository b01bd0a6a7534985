#include "lexicorn/settings/settings_actions.h"

#include "lexicorn/clipboard/ksw_hdebug.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/reader/popup/popup_support.h"
#include "lexicorn/services/ksw_translate.h"

#include "foundation/user_defaults.h"

namespace lexicorn::settings {

namespace {

using runtime::makeImp;
using runtime::Object;
using runtime::send;

bool isFlatSwitch(const ObjectRef& sender)
{
    const runtime::Class* flatSwitch = runtime::Runtime::shared().classNamed("ABFlatSwitch");
    return sender && flatSwitch && sender->objectClass().isSubclassOf(*flatSwitch);
}

// Sets a boolean property of an object that has it.
void setSwitch(const ObjectRef& object, const char* property, bool on)
{
    const std::string setter = runtime::setterName(property);
    if (object && runtime::respondsTo(*object, setter))
        send<void>(*object, setter, on);
}

// A switch action: runs with the new state when the sender is a switch.
template <class Body>
runtime::Imp switchAction(Body body)
{
    return makeImp([body](Object& board, ObjectRef sender) {
        if (isFlatSwitch(sender))
            body(board, send<bool>(*sender, "isOn"));
    });
}

// A switch that only sets the reader's property of the same meaning.
runtime::Imp readerSwitch(const char* property)
{
    return switchAction([property](Object& board, bool on) { setSwitch(readerOf(board), property, on); });
}

void enableDict(Object& board, bool on)
{
    if (runtime::respondsTo(board, "dictSetting")) {
        if (const ObjectRef button = send<ObjectRef>(board, "dictSetting"))
            send<void>(*button, "setSelected:", on);
    }
    const ObjectRef reader = readerOf(board);
    setSwitch(reader, "enableDict", on);
    if (on || !reader)
        return;
    // Off: an open popup goes at once, and copies are no longer looked up.
    if (const ObjectRef container = send<ObjectRef>(*reader, "enDictContainer"))
        send<void>(*container, "setHidden:", true);
    KSWHDebug::pasteboardChangedStop_(reader);
}

void asDictView(Object& board, bool on)
{
    const ObjectRef reader = readerOf(board);
    setSwitch(reader, "asDictView", on);
    if (on && reader)
        popup::dictionaryView() = reader;
    else
        popup::dictionaryView().reset();
}

void selectDict(Object& board, int index)
{
    if (EnWordServer::shared().isCaching()) {
        send<void>(board, "showHUD:withDuration:", cachingMessage, 3.0);
        // The menu's segments show the dictionary in use again, not the refused one.
        if (runtime::respondsTo(board, "popover") && send<ObjectRef>(board, "popover") && runtime::respondsTo(board, "dictSetting"))
            send<void>(board, "settingDict:", send<ObjectRef>(board, "dictSetting"));
        return;
    }
    UserDefaults::standard().set(keys::selectedDict, index);
    EnWordServer::shared().setDictTypeWithNumber(index);
}

void selectCardWidth(Object& board, int index)
{
    const double width = cardWidthForIndex(index);
    if (const ObjectRef reader = readerOf(board); reader && runtime::respondsTo(*reader, "setCardWidth:"))
        send<void>(*reader, "setCardWidth:", width);
    UserDefaults::standard().set(keys::cardWidth, width);
}

void mouse3Control(bool on)
{
    const ObjectRef delegate = delegateObject();
    if (!delegate || !runtime::respondsTo(*delegate, "setEnableMouse3:"))
        return;
    send<void>(*delegate, "setEnableMouse3:", on);
    UserDefaults::standard().set(keys::enableMouse3, on);
}

}  // namespace

ObjectRef readerOf(Object& board)
{
    if (!runtime::respondsTo(board, "detailController"))
        return nullptr;
    const ObjectRef detail = send<ObjectRef>(board, "detailController");
    return detail && runtime::respondsTo(*detail, "fBookViewController") ? send<ObjectRef>(*detail, "fBookViewController")
                                                                          : nullptr;
}

ObjectRef delegateObject()
{
    return popup::applicationDelegate();
}

double cardWidthForIndex(int index)
{
    return index * 200.0 + defaultCardWidth;
}

int cardWidthIndex(double width)
{
    return static_cast<int>((static_cast<long long>(width) - static_cast<long long>(defaultCardWidth)) / 200);
}

double storedCardWidth()
{
    UserDefaults& defaults = UserDefaults::standard();
    return defaults.contains(keys::cardWidth) ? defaults.object(keys::cardWidth).toDouble() : defaultCardWidth;
}

void addSettingActions(runtime::Runtime& runtime, runtime::Class& board)
{
    runtime.addMethod(board, "enableDict:", switchAction(enableDict));
    runtime.addMethod(board, "shieldDictCard:", switchAction([](Object&, bool on) { setSwitch(delegateObject(), "shieldDictCard", on); }));
    runtime.addMethod(board, "autoAddToAnki:", readerSwitch("autoAddToAnki"));
    runtime.addMethod(board, "selectingCopy:", readerSwitch("selectingCopy"));
    runtime.addMethod(board, "autoAudio:", readerSwitch("autoAudio"));
    runtime.addMethod(board, "asSentenceCard:", readerSwitch("sentenceCard"));
    runtime.addMethod(board, "asTranslationCard:", readerSwitch("translationCard"));
    runtime.addMethod(board, "asDictView:", switchAction(asDictView));
    runtime.addMethod(board, "selectDict:", makeImp(selectDict));
    runtime.addMethod(board, "selectTE:", makeImp([](Object&, int index) {
        UserDefaults::standard().set(keys::engine, index);
        KSWTranslate::shareInstance().setEngine(static_cast<unsigned>(index));
    }));
    runtime.addMethod(board, "selectCardWidth:", makeImp(selectCardWidth));
    runtime.addMethod(board, "mouse3Control:", switchAction([](Object&, bool on) { mouse3Control(on); }));
}

}  // namespace lexicorn::settings
