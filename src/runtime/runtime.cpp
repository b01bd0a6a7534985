#include "runtime/runtime.h"

#include <cxxabi.h>

#include <cstdlib>

namespace lexicorn::runtime {

namespace detail {

std::string demangle(const std::type_info& type)
{
    int status = 0;
    char* readable = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
    std::string result = (status == 0 && readable) ? readable : type.name();
    std::free(readable);
    return result;
}

namespace {

// "-[Class selector]" for instance methods, "+[Class selector]" for class methods.
std::string describeCall(const Class& cls, std::string_view selector, bool classSide)
{
    return std::string(classSide ? "+[" : "-[") + cls.name() + " " + std::string(selector) + "]";
}

}  // namespace

void throwUnknownSelector(const Class& cls, std::string_view selector, bool classSide)
{
    throw Error(describeCall(cls, selector, classSide) + ": unrecognized selector");
}

void throwSignatureMismatch(const Class& cls, std::string_view selector, bool classSide, const Implementation& imp,
                            const std::string& sentEncoding, const std::string& sentSignature)
{
    throw Error(describeCall(cls, selector, classSide) + ": sent as " + sentEncoding + " (" + sentSignature +
                ") but implemented as " + imp.encoding() + " (" + imp.readableSignature() + ")");
}

void throwWrongReceiver(const Object& receiver, const std::type_info& expected)
{
    throw Error("an object of class " + receiver.objectClass().name() + " is not a " + demangle(expected));
}

}  // namespace detail

bool Class::isSubclassOf(const Class& other) const
{
    for (const Class* cls = this; cls; cls = cls->superclass_) {
        if (cls == &other)
            return true;
    }
    return false;
}

void Object::setAssociatedObject(const void* key, std::any value)
{
    std::any displaced;  // released after the lock, in case its destructor touches this object
    std::lock_guard lock(associationsMutex_);
    if (!value.has_value()) {
        if (auto it = associations_.find(key); it != associations_.end()) {
            displaced = std::move(it->second);
            associations_.erase(it);
        }
        return;
    }
    std::any& slot = associations_[key];
    displaced = std::exchange(slot, std::move(value));
}

std::any Object::associatedObject(const void* key) const
{
    std::lock_guard lock(associationsMutex_);
    if (auto it = associations_.find(key); it != associations_.end())
        return it->second;
    return {};
}

Runtime& Runtime::shared()
{
    static Runtime runtime;
    return runtime;
}

Class& Runtime::registerClass(std::string_view name, std::string_view superclassName)
{
    if (name.empty())
        throw Error("a class needs a name");
    std::unique_lock lock(mutex_);
    if (classes_.find(name) != classes_.end())
        throw Error("class " + std::string(name) + " is already registered");
    Class* superclass = nullptr;
    if (!superclassName.empty()) {
        auto it = classes_.find(superclassName);
        if (it == classes_.end())
            throw Error("superclass " + std::string(superclassName) + " of " + std::string(name) +
                        " is not registered");
        superclass = it->second.get();
    }
    auto cls = std::unique_ptr<Class>(new Class(*this, std::string(name), superclass));
    Class& result = *cls;
    classes_.emplace(std::string(name), std::move(cls));
    return result;
}

Class* Runtime::classNamed(std::string_view name) const
{
    std::shared_lock lock(mutex_);
    auto it = classes_.find(name);
    return it == classes_.end() ? nullptr : it->second.get();
}

Method* Runtime::lookupLocked(const Class& cls, std::string_view selector, bool classSide) const
{
    for (const Class* c = &cls; c; c = c->superclass_) {
        const Class::Table& table = classSide ? c->classMethods_ : c->instanceMethods_;
        if (auto it = table.find(selector); it != table.end())
            return it->second.get();
    }
    return nullptr;
}

Method* Runtime::instanceMethod(const Class& cls, std::string_view selector) const
{
    std::shared_lock lock(mutex_);
    return lookupLocked(cls, selector, false);
}

Method* Runtime::classMethod(const Class& cls, std::string_view selector) const
{
    std::shared_lock lock(mutex_);
    return lookupLocked(cls, selector, true);
}

Method* Runtime::ownInstanceMethod(const Class& cls, std::string_view selector) const
{
    std::shared_lock lock(mutex_);
    auto it = cls.instanceMethods_.find(selector);
    return it == cls.instanceMethods_.end() ? nullptr : it->second.get();
}

Method* Runtime::ownClassMethod(const Class& cls, std::string_view selector) const
{
    std::shared_lock lock(mutex_);
    auto it = cls.classMethods_.find(selector);
    return it == cls.classMethods_.end() ? nullptr : it->second.get();
}

bool Runtime::addLocked(Class& cls, std::string_view selector, Imp imp, std::string_view encoding, bool classSide)
{
    if (!imp)
        throw Error("-[" + cls.name() + " " + std::string(selector) + "]: null implementation");
    if (imp->isClassSide() != classSide) {
        throw Error(std::string(classSide ? "+[" : "-[") + cls.name() + " " + std::string(selector) +
                    "]: the implementation's receiver is " + (classSide ? "an object" : "a class"));
    }
    Class::Table& table = classSide ? cls.classMethods_ : cls.instanceMethods_;
    if (table.find(selector) != table.end())
        return false;
    std::string methodEncoding = encoding.empty() ? imp->encoding() : std::string(encoding);
    table.emplace(std::string(selector), std::unique_ptr<Method>(new Method(cls, std::string(selector),
                                                                             std::move(methodEncoding),
                                                                             std::move(imp), classSide)));
    return true;
}

bool Runtime::addMethod(Class& cls, std::string_view selector, Imp imp, std::string_view encoding)
{
    std::unique_lock lock(mutex_);
    return addLocked(cls, selector, std::move(imp), encoding, false);
}

bool Runtime::addClassMethod(Class& cls, std::string_view selector, Imp imp, std::string_view encoding)
{
    std::unique_lock lock(mutex_);
    return addLocked(cls, selector, std::move(imp), encoding, true);
}

Imp Runtime::implementation(const Method& method) const
{
    std::shared_lock lock(mutex_);
    return method.imp_;
}

Imp Runtime::setImplementation(Method& method, Imp imp)
{
    if (!imp)
        throw Error("-[" + method.owner().name() + " " + method.selector() + "]: null implementation");
    std::unique_lock lock(mutex_);
    return std::exchange(method.imp_, std::move(imp));
}

void Runtime::exchangeImplementations(Method& first, Method& second)
{
    std::unique_lock lock(mutex_);
    std::swap(first.imp_, second.imp_);
}

Imp Runtime::resolve(const Class& cls, std::string_view selector, bool classSide) const
{
    std::shared_lock lock(mutex_);
    const Method* method = lookupLocked(cls, selector, classSide);
    return method ? method->imp_ : nullptr;
}

Runtime::HookOutcome Runtime::hook(std::string_view className, std::string_view selector, Imp replacement,
                                   Imp& displaced, Class*& superclass)
{
    std::unique_lock lock(mutex_);
    auto it = classes_.find(className);
    if (it == classes_.end())
        return HookOutcome::ClassAbsent;
    Class& cls = *it->second;
    superclass = cls.superclass_;
    if (!replacement || replacement->isClassSide())
        throw Error("-[" + cls.name() + " " + std::string(selector) + "]: the replacement must be an instance method");
    Method* found = lookupLocked(cls, selector, false);
    if (!found)
        return HookOutcome::SelectorAbsent;
    // A replacement typed differently from the host's method would fail on
    // every call; refuse it now, while the table is being installed.
    if (found->imp_ && found->imp_->signature() != replacement->signature())
        throw Error("-[" + cls.name() + " " + std::string(selector) + "]: the replacement takes " +
                    replacement->readableSignature() + " but the host's method takes " +
                    found->imp_->readableSignature());
    if (&found->owner() == &cls) {
        displaced = std::exchange(found->imp_, std::move(replacement));
        return HookOutcome::Replaced;
    }
    addLocked(cls, selector, std::move(replacement), found->encoding_, false);
    return HookOutcome::Added;
}

bool Runtime::addAccessors(Class& cls, std::string_view getter, std::string_view setter,
                           std::string_view valueEncoding,
                           const std::function<std::pair<Imp, Imp>(const Method& getter)>& make)
{
    std::unique_lock lock(mutex_);
    if (cls.instanceMethods_.count(getter) || cls.instanceMethods_.count(setter))
        return false;
    // The getter's Method exists before its body so the body can use its address as the key.
    auto getterMethod = std::unique_ptr<Method>(
        new Method(cls, std::string(getter), std::string(valueEncoding) + "@:", nullptr, false));
    auto [getterImp, setterImp] = make(*getterMethod);
    getterMethod->imp_ = std::move(getterImp);
    cls.instanceMethods_.emplace(std::string(getter), std::move(getterMethod));
    cls.instanceMethods_.emplace(
        std::string(setter),
        std::unique_ptr<Method>(new Method(cls, std::string(setter), "v@:" + std::string(valueEncoding),
                                           std::move(setterImp), false)));
    return true;
}

bool respondsTo(const Object& receiver, std::string_view selector)
{
    const Class& cls = receiver.objectClass();
    return cls.runtime().resolve(cls, selector, false) != nullptr;
}

}  // namespace lexicorn::runtime
