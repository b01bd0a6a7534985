#pragma once

// Mouse events as the plug-in sees them: event objects whose type a local
// monitor may rewrite in place, and the monitors themselves. The reader
// feeds its window's mouse events through dispatchLocalEvent; a monitor
// installed for an event's type sees it first and may change or swallow it.

#include "foundation/event_types.h"

#include "runtime/runtime.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace lexicorn::host {

inline constexpr const char* eventClassName = "NSEvent";
inline constexpr const char* hostViewClassName = "ChameleonNSView";

// "type" and "setType:"; "+addLocalMonitorForEventsMatchingMask:handler:"
// (bit n of the mask selects event type n; the handler returns the event to
// deliver, or null to swallow it) returns a monitor object, and
// "+removeMonitor:" removes one.
class EventObject : public runtime::Object {
public:
    EventObject(runtime::Class& cls, int type) : Object(cls), type(type) {}
    int type;
};

using EventHandler = std::function<std::shared_ptr<runtime::Object>(std::shared_ptr<runtime::Object>)>;

// The host's view under the application delegate's "chameleonNSView":
// "triggleMouseOver" makes it look again at what lies under the pointer.
class HostViewObject : public runtime::Object {
public:
    explicit HostViewObject(runtime::Class& cls) : Object(cls) {}
    int mouseOverChecks = 0;
};

void registerEventClasses(runtime::Runtime& runtime = runtime::Runtime::shared());

std::shared_ptr<EventObject> makeEvent(int type, runtime::Runtime& runtime = runtime::Runtime::shared());

// Runs the event through the monitors installed for its type, in the order
// they were installed; returns what is to be delivered (null: nothing).
std::shared_ptr<runtime::Object> dispatchLocalEvent(std::shared_ptr<runtime::Object> event);

}  // namespace lexicorn::host
