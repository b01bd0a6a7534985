#include "runtime/hosting.h"

#include <gtest/gtest.h>

#include <functional>

#include <string>
#include <vector>

namespace lexicorn::runtime {
namespace {

// A host with UIResponder-like depth: Responder <- ViewController <- BookViewController,
// plus a subclass of the hooked class to check that calls from below do not loop.
struct Host {
    Runtime runtime;
    Class& responder = runtime.registerClass("Responder");
    Class& controller = runtime.registerClass("ViewController", "Responder");
    Class& book = runtime.registerClass("BookViewController", "ViewController");
    Class& scrolling = runtime.registerClass("ScrollingBookViewController", "BookViewController");

    Host()
    {
        runtime.addMethod(responder, "viewDidLoad", [](Object&) { return std::string("Responder.viewDidLoad"); });
        runtime.addMethod(book, "closeBook", [](Object&) { return std::string("host closeBook"); });
        runtime.addMethod(book, "tableView:numberOfRowsInSection:",
                          [](Object&, std::string, int section) { return section * 10; });
    }
};

TEST(RegisterHook, ReplacingAnOwnMethodKeepsTheDisplacedOneInTheSlot)
{
    Host host;
    const Imp hostImp = host.runtime.implementation(*host.runtime.ownInstanceMethod(host.book, "closeBook"));
    static HookSlot slot;  // a replacement reaches its slot the way load-time code does
    slot = {};
    const Imp replacement = makeImp(
        [](Object& self) { return "plug-in, then " + callPrevious<std::string>(slot, self, "closeBook"); });

    EXPECT_EQ(_logos_register_hook("BookViewController", "closeBook", replacement, slot, host.runtime),
              HookOutcome::Replaced);
    EXPECT_EQ(slot.previous, hostImp);
    EXPECT_EQ(slot.superclass, &host.controller);
    EXPECT_EQ(host.runtime.implementation(*host.runtime.ownInstanceMethod(host.book, "closeBook")), replacement);

    // Both the class and its subclass now run the replacement, which reaches the host's body.
    for (Class* cls : {&host.book, &host.scrolling}) {
        Object object(*cls);
        EXPECT_EQ(send<std::string>(object, "closeBook"), "plug-in, then host closeBook") << cls->name();
    }
}

TEST(RegisterHook, PreviousCallPassesArgumentsAndResults)
{
    Host host;
    static HookSlot slot;
    slot = {};
    _logos_register_hook("BookViewController", "tableView:numberOfRowsInSection:",
                         makeImp([](Object& self, const std::string& table, int section) {
                             return 1 + callPrevious<int>(slot, self, "tableView:numberOfRowsInSection:", table,
                                                          section);
                         }),
                         slot, host.runtime);
    Object object(host.book);
    EXPECT_EQ(send<int>(object, "tableView:numberOfRowsInSection:", std::string("t"), 4), 41);
}

TEST(RegisterHook, AnInheritedOnlySelectorIsAddedOnTheClassAndThePreviousCallReachesTheAncestor)
{
    Host host;
    static HookSlot slot;
    slot = {};
    const Imp replacement = makeImp(
        [](Object& self) { return "hooked " + callPrevious<std::string>(slot, self, "viewDidLoad"); });
    const std::string ancestorEncoding = host.runtime.ownInstanceMethod(host.responder, "viewDidLoad")->encoding();

    EXPECT_EQ(_logos_register_hook("BookViewController", "viewDidLoad", replacement, slot, host.runtime),
              HookOutcome::Added);
    EXPECT_EQ(slot.previous, nullptr);
    EXPECT_EQ(slot.superclass, &host.controller);

    Method* added = host.runtime.ownInstanceMethod(host.book, "viewDidLoad");
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(added->encoding(), ancestorEncoding);
    EXPECT_EQ(host.runtime.implementation(*added), replacement);

    // The ancestor is untouched, and instances of the class and of its subclass reach it
    // exactly once (a lookup from the receiver's class would recurse into the replacement).
    struct Case {
        Class* cls;
        std::string expected;
    };
    const Case cases[] = {
        {&host.responder, "Responder.viewDidLoad"},
        {&host.controller, "Responder.viewDidLoad"},
        {&host.book, "hooked Responder.viewDidLoad"},
        {&host.scrolling, "hooked Responder.viewDidLoad"},
    };
    for (const Case& c : cases) {
        Object object(*c.cls);
        EXPECT_EQ(send<std::string>(object, "viewDidLoad"), c.expected) << c.cls->name();
    }
}

TEST(RegisterHook, AbsentClassOrSelectorIsSkippedSilently)
{
    struct Case {
        const char* className;
        const char* selector;
        HookOutcome expected;
    };
    const Case cases[] = {
        {"NoSuchController", "closeBook", HookOutcome::ClassAbsent},
        {"BookViewController", "noSuchSelector:", HookOutcome::SelectorAbsent},
        {"Responder", "closeBook", HookOutcome::SelectorAbsent},  // defined only below
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.className) + " " + c.selector);
        Host host;
        HookSlot slot;
        EXPECT_EQ(_logos_register_hook(c.className, c.selector, makeImp([](Object&) { return std::string(); }),
                                       slot, host.runtime),
                  c.expected);
        EXPECT_EQ(slot.previous, nullptr);
        for (Class* cls : {&host.responder, &host.controller, &host.book, &host.scrolling})
            EXPECT_EQ(host.runtime.ownInstanceMethod(*cls, c.selector) != nullptr,
                      cls == &host.book && std::string(c.selector) == "closeBook");
        Object object(host.book);
        EXPECT_EQ(send<std::string>(object, "closeBook"), "host closeBook");
    }
}

