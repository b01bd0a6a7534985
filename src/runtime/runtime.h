#pragma once

// The object runtime, in five lines:
// 1. A Class is registered by name under its superclass and owns two method tables
//    (instance side and class side) keyed by selector string, e.g. "closeBook".
// 2. A Method pairs a type-encoding string with an Implementation: a type-erased
//    std::function whose C++ signature is checked on every call, so a mismatch throws.
// 3. send<R>(object, selector, args...) looks the selector up from the object's class
//    towards the root; a missing selector or wrong types throw Error naming both.
// 4. Implementations are swapped, added and exchanged under one lock (hosting.h);
//    a call already running keeps the implementation it started with.
// 5. Objects live in std::shared_ptr and own their associated values (std::any);
//    added properties are stored there.

#include "runtime/encoding.h"

#include <any>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <typeinfo>
#include <unordered_map>
#include <utility>

namespace lexicorn::runtime {

class Class;
class Object;
class Runtime;

// A programming error in the use of the runtime: unknown selector, wrong
// signature, duplicate class, receiver of the wrong C++ type.
class Error : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

namespace detail {
template <class Receiver, class R, class... Args>
struct SignatureTag {};
std::string demangle(const std::type_info& type);
}  // namespace detail

// A method body with its C++ signature erased. The receiver is Object& for
// instance methods and Class& for class methods; arguments are compared after
// dropping const and references.
class Implementation {
public:
    virtual ~Implementation() = default;
    std::type_index signature() const { return signature_; }
    // The encoding the C++ signature maps to (used when none is given explicitly).
    const std::string& encoding() const { return encoding_; }
    // The C++ signature in readable form, for error messages.
    const std::string& readableSignature() const { return readable_; }
    bool isClassSide() const { return classSide_; }

protected:
    Implementation(std::type_index signature, std::string encoding, std::string readable, bool classSide)
        : signature_(signature), encoding_(std::move(encoding)), readable_(std::move(readable)), classSide_(classSide)
    {
    }

private:
    std::type_index signature_;
    std::string encoding_;
    std::string readable_;
    bool classSide_;
};

template <class Receiver, class R, class... Args>
class TypedImplementation final : public Implementation {
public:
    using Function = std::function<R(Receiver&, Args...)>;
    static std::type_index signatureKey() { return typeid(detail::SignatureTag<Receiver, R, Args...>); }
    static std::string readable() { return detail::demangle(typeid(R(Receiver&, Args...))); }
    static std::string derivedEncoding() { return methodEncoding<R, Args...>(); }

    explicit TypedImplementation(Function function)
        : Implementation(signatureKey(), derivedEncoding(), readable(), std::is_same_v<Receiver, Class>),
          function_(std::move(function))
    {
    }

    template <class... CallArgs>
    R call(Receiver& receiver, CallArgs&&... args) const
    {
        return function_(receiver, std::forward<CallArgs>(args)...);
    }

private:
    Function function_;
};

// Implementations are shared and immutable; replacing one swaps the pointer.
using Imp = std::shared_ptr<const Implementation>;

namespace detail {

[[noreturn]] void throwWrongReceiver(const Object& receiver, const std::type_info& expected);

template <class Fn>
struct ImpMaker;

template <class R, class SelfRef, class... Args>
struct ImpMaker<std::function<R(SelfRef, Args...)>> {
    static_assert(std::is_lvalue_reference_v<SelfRef>, "the first parameter is the receiver, taken by reference");
    using Self = std::remove_cvref_t<SelfRef>;
    static constexpr bool classSide = std::is_same_v<Self, Class>;
    static_assert(classSide || std::is_base_of_v<Object, Self>, "the receiver must be Class& or an Object type");
    static_assert(!std::is_reference_v<R>, "return results by value");
    static_assert(((!std::is_lvalue_reference_v<Args> || std::is_const_v<std::remove_reference_t<Args>>) && ...),
                  "arguments are passed by value or const reference");
    using Receiver = std::conditional_t<classSide, Class, Object>;
    using Typed = TypedImplementation<Receiver, std::remove_cv_t<R>, std::decay_t<Args>...>;

