#include "runtime/runtime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace lexicorn::runtime {
namespace {

// Each body answers with a label so a test can tell which one ran.
Imp answering(std::string label)
{
    return makeImp([label](Object&) { return label; });
}

// Root <- Middle <- Leaf, with "name" defined on Root and overridden on Leaf,
// "depth" only on Middle, and a class-side "kind" only on Root.
struct Hierarchy {
    Runtime runtime;
    Class& root = runtime.registerClass("Root");
    Class& middle = runtime.registerClass("Middle", "Root");
    Class& leaf = runtime.registerClass("Leaf", "Middle");

    Hierarchy()
    {
        runtime.addMethod(root, "name", answering("Root.name"));
        runtime.addMethod(leaf, "name", answering("Leaf.name"));
        runtime.addMethod(middle, "depth", answering("Middle.depth"));
        runtime.addClassMethod(root, "kind", [](Class& cls) { return "kind of " + cls.name(); });
    }
};

TEST(RuntimeDispatch, SendFindsTheNearestImplementationUpTheChainOnEachSide)
{
    Hierarchy h;
    struct Case {
        Class* cls;
        const char* selector;
        const char* expected;  // nullptr: nothing in the chain implements it
    };
    const Case cases[] = {
        {&h.root, "name", "Root.name"},     {&h.middle, "name", "Root.name"},
        {&h.leaf, "name", "Leaf.name"},     {&h.leaf, "depth", "Middle.depth"},
        {&h.middle, "depth", "Middle.depth"}, {&h.root, "depth", nullptr},
        {&h.leaf, "kind", nullptr},  // class-side only: not an instance method
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.cls->name() + " " + c.selector);
        Object object(*c.cls);
        EXPECT_EQ(respondsTo(object, c.selector), c.expected != nullptr);
        EXPECT_EQ(h.runtime.instanceMethod(*c.cls, c.selector) != nullptr, c.expected != nullptr);
        if (c.expected)
            EXPECT_EQ(send<std::string>(object, c.selector), c.expected);
        else
            EXPECT_THROW(send<std::string>(object, c.selector), Error);
    }
    // Class methods live in their own table and receive the class.
    EXPECT_EQ(sendClass<std::string>(h.leaf, "kind"), "kind of Leaf");
    EXPECT_EQ(h.runtime.classMethod(h.leaf, "kind"), h.runtime.ownClassMethod(h.root, "kind"));
    EXPECT_EQ(h.runtime.classMethod(h.leaf, "name"), nullptr);
    EXPECT_THROW(sendClass<std::string>(h.leaf, "name"), Error);
}

TEST(RuntimeDispatch, AddMethodRefusesOnlyWhatTheClassItselfAlreadyHas)
{
    Hierarchy h;
    Method* before = h.runtime.ownInstanceMethod(h.root, "name");
    EXPECT_FALSE(h.runtime.addMethod(h.root, "name", answering("again")));
    EXPECT_EQ(h.runtime.ownInstanceMethod(h.root, "name"), before);
    Object rootObject(h.root);
    EXPECT_EQ(send<std::string>(rootObject, "name"), "Root.name");

    // Middle only inherits "name": adding overrides it for Middle and below, not for Root.
    EXPECT_TRUE(h.runtime.addMethod(h.middle, "name", answering("Middle.name")));
    Object middleObject(h.middle);
    EXPECT_EQ(send<std::string>(middleObject, "name"), "Middle.name");
    EXPECT_EQ(send<std::string>(rootObject, "name"), "Root.name");

    // The two sides are separate tables: an instance "kind" does not clash with the class "kind".
    EXPECT_TRUE(h.runtime.addMethod(h.root, "kind", answering("instance kind")));
}

