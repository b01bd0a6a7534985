#pragma once

// Replacements that only hand the call on to the host's own implementation.
// They stand for host methods whose plug-in behaviour belongs to features
// not built into the plug-in, so the host behaves as without it.

#include "runtime/hosting.h"

#include <deque>
#include <string>

namespace lexicorn {

// One replaced host method: class, selector, body and the slot its previous
// implementation is kept in.
struct Replacement {
    const char* className;
    const char* selector;
    runtime::Imp body;
    runtime::HookSlot* slot;
};

// A slot that lives as long as the process; registration fills it.
inline runtime::HookSlot& newHookSlot()
{
    static std::deque<runtime::HookSlot> slots;  // a deque keeps addresses stable
    return slots.emplace_back();
}

// A replacement of a host method taking Args and returning R that calls
// the previous implementation with the same arguments.
template <class R, class... Args>
Replacement passThrough(const char* className, const char* selector)
{
    runtime::HookSlot* slot = &newHookSlot();
    auto body = [slot, selector](runtime::Object& self, Args... args) -> R {
        return runtime::callPrevious<R>(*slot, self, selector, std::move(args)...);
    };
    return {className, selector, runtime::makeImp(std::move(body)), slot};
}

// What a category's load method does for a pass-through exchange: adds
// "hook_" + selector, whose body calls "hook_" + selector again (after the
// exchange that runs the host's original), then exchanges the two. Nothing
// happens when the class or its method is absent or typed otherwise.
template <class R, class... Args>
bool exchangeWithPassThrough(const char* className, const char* selector,
                             runtime::Runtime& runtime = runtime::Runtime::shared())
{
    runtime::Class* cls = runtime.classNamed(className);
    const runtime::Method* original = cls ? runtime.instanceMethod(*cls, selector) : nullptr;
    const std::string hookSelector = std::string("hook_") + selector;
    auto body = [hookSelector](runtime::Object& self, Args... args) -> R {
        return runtime::send<R>(self, hookSelector, std::move(args)...);
    };
    const runtime::Imp imp = runtime::makeImp(std::move(body));
    if (!original || runtime.implementation(*original)->signature() != imp->signature())
        return false;
    return runtime.addMethod(*cls, hookSelector, imp) && runtime::tk_hookMethod(cls, selector, cls, hookSelector);
}

}  // namespace lexicorn
