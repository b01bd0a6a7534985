#include "host/app/event_classes.h"

#include "host/app/host_classes.h"

#include <mutex>
#include <vector>

namespace lexicorn::host {

namespace {

using runtime::makeImp;
using runtime::Object;
using ObjectRef = std::shared_ptr<Object>;

struct Monitor {
    std::uint64_t mask;
    EventHandler handler;
    std::weak_ptr<Object> token;
};

std::vector<Monitor>& monitors()
{
    static std::vector<Monitor> installed;
    return installed;
}

}  // namespace

void registerEventClasses(runtime::Runtime& runtime)
{
    registerHostClasses(runtime);
    if (runtime.classNamed(eventClassName))
        return;
    runtime::Class& event = runtime.registerClass(eventClassName, rootClassName);
    runtime::Class& view = runtime.registerClass(hostViewClassName, responderClassName);
    runtime.addMethod(event, "type", makeImp([](EventObject& self) { return self.type; }));
    runtime.addMethod(event, "setType:", makeImp([](EventObject& self, int type) { self.type = type; }));
    runtime.addClassMethod(event, "addLocalMonitorForEventsMatchingMask:handler:",
                           makeImp([](runtime::Class& cls, std::uint64_t mask, EventHandler handler) -> ObjectRef {
                               // The monitor object only identifies the monitor.
                               auto token = std::make_shared<Object>(cls);
                               monitors().push_back({mask, std::move(handler), token});
                               return token;
                           }));
    runtime.addClassMethod(event, "removeMonitor:", makeImp([](runtime::Class&, ObjectRef token) {
                               std::erase_if(monitors(), [&token](const Monitor& m) { return m.token.lock() == token; });
                           }));
    runtime.addMethod(view, "triggleMouseOver", makeImp([](HostViewObject& self) { ++self.mouseOverChecks; }));
}

std::shared_ptr<EventObject> makeEvent(int type, runtime::Runtime& runtime)
{
    registerEventClasses(runtime);
    return std::make_shared<EventObject>(*runtime.classNamed(eventClassName), type);
}

ObjectRef dispatchLocalEvent(ObjectRef event)
{
    // A copy, so a handler may install or remove monitors.
    const std::vector<Monitor> current = monitors();
    for (const Monitor& monitor : current) {
        if (!event)
            break;
        const int type = runtime::send<int>(*event, "type");
        if (type >= 0 && type < 64 && (monitor.mask >> type & 1) && monitor.handler)
            event = monitor.handler(event);
    }
    return event;
}

}  // namespace lexicorn::host