    template <class F>
    static Imp make(F&& f)
    {
        if constexpr (std::is_same_v<Self, Receiver>) {
            return std::make_shared<const Typed>(typename Typed::Function(std::forward<F>(f)));
        } else {
            // A body written for a host subclass checks the receiver's C++ type first.
            return std::make_shared<const Typed>(
                [fn = std::decay_t<F>(std::forward<F>(f))](Object& receiver, std::decay_t<Args>... args) mutable -> R {
                    auto* self = dynamic_cast<Self*>(&receiver);
                    if (!self)
                        throwWrongReceiver(receiver, typeid(Self));
                    return fn(*self, std::move(args)...);
                });
        }
    }
};

}  // namespace detail

// Wraps a lambda or function into an implementation. Its first parameter is the
// receiver: Object& (or a host type derived from Object) for instance methods,
// Class& for class methods. Generic lambdas are not accepted.
template <class F>
Imp makeImp(F&& f)
{
    using Fn = decltype(std::function{std::declval<std::decay_t<F>>()});
    return detail::ImpMaker<Fn>::make(std::forward<F>(f));
}

// One entry of a method table. Its implementation is read and replaced only
// through the Runtime, under its lock.
class Method {
public:
    Method(const Method&) = delete;
    Method& operator=(const Method&) = delete;

    const std::string& selector() const { return selector_; }
    const std::string& encoding() const { return encoding_; }
    Class& owner() const { return *owner_; }
    bool isClassMethod() const { return classSide_; }

private:
    friend class Runtime;
    Method(Class& owner, std::string selector, std::string encoding, Imp imp, bool classSide)
        : owner_(&owner), selector_(std::move(selector)), encoding_(std::move(encoding)), imp_(std::move(imp)),
          classSide_(classSide)
    {
    }

    Class* owner_;
    std::string selector_;
    std::string encoding_;
    Imp imp_;
    bool classSide_;
};

class Class {
public:
    Class(const Class&) = delete;
    Class& operator=(const Class&) = delete;

    const std::string& name() const { return name_; }
    // nullptr for a root class.
    Class* superclass() const { return superclass_; }
    Runtime& runtime() const { return *runtime_; }
    // True for the class itself and every class below it.
    bool isSubclassOf(const Class& other) const;

private:
    friend class Runtime;
    using Table = std::map<std::string, std::unique_ptr<Method>, std::less<>>;
    Class(Runtime& runtime, std::string name, Class* superclass)
        : runtime_(&runtime), name_(std::move(name)), superclass_(superclass)
    {
    }

    Runtime* runtime_;
    std::string name_;
    Class* superclass_;
    Table instanceMethods_;
    Table classMethods_;
};

// The base of every object the runtime dispatches on. Host objects derive from
// it and are created with std::make_shared, so weak_from_this() works.
//
// Associated values: any key with a stable address (for added properties, the
// getter's Method) maps to a std::any that the object owns. The object keeps the
// value alive until it is replaced or the object is destroyed (retain policy);
// a std::shared_ptr stored inside is a strong reference.
class Object : public std::enable_shared_from_this<Object> {
public:
    explicit Object(Class& objectClass) : class_(&objectClass) {}
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    Class& objectClass() const { return *class_; }

    // An empty value removes the association.
    void setAssociatedObject(const void* key, std::any value);
    // Empty when nothing is stored under the key.
    std::any associatedObject(const void* key) const;

private:
    Class* class_;
    // The lock only keeps concurrent access memory-safe; readers get a copy.
    mutable std::mutex associationsMutex_;
    std::unordered_map<const void*, std::any> associations_;
};

// The registry of classes and their methods. Runtime::shared() is the process's
// one registry; tests make their own. Classes and methods are never removed, so
// Class* and Method* stay valid for the runtime's lifetime.
class Runtime {
public:
    Runtime() = default;
    Runtime(const Runtime&) = delete;
    Runtime& operator=(const Runtime&) = delete;

    static Runtime& shared();

    // Throws Error when the name is taken or the superclass is not registered.
    // An empty superclass name makes a root class.
    Class& registerClass(std::string_view name, std::string_view superclassName = {});
    // nullptr when absent.
    Class* classNamed(std::string_view name) const;

    // Lookup from the class up the superclass chain; nullptr when no class has it.
    Method* instanceMethod(const Class& cls, std::string_view selector) const;
    Method* classMethod(const Class& cls, std::string_view selector) const;
    // Lookup in the class's own table only.
    Method* ownInstanceMethod(const Class& cls, std::string_view selector) const;
    Method* ownClassMethod(const Class& cls, std::string_view selector) const;