TEST(RuntimeDispatch, EncodingsAreDerivedFromTheSignatureUnlessGiven)
{
    struct Case {
        const char* selector;
        Imp imp;
        std::string explicitEncoding;
        std::string expected;
    };
    const std::vector<Case> cases = {
        {"plain", makeImp([](Object&) {}), "", "v@:"},
        {"answersBool", makeImp([](Object&) { return true; }), "", "B@:"},
        {"takesObject:", makeImp([](Object&, const std::shared_ptr<Object>&) {}), "", "v@:@"},
        {"takesText:number:", makeImp([](Object&, std::string, int) { return 0.5; }), "", "d@:@i"},
        {"takesLong:double:chars:", makeImp([](Object&, long long, double, const char*) {}), "", "v@:qd*"},
        {"takesFlagPointer:", makeImp([](Object&, bool*) {}), "", "v@:^B"},
        {"takesPoint:", makeImp([](Object&, int) {}), "v@:{CGPoint=dd}", "v@:{CGPoint=dd}"},
        {"classSide", makeImp([](Class&) { return std::string(); }), "", "@@:"},
    };
    Runtime runtime;
    Class& cls = runtime.registerClass("Encoded");
    for (const Case& c : cases) {
        const std::string selector = c.selector;
        SCOPED_TRACE(c.expected);
        if (c.imp->isClassSide()) {
            ASSERT_TRUE(runtime.addClassMethod(cls, selector, c.imp, c.explicitEncoding));
            EXPECT_EQ(runtime.classMethod(cls, selector)->encoding(), c.expected);
        } else {
            ASSERT_TRUE(runtime.addMethod(cls, selector, c.imp, c.explicitEncoding));
            EXPECT_EQ(runtime.instanceMethod(cls, selector)->encoding(), c.expected);
        }
    }
}

// A host type whose methods are written against the C++ class itself.
struct Book : Object {
    using Object::Object;
    std::string title = "Emma";
};

TEST(RuntimeDispatch, ArgumentsAndResultsPassAndBodiesForAHostTypeGetThatType)
{
    Runtime runtime;
    Class& cls = runtime.registerClass("Book");
    runtime.addMethod(cls, "title", [](Book& self) { return self.title; });
    runtime.addMethod(cls, "add:times:", [](Object&, const std::string& text, int times) {
        std::string out;
        for (int i = 0; i < times; ++i)
            out += text;
        return out;
    });
    auto book = std::make_shared<Book>(cls);
    EXPECT_EQ(send<std::string>(*book, "title"), "Emma");
    EXPECT_EQ(send<std::string>(*book, "add:times:", std::string("ab"), 3), "ababab");
    const std::string text = "x";
    EXPECT_EQ(send<std::string>(*book, "add:times:", text, 2), "xx");  // lvalue const argument

    // A plain Object of the same runtime class is not a Book: refused by name, not crashed.
    Object impostor(cls);
    try {
        send<std::string>(impostor, "title");
        FAIL() << "expected an error";
    } catch (const Error& e) {
        EXPECT_NE(std::string(e.what()).find("Book"), std::string::npos) << e.what();
    }
}

