#include "runtime/hook.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
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

// A hook's body that puts "plug-in, " before what the host's own gives.
template <class... Args>
std::function<bool(Runtime&)> hookCallingPrevious(const char* className, const char* selector,
                                                  WhenAbsent whenAbsent = WhenAbsent::Skip)
{
    return [=](Runtime& runtime) {
        auto hook = std::make_shared<Hook<std::string(Args...)>>(className, selector);
        return hook->install([hook](Object& self, Args... args) { return "plug-in, " + hook->callPrevious(self, args...); },
                             whenAbsent, runtime);
    };
}

TEST(Hook, FollowsTheHostingRules)
{
    struct Case {
        const char* what;
        std::function<bool(Runtime&)> install;
        bool installed;
        const char* selector;
        // What responder, controller, book and scrolling instances answer; empty: no such method.
        std::array<const char*, 4> answers;
        const char* logged = "";
    };
    const char* host = "host closeBook";
    const char* inherited = "Responder.viewDidLoad";
    const char* hooked = "plug-in, host closeBook";
    const char* hookedInherited = "plug-in, Responder.viewDidLoad";
    const Case cases[] = {
        {"the class's own method: replaced, the host's kept and called",
         hookCallingPrevious("BookViewController", "closeBook"), true, "closeBook", {"", "", hooked, hooked}},
        // A lookup of the previous from the receiver's class would loop for the subclass.
        {"only an ancestor has it: added on the class, the previous is the ancestor's",
         hookCallingPrevious("BookViewController", "viewDidLoad"), true, "viewDidLoad",
         {inherited, inherited, hookedInherited, hookedInherited}},
        {"no class has it: skipped", hookCallingPrevious("BookViewController", "noSuchSelector:"), false,
         "noSuchSelector:", {"", "", "", ""}},
        {"no class has it, adding asked for: added",
         [](Runtime& runtime) {
             static Hook<std::string()> added("BookViewController", "noSuchSelector:");
             return added.install([](Object&) { return std::string("plug-in"); }, WhenAbsent::Add, runtime);
         },
         true, "noSuchSelector:", {"", "", "plug-in", "plug-in"}},
        {"the class is absent: skipped", hookCallingPrevious("NoSuchController", "closeBook"), false, "closeBook",
         {"", "", host, host}},
        {"defined only below the class: skipped", hookCallingPrevious("Responder", "closeBook"), false, "closeBook",
         {"", "", host, host}},
        {"the host's own typed otherwise: logged, the host's kept", hookCallingPrevious<double>("BookViewController", "closeBook"),
         false, "closeBook", {"", "", host, host}, "-[BookViewController closeBook]: the replacement takes"},
        {"an ancestor's typed otherwise: logged, nothing added",
         hookCallingPrevious<int>("BookViewController", "viewDidLoad"), false, "viewDidLoad",
         {inherited, inherited, inherited, inherited}, "-[BookViewController viewDidLoad]"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Host host;
        testing::internal::CaptureStderr();
        EXPECT_EQ(c.install(host.runtime), c.installed);
        const std::string log = testing::internal::GetCapturedStderr();
        if (*c.logged)
            EXPECT_NE(log.find(c.logged), std::string::npos) << log;
        else
            EXPECT_EQ(log, "");
        Class* classes[] = {&host.responder, &host.controller, &host.book, &host.scrolling};
        for (size_t i = 0; i < 4; ++i) {
            Object object(*classes[i]);
            if (*c.answers[i])
                EXPECT_EQ(send<std::string>(object, c.selector), c.answers[i]) << classes[i]->name();
            else
                EXPECT_FALSE(respondsTo(object, c.selector)) << classes[i]->name();
        }
    }
}

TEST(Hook, PassesArgumentsAndResultsAndNamesWhatIsMissing)
{
    Host host;
    static Hook<int(std::string, int)> rows("BookViewController", "tableView:numberOfRowsInSection:");
    rows.install([](Object& self, std::string table, int section) { return 1 + rows.callPrevious(self, table, section); },
                 WhenAbsent::Skip, host.runtime);
    Object book(host.book);
    EXPECT_EQ(send<int>(book, "tableView:numberOfRowsInSection:", std::string("t"), 4), 41);

    // An added method has no previous one: calling it names the selector.
    static Hook<void()> added("BookViewController", "noSuchSelector:");
    added.install([](Object& self) { added.callPrevious(self); }, WhenAbsent::Add, host.runtime);
    try {
        send<void>(book, "noSuchSelector:");
        ADD_FAILURE() << "expected an error";
    } catch (const Error& e) {
        EXPECT_NE(std::string(e.what()).find("noSuchSelector:"), std::string::npos) << e.what();
    }
}

TEST(HookMethod, ExchangeMakesTheHookSelectorRunTheOriginalOnEitherSide)
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

    // The same on the class side.
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