    // Adds a method to the class's own table; false (and nothing changes) when the
    // class itself already has the selector. An inherited selector is overridden.
    // An empty encoding means the one derived from the implementation's C++ type.
    // Throws Error for a null implementation or one for the other side.
    bool addMethod(Class& cls, std::string_view selector, Imp imp, std::string_view encoding = {});
    bool addClassMethod(Class& cls, std::string_view selector, Imp imp, std::string_view encoding = {});
    template <class F>
        requires(!std::is_convertible_v<F, Imp>)
    bool addMethod(Class& cls, std::string_view selector, F&& body, std::string_view encoding = {})
    {
        return addMethod(cls, selector, makeImp(std::forward<F>(body)), encoding);
    }
    template <class F>
        requires(!std::is_convertible_v<F, Imp>)
    bool addClassMethod(Class& cls, std::string_view selector, F&& body, std::string_view encoding = {})
    {
        return addClassMethod(cls, selector, makeImp(std::forward<F>(body)), encoding);
    }

    Imp implementation(const Method& method) const;
    // Installs imp and returns the one it displaced, in one step under the lock.
    Imp setImplementation(Method& method, Imp imp);
    void exchangeImplementations(Method& first, Method& second);

    // The implementation a call would run, or nullptr.
    Imp resolve(const Class& cls, std::string_view selector, bool classSide) const;

    // Replaces the class's own method (returning what it displaced), or, when only
    // an ancestor has the selector, adds imp on the class with the ancestor's
    // encoding. Used by _logos_register_hook (hosting.h), which explains the cases.
    enum class HookOutcome { ClassAbsent, SelectorAbsent, Replaced, Added };
    HookOutcome hook(std::string_view className, std::string_view selector, Imp replacement, Imp& displaced,
                     Class*& superclass);

    // Adds a getter and its setter together; false when the class itself has
    // either. make receives the getter's Method (the property's storage key)
    // and returns the two implementations.
    bool addAccessors(Class& cls, std::string_view getter, std::string_view setter, std::string_view valueEncoding,
                      const std::function<std::pair<Imp, Imp>(const Method& getter)>& make);

private:
    Method* lookupLocked(const Class& cls, std::string_view selector, bool classSide) const;
    bool addLocked(Class& cls, std::string_view selector, Imp imp, std::string_view encoding, bool classSide);

    mutable std::shared_mutex mutex_;
    std::map<std::string, std::unique_ptr<Class>, std::less<>> classes_;
};

namespace detail {

[[noreturn]] void throwUnknownSelector(const Class& cls, std::string_view selector, bool classSide);
[[noreturn]] void throwSignatureMismatch(const Class& cls, std::string_view selector, bool classSide,
                                         const Implementation& imp, const std::string& sentEncoding,
                                         const std::string& sentSignature);

// Checks that imp exists and has exactly the Typed signature; cls and selector
// name the call in the error message.
template <class Typed>
const Typed& checkedImp(const Imp& imp, const Class& cls, std::string_view selector, bool classSide)
{
    if (!imp)
        throwUnknownSelector(cls, selector, classSide);
    if (imp->signature() != Typed::signatureKey())
        throwSignatureMismatch(cls, selector, classSide, *imp, Typed::derivedEncoding(), Typed::readable());
    return static_cast<const Typed&>(*imp);
}

}  // namespace detail

// Sends an instance message: runs the implementation found on the receiver's
// class or its nearest ancestor. Argument types must match the implementation's
// exactly once const and references are dropped (convert at the call site, e.g.
// pass std::string rather than a literal). Throws Error naming class and selector
// when nothing implements it or the types differ.
template <class R, class... Args>
R send(Object& receiver, std::string_view selector, Args&&... args)
{
    static_assert(!std::is_reference_v<R>, "results are returned by value");
    using Typed = TypedImplementation<Object, std::remove_cv_t<R>, std::decay_t<Args>...>;
    const Class& cls = receiver.objectClass();
    const Imp imp = cls.runtime().resolve(cls, selector, false);
    return detail::checkedImp<Typed>(imp, cls, selector, false).call(receiver, std::forward<Args>(args)...);
}

// The same for class methods; the implementation receives the class.
template <class R, class... Args>
R sendClass(Class& receiver, std::string_view selector, Args&&... args)
{
    static_assert(!std::is_reference_v<R>, "results are returned by value");
    using Typed = TypedImplementation<Class, std::remove_cv_t<R>, std::decay_t<Args>...>;
    const Imp imp = receiver.runtime().resolve(receiver, selector, true);
    return detail::checkedImp<Typed>(imp, receiver, selector, true).call(receiver, std::forward<Args>(args)...);
}

bool respondsTo(const Object& receiver, std::string_view selector);

}  // namespace lexicorn::runtime
