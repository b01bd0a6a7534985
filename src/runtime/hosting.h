#pragma once

// How the plug-in changes host classes: replacing methods while keeping the
// previous implementation callable, exchanging two methods, and adding
// properties whose values live on the host object.

#include "runtime/runtime.h"

#include <string>
#include <string_view>
#include <type_traits>

namespace lexicorn::runtime {

// What one replaced host method keeps: the implementation it displaced (empty
// when the method was added because only an ancestor had it) and the class's
// superclass as it was when the replacement was registered.
struct HookSlot {
    Imp previous;
    const Class* superclass = nullptr;
};

using HookOutcome = Runtime::HookOutcome;

// Registers a replacement for an instance method:
// - class absent, or no class in its chain has the selector: nothing happens;
// - the class itself has it: the replacement is installed and the displaced
//   implementation is stored in slot.previous, read in the same locked step;
// - only an ancestor has it: the replacement is added on the class itself with
//   the ancestor's encoding and slot.previous stays empty.
// When the class exists, slot.superclass records its superclass.
// Throws Error for a null or class-side replacement, and for one whose C++
// signature differs from the host method's.
HookOutcome _logos_register_hook(std::string_view className, std::string_view selector, Imp replacement,
                                 HookSlot& slot, Runtime& runtime = Runtime::shared());

// Calls what a replacement displaced: the slot's implementation when it holds
// one, otherwise the recorded superclass's implementation of the selector
// (looked up from that class upwards, never from the receiver's class, so a
// subclass instance does not loop back into the replacement). Throws Error
// naming class and selector when neither exists or the types differ.
template <class R, class... Args>
R callPrevious(const Imp& slot, const Class* recordedSuperclass, Object& receiver, std::string_view selector,
               Args&&... args)
{
    static_assert(!std::is_reference_v<R>, "results are returned by value");
    using Typed = TypedImplementation<Object, std::remove_cv_t<R>, std::decay_t<Args>...>;
    if (slot) {
        return detail::checkedImp<Typed>(slot, receiver.objectClass(), selector, false)
            .call(receiver, std::forward<Args>(args)...);
    }
    if (!recordedSuperclass)
        detail::throwUnknownSelector(receiver.objectClass(), selector, false);
    const Imp inherited = recordedSuperclass->runtime().resolve(*recordedSuperclass, selector, false);
    return detail::checkedImp<Typed>(inherited, *recordedSuperclass, selector, false)
        .call(receiver, std::forward<Args>(args)...);
}

template <class R, class... Args>
R callPrevious(const HookSlot& slot, Object& receiver, std::string_view selector, Args&&... args)
{
    return callPrevious<R>(slot.previous, slot.superclass, receiver, selector, std::forward<Args>(args)...);
}

// Exchanges the implementations of instance method selectorA of classA and
// selectorB of classB (each looked up the chain). Does nothing and returns false
// when a class is null or either method is missing.
bool tk_hookMethod(Class* classA, std::string_view selectorA, Class* classB, std::string_view selectorB);
// The same for class methods.
bool tk_hookClassMethod(Class* classA, std::string_view selectorA, Class* classB, std::string_view selectorB);

// "set" + the name with its first letter capitalised + ":".
std::string setterName(std::string_view property);

// A scalar property's stored value: boxed together with the encoding it was
// declared with, which the getter checks when reading it back.
struct Box {
    std::string encoding;
    std::any value;
};

// Adds a property of C++ type T to the class: a getter named `name` with
// encoding "<enc>@:" and a setter named setterName(name) with "v@:<enc>", where
// <enc> defaults to T's encoding ("@" objects, "d" double, ...) and can be given
// explicitly (the host's booleans declared as "^c"). Values are associated
// objects of the receiver keyed by the getter's Method: objects (class types)
// are stored as they are, scalars as a Box. A property never set reads as T{}
// (zero, false, empty, null). Returns false, adding nothing, when the class
// itself already has the getter or the setter.
template <class T>
bool addProperty(Class& cls, std::string_view name, std::string_view encoding = {})
{
    static_assert(std::is_same_v<T, std::remove_cvref_t<T>>, "declare the property with a plain value type");
    static_assert(std::is_default_constructible_v<T>, "an unset property reads as T{}");
    const std::string valueEncoding = encoding.empty() ? encodingOf<T>() : std::string(encoding);
    constexpr bool boxed = std::is_arithmetic_v<T> || std::is_enum_v<T>;
    return cls.runtime().addAccessors(
        cls, name, setterName(name), valueEncoding,
        [valueEncoding, property = std::string(name)](const Method& getterMethod) {
            const void* key = &getterMethod;
            Imp getter = makeImp([key, valueEncoding, property](Object& self) -> T {
                const std::any stored = self.associatedObject(key);
                if (!stored.has_value())
                    return T{};
                if constexpr (boxed) {
                    const Box* box = std::any_cast<Box>(&stored);
                    if (box && box->encoding == valueEncoding) {
                        if (const T* value = std::any_cast<T>(&box->value))
                            return *value;
                    }
                } else {
                    if (const T* value = std::any_cast<T>(&stored))
                        return *value;
                }
                throw Error(self.objectClass().name() + " property " + property +
                            " holds a value of another type than " + valueEncoding);
            });
            Imp setter = makeImp([key, valueEncoding](Object& self, T value) {
                if constexpr (boxed)
                    self.setAssociatedObject(key, Box{valueEncoding, std::move(value)});
                else
                    self.setAssociatedObject(key, std::move(value));
            });
            return std::pair{std::move(getter), std::move(setter)};
        });
}

}  // namespace lexicorn::runtime