TEST(RuntimeDispatch, MisuseIsReportedWithClassAndSelector)
{
    Runtime runtime;
    Class& cls = runtime.registerClass("BookViewController");
    runtime.addMethod(cls, "tableView:numberOfRowsInSection:", [](Object&, std::string, int) { return 3; });
    runtime.addClassMethod(cls, "shared", [](Class&) { return 1; });
    Object object(cls);

    struct Case {
        const char* what;
        std::string selector;
        std::function<void()> call;
    };
    const std::vector<Case> cases = {
        {"unknown selector", "closeBook", [&] { send<void>(object, "closeBook"); }},
        {"wrong result type", "tableView:numberOfRowsInSection:",
         [&] { send<long>(object, "tableView:numberOfRowsInSection:", std::string(), 1); }},
        {"wrong argument type", "tableView:numberOfRowsInSection:",
         [&] { send<int>(object, "tableView:numberOfRowsInSection:", "literal", 1); }},
        {"missing argument", "tableView:numberOfRowsInSection:",
         [&] { send<int>(object, "tableView:numberOfRowsInSection:", std::string()); }},
        {"unknown class method", "sharedInstance", [&] { sendClass<int>(cls, "sharedInstance"); }},
        {"class method with wrong result", "shared", [&] { sendClass<bool>(cls, "shared"); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        try {
            c.call();
            ADD_FAILURE() << "expected an error";
        } catch (const Error& e) {
            const std::string message = e.what();
            EXPECT_NE(message.find("BookViewController"), std::string::npos) << message;
            EXPECT_NE(message.find(c.selector), std::string::npos) << message;
        }
    }
    // The well-typed call still works after all that.
    EXPECT_EQ(send<int>(object, "tableView:numberOfRowsInSection:", std::string(), 0), 3);
}

TEST(RuntimeDispatch, ClassRegistrationMisuseIsRefused)
{
    Runtime runtime;
    runtime.registerClass("Base");
    EXPECT_THROW(runtime.registerClass("Base"), Error);
    EXPECT_THROW(runtime.registerClass("Orphan", "Missing"), Error);
    EXPECT_EQ(runtime.classNamed("Orphan"), nullptr);
    EXPECT_EQ(runtime.classNamed("Missing"), nullptr);
    Class& derived = runtime.registerClass("Derived", "Base");
    EXPECT_EQ(runtime.classNamed("Derived"), &derived);
    EXPECT_EQ(derived.superclass(), runtime.classNamed("Base"));
    EXPECT_EQ(runtime.classNamed("Base")->superclass(), nullptr);

    // An implementation for the wrong side or none at all is refused.
    EXPECT_THROW(runtime.addMethod(derived, "x", makeImp([](Class&) {})), Error);
    EXPECT_THROW(runtime.addClassMethod(derived, "y", makeImp([](Object&) {})), Error);
    EXPECT_THROW(runtime.addMethod(derived, "z", Imp()), Error);
    EXPECT_EQ(runtime.ownInstanceMethod(derived, "x"), nullptr);
}

TEST(RuntimeDispatch, SetImplementationReturnsWhatItDisplacedAndExchangeSwaps)
{
    Runtime runtime;
    Class& cls = runtime.registerClass("Swap");
    runtime.addMethod(cls, "a", answering("A"));
    runtime.addMethod(cls, "b", answering("B"));
    Method& a = *runtime.instanceMethod(cls, "a");
    Method& b = *runtime.instanceMethod(cls, "b");
    Object object(cls);

    const Imp original = runtime.implementation(a);
    const Imp replacement = answering("A2");
    EXPECT_EQ(runtime.setImplementation(a, replacement), original);
    EXPECT_EQ(runtime.implementation(a), replacement);
    EXPECT_EQ(send<std::string>(object, "a"), "A2");

    runtime.exchangeImplementations(a, b);
    EXPECT_EQ(send<std::string>(object, "a"), "B");
    EXPECT_EQ(send<std::string>(object, "b"), "A2");
    EXPECT_EQ(a.encoding(), "@@:");  // the entry keeps its own encoding and selector
}

// Sends while another thread keeps swapping; every call must run one of the two
// bodies. The sanitizer build turns an unlocked swap into a reported race.
TEST(RuntimeDispatch, SendsStayWholeWhileImplementationsAreSwapped)
{
    Runtime runtime;
    Class& cls = runtime.registerClass("Busy");
    runtime.addMethod(cls, "value", [](Object&) { return 1; });
    Method& method = *runtime.instanceMethod(cls, "value");
    const Imp one = runtime.implementation(method);
    const Imp two = makeImp([](Object&) { return 2; });

    std::atomic<bool> bad{false};
    std::thread sender([&] {
        Object object(cls);
        for (int i = 0; i < 2000; ++i) {
            const int v = send<int>(object, "value");
            if (v != 1 && v != 2)
                bad = true;
        }
    });
    for (int i = 0; i < 2000; ++i)
        runtime.setImplementation(method, i % 2 ? one : two);
    sender.join();
    EXPECT_FALSE(bad);
}

}  // namespace
}  // namespace lexicorn::runtime
