#include "lexicorn/settings/middle_button_monitor.h"

#include "foundation/event_types.h"

#include <cstdint>
#include <functional>

namespace lexicorn {

namespace {

using runtime::Object;
using ObjectRef = std::shared_ptr<Object>;
using EventHandler = std::function<ObjectRef(ObjectRef)>;

constexpr std::uint64_t otherMouseMask = (1ull << otherMouseDown) | (1ull << otherMouseUp) | (1ull << otherMouseDragged);

void holdSpace(Object& delegate, bool held)
{
    runtime::send<void>(delegate, "setSpacePressed:", held);
    if (const ObjectRef view = runtime::send<ObjectRef>(delegate, "chameleonNSView"))
        runtime::send<void>(*view, "triggleMouseOver");
}

ObjectRef panWithMiddleButton(const std::weak_ptr<Object>& weakDelegate, ObjectRef event)
{
    const ObjectRef delegate = weakDelegate.lock();
    if (!delegate || !event || !runtime::send<bool>(*delegate, "enableMouse3"))
        return event;
    switch (runtime::send<int>(*event, "type")) {
    case otherMouseDown:
        runtime::send<void>(*event, "setType:", int(leftMouseDown));
        holdSpace(*delegate, true);
        break;
    case otherMouseUp:
        runtime::send<void>(*event, "setType:", int(leftMouseUp));
        holdSpace(*delegate, false);
        break;
    case otherMouseDragged:
        runtime::send<void>(*event, "setType:", int(leftMouseDragged));
        break;
    default:
        break;
    }
    return event;
}

}  // namespace

void installMiddleButtonMonitor(Object& delegate)
{
    runtime::Runtime& runtime = runtime::Runtime::shared();
    runtime::Class* events = runtime.classNamed("NSEvent");
    if (!events || !runtime.classMethod(*events, "addLocalMonitorForEventsMatchingMask:handler:"))
        return;
    EventHandler handler = [weakDelegate = delegate.weak_from_this()](ObjectRef event) {
        return panWithMiddleButton(weakDelegate, std::move(event));
    };
    runtime::sendClass<ObjectRef>(*events, "addLocalMonitorForEventsMatchingMask:handler:", otherMouseMask, std::move(handler));
}

}  // namespace lexicorn
