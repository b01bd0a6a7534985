#pragma once

// The one way the plug-in replaces a host method: a typed handle per
// replaced method, declared once with the method's signature.
//
//   constinit runtime::Hook<void(std::string)> launch{"AppDelegate", "applicationDidFinishLaunching:"};
//   launch.install([](runtime::Object& self, std::string note) { ...; launch.callPrevious(self, note); });
//
// The handle keeps what the replacement displaced and is the only way to
// call it. A host method typed otherwise than the handle says keeps its own
// implementation: install() reports it on standard error and returns false,
// so one mismatch never stops the rest of the plug-in from loading.

#include "runtime/hosting.h"

#include <string_view>
#include <type_traits>
#include <utility>

namespace lexicorn::runtime {

// What install() does when no class in the chain has the selector.
enum class WhenAbsent { Skip, Add };

namespace detail {

// Installs the implementation under the hosting rules (see
// _logos_register_hook), or adds it when the selector is absent and the caller
// asks for that. Logs and returns false when the host's method is typed
// otherwise or the class is absent.
bool installHook(const char* className, const char* selector, Imp imp, HookSlot& slot, WhenAbsent whenAbsent,
                 Runtime& runtime);

}  // namespace detail

template <class Signature>
class Hook;

template <class R, class... Args>
class Hook<R(Args...)> {
    static_assert((std::is_same_v<Args, std::decay_t<Args>> && ...), "declare hooked methods with value parameters");

public:
    // Constant-initialised, so a handle at namespace scope is ready before
    // any load-time code runs.
    constexpr Hook(const char* className, const char* selector) : className_(className), selector_(selector) {}
    Hook(const Hook&) = delete;
    Hook& operator=(const Hook&) = delete;

    // Installs body, called as body(Object& self, Args...) -> R, in place of
    // the host's method:
    // - the class itself has it: replaced, the host's implementation kept;
    // - only an ancestor has it: added on the class, and callPrevious reaches
    //   the superclass recorded now;
    // - no class in the chain has it: skipped, or added with WhenAbsent::Add;
    // - the class is absent, or the host's method is typed otherwise: the
    //   host is left as it is and install returns false.
    template <class Body>
    bool install(Body body, WhenAbsent whenAbsent = WhenAbsent::Skip, Runtime& runtime = Runtime::shared())
    {
        Imp imp = makeImp([body = std::move(body)](Object& self, Args... args) -> R {
            return body(self, std::move(args)...);
        });
        return detail::installHook(className_, selector_, std::move(imp), slot_, whenAbsent, runtime);
    }

    // Calls what the replacement displaced, or the recorded superclass's
    // implementation when the method was only inherited.
    R callPrevious(Object& self, Args... args) const
    {
        return runtime::callPrevious<R>(slot_, self, selector_, std::move(args)...);
    }

    const char* className() const { return className_; }
    const char* selector() const { return selector_; }

private:
    const char* className_;
    const char* selector_;
    HookSlot slot_;
};

}  // namespace lexicorn::runtime
