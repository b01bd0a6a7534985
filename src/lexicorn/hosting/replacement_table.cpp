// The plug-in's load-time registration: every row whose host class and
// selector exist is installed; the others are skipped silently, so a host
// lacking one keeps working without that feature.

#include "lexicorn/hosting/card_methods.h"
#include "lexicorn/hosting/startup.h"

#include "runtime/hosting.h"

#include <string>

namespace lexicorn {

namespace {

using runtime::makeImp;
using runtime::Object;

runtime::HookSlot titleLinkColourSlot;

// A replacement method of the host: class, selector, body and its slot.
struct Replacement {
    const char* className;
    const char* selector;
    runtime::Imp body;
    runtime::HookSlot* slot;
};

// A property added to a host class.
struct AddedBoolean {
    const char* className;
    const char* name;
};

void installReplacements()
{
    runtime::Runtime& runtime = runtime::Runtime::shared();

    const AddedBoolean booleans[] = {
        {"AppDelegate", "enableMouse3"},
        {"AppDelegate", "shieldDictCard"},
    };
    for (const AddedBoolean& property : booleans) {
        if (runtime::Class* cls = runtime.classNamed(property.className))
            runtime::addProperty<bool>(*cls, property.name, "^c");
    }

    const Replacement rows[] = {
        {"AppDelegate", "applicationDidFinishLaunching:",
         makeImp([](Object& self, std::string notification) { startUp(self, notification); }), &launchSlot()},
        {"AppDelegate", "defaultTitleLinkColor0", makeImp([](Object&) { return std::string("systemRed"); }),
         &titleLinkColourSlot},
    };
    for (const Replacement& row : rows)
        runtime::_logos_register_hook(row.className, row.selector, row.body, *row.slot, runtime);

    installCardMethods();
}

// Runs when the library is loaded, before the host calls any replaced method.
[[gnu::constructor]] void registerOnLoad()
{
    installReplacements();
}

}  // namespace

}  // namespace lexicorn
