// The plug-in's load-time registration: every row whose host class and
// selector exist is installed; the others are skipped silently, so a host
// lacking one keeps working without that feature.

#include "lexicorn/anki/sync/card_methods.h"
#include "lexicorn/hosting/startup.h"
#include "lexicorn/reader/popup/card_protection.h"
#include "lexicorn/reader/popup/dict_popup.h"
#include "lexicorn/reader/sentences/reader_methods.h"
#include "lexicorn/settings/settings_menu.h"

#include "runtime/hook.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <deque>
#include <string>

namespace lexicorn {

namespace {

using runtime::makeImp;
using runtime::Object;
using ObjectRef = std::shared_ptr<Object>;

constinit runtime::Hook<std::string()> titleLinkColor{"AppDelegate", "defaultTitleLinkColor0"};

// A replacement that hands every call on to the host's own implementation.
template <class R, class... Args>
void passThrough(const char* className, const char* selector)
{
    static std::deque<runtime::Hook<R(Args...)>> hooks;  // a deque keeps their addresses
    runtime::Hook<R(Args...)>& hook = hooks.emplace_back(className, selector);
    hook.install([&hook](Object& self, Args... args) -> R { return hook.callPrevious(self, std::move(args)...); });
}

// Host methods the plug-in replaces for features it does not build (the
// reader's minor adjustments, the study board's add-on toolbar, the Markdown
// export) or whose behaviour arrives with the reader's windows. Until then
// the replacement hands each call on to the host. Objects travel as
// ObjectRef, senders as their names.
void installPassThroughs()
{
    passThrough<void>("PDFSearchQueryOperation", "searchOver");
    passThrough<void, ObjectRef>("MbUIDetailViewController", "panHighlight:");
    passThrough<void, ObjectRef>("MbUIDetailViewController", "textHighlight:");
    passThrough<void>("MbUIDetailViewController", "viewDidLoad");
    passThrough<ObjectRef, ObjectRef, bool, bool>("MindMapCanvas", "createNewGroup:edit:draft:");
    passThrough<void, QRectF>("MindMapNote", "setFrame:");
    passThrough<void, ObjectRef>("MbUIStudyboardController", "viewWillLayoutSubviews:");
    passThrough<void>("MbUIStudyboardController", "layoutMapAndBooks");
    passThrough<void, std::string>("MbUIStudyboardController", "toggleBookLeft:");
    passThrough<void, ObjectRef>("MbUIStudyboardController", "openHotword:");
    passThrough<void, ObjectRef>("MbUIStudyboardController", "refreshAddonCommands:");
    passThrough<void>("MbUIStudyboardController", "layoutAddonToolbar");
    passThrough<void, QString>("MbBookNote", "highlightTextFromAttributedText:");
}

// What a category's load method does for a pass-through exchange: adds
// "hook_" + selector, whose body calls "hook_" + selector again (after the
// exchange that runs the host's original), then exchanges the two. Nothing
// happens when the class or its method is absent or typed otherwise.
template <class R, class... Args>
bool exchangeWithPassThrough(const char* className, const char* selector)
{
    runtime::Runtime& runtime = runtime::Runtime::shared();
    runtime::Class* cls = runtime.classNamed(className);
    const runtime::Method* original = cls ? runtime.instanceMethod(*cls, selector) : nullptr;
    const std::string hookSelector = std::string("hook_") + selector;
    auto body = [hookSelector](Object& self, Args... args) -> R {
        return runtime::send<R>(self, hookSelector, std::move(args)...);
    };
    const runtime::Imp imp = makeImp(std::move(body));
    if (!original || runtime.implementation(*original)->signature() != imp->signature())
        return false;
    return runtime.addMethod(*cls, hookSelector, imp) && runtime::tk_hookMethod(cls, selector, cls, hookSelector);
}

// The categories' exchanges, made before the replacements as load methods
// run before the library's initialisers.
void installExchanges()
{
    exchangeWithPassThrough<void, ObjectRef, QPointF>("MindMapScrollView", "scrollWheelGestureChanged:atPos:");
    exchangeWithPassThrough<void, std::string>("MbUIStudyboardController", "toggleBookLeft:");
    exchangeWithPassThrough<bool>("AppDelegate", "cmdPressed");
}

enum class Kind { Boolean, Number, Text, Object };

struct AddedProperty {
    const char* className;
    const char* name;
    Kind kind;
    const char* encoding = "";  // empty: the one of the C++ type
};

// isUpdating of the study board is the batch's own flag (card methods).
const AddedProperty addedProperties[] = {
    {"BookViewController", "selectedText", Kind::Text},
    {"BookViewController", "cardWidth", Kind::Number},
    {"BookViewController", "enDictContainer", Kind::Object},
    {"BookViewController", "asDictView", Kind::Boolean},
    {"BookViewController", "autoAddToAnki", Kind::Boolean},
    {"BookViewController", "autoAudio", Kind::Boolean},
    {"BookViewController", "enableDict", Kind::Boolean},
    {"BookViewController", "isCorrecting", Kind::Boolean},
    {"BookViewController", "selectingCopy", Kind::Boolean},
    {"BookViewController", "sentenceCard", Kind::Boolean},
    {"BookViewController", "translationCard", Kind::Boolean},
    {"BookViewController", "sentenceOnly", Kind::Boolean},
    {"MbUIStudyboardController", "ankiconnectSettingView", Kind::Object},
    {"MbUIStudyboardController", "dictSetting", Kind::Object},
    {"MbUIStudyboardController", "updateToAnki", Kind::Object},
    {"MbUIDetailViewController", "pdfObjCAPI", Kind::Object},
    {"MbUIDetailViewController", "pdfImages", Kind::Object},
    // The delegate's booleans are declared with the encoding "^c" and read back with it.
    {"AppDelegate", "enableMouse3", Kind::Boolean, "^c"},
    {"AppDelegate", "shieldDictCard", Kind::Boolean, "^c"},
};

void addProperties()
{
    for (const AddedProperty& property : addedProperties) {
        runtime::Class* cls = runtime::Runtime::shared().classNamed(property.className);
        if (!cls)
            continue;
        switch (property.kind) {
        case Kind::Boolean:
            runtime::addProperty<bool>(*cls, property.name, property.encoding);
            break;
        case Kind::Number:
            runtime::addProperty<double>(*cls, property.name, property.encoding);
            break;
        case Kind::Text:
            runtime::addProperty<QString>(*cls, property.name, property.encoding);
            break;
        case Kind::Object:
            runtime::addProperty<ObjectRef>(*cls, property.name, property.encoding);
            break;
        }
    }
}

// Runs when the library is loaded, before the host calls any replaced method.
[[gnu::constructor]] void registerOnLoad()
{
    installExchanges();
    addProperties();
    installStartUp();
    titleLinkColor.install([](Object&) { return std::string("systemRed"); });
    installPassThroughs();
    installSettingsMenuHooks();
    installCardMethods();
    installReaderMethods();
    installSettingsMenu();
    installPopupMethods([] { return applicationDelegate().lock(); });
    installCardProtection();
}

}  // namespace

}  // namespace lexicorn
