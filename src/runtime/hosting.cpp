#include "runtime/hosting.h"
#include "runtime/hook.h"

#include <cctype>
#include <cstdio>

namespace lexicorn::runtime {

HookOutcome _logos_register_hook(std::string_view className, std::string_view selector, Imp replacement,
                                 HookSlot& slot, Runtime& runtime)
{
    Imp displaced;
    Class* superclass = nullptr;
    const HookOutcome outcome = runtime.hook(className, selector, std::move(replacement), displaced, superclass);
    if (outcome == HookOutcome::ClassAbsent)
        return outcome;
    slot.superclass = superclass;
    if (outcome == HookOutcome::Replaced)
        slot.previous = std::move(displaced);
    return outcome;
}

namespace detail {

bool installHook(const char* className, const char* selector, Imp imp, HookSlot& slot, WhenAbsent whenAbsent,
                 Runtime& runtime)
{
    try {
        const HookOutcome outcome = _logos_register_hook(className, selector, imp, slot, runtime);
        if (outcome == HookOutcome::SelectorAbsent && whenAbsent == WhenAbsent::Add)
            return runtime.addMethod(*runtime.classNamed(className), selector, std::move(imp));
        return outcome == HookOutcome::Replaced || outcome == HookOutcome::Added;
    } catch (const Error& error) {
        // One line, written whole, so lines from other threads do not cut into it.
        const std::string line = std::string("lexicorn: ") + error.what() + "; the host's own is kept\n";
        std::fputs(line.c_str(), stderr);
        return false;
    }
}

}  // namespace detail

namespace {

bool exchange(Class* classA, std::string_view selectorA, Class* classB, std::string_view selectorB, bool classSide)
{
    if (!classA || !classB)
        return false;
    Runtime& runtime = classA->runtime();
    Method* a = classSide ? runtime.classMethod(*classA, selectorA) : runtime.instanceMethod(*classA, selectorA);
    Method* b = classSide ? classB->runtime().classMethod(*classB, selectorB)
                          : classB->runtime().instanceMethod(*classB, selectorB);
    if (!a || !b || &classA->runtime() != &classB->runtime())
        return false;
    runtime.exchangeImplementations(*a, *b);
    return true;
}

}  // namespace

bool tk_hookMethod(Class* classA, std::string_view selectorA, Class* classB, std::string_view selectorB)
{
    return exchange(classA, selectorA, classB, selectorB, false);
}

bool tk_hookClassMethod(Class* classA, std::string_view selectorA, Class* classB, std::string_view selectorB)
{
    return exchange(classA, selectorA, classB, selectorB, true);
}

std::string setterName(std::string_view property)
{
    std::string name = "set";
    name += property;
    if (name.size() > 3)
        name[3] = char(std::toupper(static_cast<unsigned char>(name[3])));
    name += ':';
    return name;
}

}  // namespace lexicorn::runtime