TEST(RegisterHook, PreviousCallWithNothingToCallNamesClassAndSelector)
{
    Host host;
    Object object(host.responder);
    const HookSlot emptyRoot{};  // a root class: no slot, no recorded superclass
    const HookSlot noAncestorMethod{nullptr, &host.responder};
    for (const HookSlot* slot : {&emptyRoot, &noAncestorMethod}) {
        try {
            callPrevious<void>(*slot, object, "missingSelector");
            ADD_FAILURE() << "expected an error";
        } catch (const Error& e) {
            EXPECT_NE(std::string(e.what()).find("Responder"), std::string::npos) << e.what();
            EXPECT_NE(std::string(e.what()).find("missingSelector"), std::string::npos) << e.what();
        }
    }
}

TEST(RegisterHook, AReplacementTypedUnlikeTheHostsMethodIsRefusedAndChangesNothing)
{
    Host host;
    HookSlot slot;
    for (const char* selector : {"tableView:numberOfRowsInSection:", "viewDidLoad"}) {
        SCOPED_TRACE(selector);
        try {
            _logos_register_hook("BookViewController", selector, makeImp([](Object&, std::string, double) { return 0; }),
                                 slot, host.runtime);
            ADD_FAILURE() << "expected an error";
        } catch (const Error& e) {
            EXPECT_NE(std::string(e.what()).find(std::string("-[BookViewController ") + selector + "]"), std::string::npos)
                << e.what();
        }
    }
    EXPECT_EQ(slot.previous, nullptr);
    EXPECT_EQ(host.runtime.ownInstanceMethod(host.book, "viewDidLoad"), nullptr);
    Object object(host.book);
    EXPECT_EQ(send<int>(object, "tableView:numberOfRowsInSection:", std::string(), 2), 20);
}

TEST(HookMethod, ExchangeMakesTheHookSelectorRunTheOriginal)
{
    Runtime runtime;
    Class& scroll = runtime.registerClass("MindMapScrollView");
    runtime.addMethod(scroll, "scrollWheelGestureChanged:atPos:",
                      [](Object&, double delta, int pos) { return "host " + std::to_string(int(delta) + pos); });
    runtime.addMethod(scroll, "hook_scrollWheelGestureChanged:atPos:", [](Object& self, double delta, int pos) {
        // After the exchange this selector names the host's body.
        return "hook, " + send<std::string>(self, "hook_scrollWheelGestureChanged:atPos:", delta, pos);
    });

    EXPECT_TRUE(tk_hookMethod(&scroll, "scrollWheelGestureChanged:atPos:", &scroll,
                              "hook_scrollWheelGestureChanged:atPos:"));
    Object view(scroll);
    EXPECT_EQ(send<std::string>(view, "scrollWheelGestureChanged:atPos:", 2.0, 3), "hook, host 5");
}

TEST(HookMethod, ClassMethodExchangeWorksOnTheClassSide)
{
    Runtime runtime;
    Class& debug = runtime.registerClass("Debug");
    runtime.addClassMethod(debug, "exemption", [](Class&) { return std::string("host"); });
    runtime.addClassMethod(debug, "hook_exemption",
                           [](Class& cls) { return "hook, " + sendClass<std::string>(cls, "hook_exemption"); });
    EXPECT_TRUE(tk_hookClassMethod(&debug, "exemption", &debug, "hook_exemption"));
    EXPECT_EQ(sendClass<std::string>(debug, "exemption"), "hook, host");
}

TEST(HookMethod, MissingClassOrMethodExchangesNothing)
{
    Runtime runtime;
    Class& cls = runtime.registerClass("AppDelegate");
    runtime.addMethod(cls, "cmdPressed", [](Object&) { return 1; });
    runtime.addMethod(cls, "hook_cmdPressed", [](Object&) { return 2; });
    runtime.addClassMethod(cls, "cmdPressed", [](Class&) { return 3; });

    struct Case {
        const char* what;
        std::function<bool()> exchange;
    };
    const std::vector<Case> cases = {
        {"no class A", [&] { return tk_hookMethod(nullptr, "cmdPressed", &cls, "hook_cmdPressed"); }},
        {"no class B", [&] { return tk_hookMethod(&cls, "cmdPressed", nullptr, "hook_cmdPressed"); }},
        {"no method a", [&] { return tk_hookMethod(&cls, "cmdReleased", &cls, "hook_cmdPressed"); }},
        {"no method b", [&] { return tk_hookMethod(&cls, "cmdPressed", &cls, "hook_cmdReleased"); }},
        // The class side has "cmdPressed" but no "hook_cmdPressed": the instance one must not be used.
        {"class side b", [&] { return tk_hookClassMethod(&cls, "cmdPressed", &cls, "hook_cmdPressed"); }},
    };
    Object object(cls);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_FALSE(c.exchange());
        EXPECT_EQ(send<int>(object, "cmdPressed"), 1);
        EXPECT_EQ(send<int>(object, "hook_cmdPressed"), 2);
        EXPECT_EQ(sendClass<int>(cls, "cmdPressed"), 3);
    }
}

}  // namespace
}  // namespace lexicorn::runtime
