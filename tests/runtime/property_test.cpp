#include "runtime/hosting.h"

#include <gtest/gtest.h>

#include <any>
#include <memory>
#include <string>

namespace lexicorn::runtime {
namespace {

struct Added {
    Runtime runtime;
    Class& base = runtime.registerClass("ViewController");
    Class& book = runtime.registerClass("BookViewController", "ViewController");
    Class& app = runtime.registerClass("AppDelegate");

    Added()
    {
        addProperty<std::string>(book, "selectedText");
        addProperty<double>(book, "cardWidth");
        addProperty<bool>(book, "autoAudio");
        addProperty<std::shared_ptr<Object>>(book, "enDictContainer");
        addProperty<bool>(app, "enableMouse3", "^c");
        addProperty<bool>(app, "shieldDictCard", "^c");
    }
};

TEST(AddedProperty, GetterAndSetterHaveTheirNamesAndEncodings)
{
    Added a;
    struct Case {
        Class* cls;
        const char* getter;
        const char* setter;
        const char* getterEncoding;
        const char* setterEncoding;
    };
    const Case cases[] = {
        {&a.book, "selectedText", "setSelectedText:", "@@:", "v@:@"},
        {&a.book, "cardWidth", "setCardWidth:", "d@:", "v@:d"},
        {&a.book, "autoAudio", "setAutoAudio:", "B@:", "v@:B"},
        {&a.book, "enDictContainer", "setEnDictContainer:", "@@:", "v@:@"},
        {&a.app, "enableMouse3", "setEnableMouse3:", "^c@:", "v@:^c"},
        {&a.app, "shieldDictCard", "setShieldDictCard:", "^c@:", "v@:^c"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.getter);
        const Method* getter = a.runtime.ownInstanceMethod(*c.cls, c.getter);
        const Method* setter = a.runtime.ownInstanceMethod(*c.cls, c.setter);
        ASSERT_NE(getter, nullptr);
        ASSERT_NE(setter, nullptr);
        EXPECT_EQ(getter->encoding(), c.getterEncoding);
        EXPECT_EQ(setter->encoding(), c.setterEncoding);
    }
    EXPECT_EQ(a.runtime.ownInstanceMethod(a.base, "cardWidth"), nullptr);  // added on the class only
}

TEST(AddedProperty, UnsetReadsAsZeroFalseOrAbsentAndSetValuesReadBack)
{
    Added a;
    Object book(a.book);
    Object app(a.app);
    EXPECT_EQ(send<std::string>(book, "selectedText"), "");
    EXPECT_EQ(send<double>(book, "cardWidth"), 0.0);
    EXPECT_FALSE(send<bool>(book, "autoAudio"));
    EXPECT_EQ(send<std::shared_ptr<Object>>(book, "enDictContainer"), nullptr);
    EXPECT_FALSE(send<bool>(app, "enableMouse3"));

    send<void>(book, "setSelectedText:", std::string("serendipity"));
    send<void>(book, "setCardWidth:", 320.5);
    send<void>(book, "setAutoAudio:", true);
    send<void>(app, "setEnableMouse3:", true);
    EXPECT_EQ(send<std::string>(book, "selectedText"), "serendipity");
    EXPECT_EQ(send<double>(book, "cardWidth"), 320.5);
    EXPECT_TRUE(send<bool>(book, "autoAudio"));
    EXPECT_TRUE(send<bool>(app, "enableMouse3"));
    EXPECT_FALSE(send<bool>(app, "shieldDictCard"));  // a neighbour property is a separate key

    // Values belong to the object, not the class; a subclass's instance
    // keeps its own through the same accessors.
    Object otherBook(a.book);
    EXPECT_EQ(send<double>(otherBook, "cardWidth"), 0.0);
    Object scrolling(a.runtime.registerClass("ScrollingBookViewController", "BookViewController"));
    send<void>(scrolling, "setCardWidth:", 2.0);
    EXPECT_EQ(send<double>(scrolling, "cardWidth"), 2.0);

    // Setting false again is a real value, not a removal.
    send<void>(app, "setEnableMouse3:", false);
    EXPECT_FALSE(send<bool>(app, "enableMouse3"));
}

TEST(AddedProperty, ValuesAreAssociatedObjectsKeyedByTheGetterAndScalarsAreBoxedWithTheirEncoding)
{
    Added a;
    Object app(a.app);
    send<void>(app, "setEnableMouse3:", true);
    const Method* getter = a.runtime.ownInstanceMethod(a.app, "enableMouse3");
    const std::any stored = app.associatedObject(getter);
    const Box* box = std::any_cast<Box>(&stored);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->encoding, "^c");
    EXPECT_TRUE(std::any_cast<bool>(box->value));

    // A value stored under the key with another encoding is not silently reinterpreted.
    app.setAssociatedObject(getter, Box{"c", true});
    EXPECT_THROW(send<bool>(app, "enableMouse3"), Error);
}

TEST(AddedProperty, AnObjectValueIsRetainedForAsLongAsTheHostObjectLives)
{
    Added a;
    auto book = std::make_shared<Object>(a.book);
    auto container = std::make_shared<Object>(a.base);
    const std::weak_ptr<Object> watch = container;
    send<void>(*book, "setEnDictContainer:", container);
    container.reset();

    ASSERT_FALSE(watch.expired());
    EXPECT_EQ(send<std::shared_ptr<Object>>(*book, "enDictContainer"), watch.lock());

    book.reset();
    EXPECT_TRUE(watch.expired());
}

TEST(AddedProperty, AddingOverAnExistingGetterOrSetterAddsNothing)
{
    Added a;
    a.runtime.addMethod(a.base, "isUpdating", [](Object&) { return true; });
    a.runtime.addMethod(a.book, "setDictSetting:", [](Object&, int) {});
    EXPECT_FALSE(addProperty<double>(a.book, "cardWidth"));
    EXPECT_FALSE(addProperty<std::string>(a.book, "dictSetting"));
    EXPECT_EQ(a.runtime.ownInstanceMethod(a.book, "dictSetting"), nullptr);
    // Only an inherited method of the same name: the property overrides it on the class.
    EXPECT_TRUE(addProperty<bool>(a.book, "isUpdating"));
    Object book(a.book);
    EXPECT_FALSE(send<bool>(book, "isUpdating"));
}

}  // namespace
}  // namespace lexicorn::runtime
