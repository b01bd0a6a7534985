#include "runtime/hosting.h"

#include <cctype>

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
