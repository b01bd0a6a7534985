#include "host/ui/event_monitor.h"

#include "host/app/event_classes.h"

namespace lexicorn::host::ui {

void routeMouseEvents(PageCanvas& canvas, const std::shared_ptr<AppDelegate>& delegate)
{
    registerEventClasses();
    canvas.setEventRouter([](int type) {
        // Monitors change the event object in place, or return null to drop it.
        const std::shared_ptr<runtime::Object> delivered = dispatchLocalEvent(makeEvent(type));
        return delivered ? runtime::send<int>(*delivered, "type") : 0;
    });
    canvas.setPanCondition([weak = std::weak_ptr<AppDelegate>(delegate)] {
        const std::shared_ptr<AppDelegate> alive = weak.lock();
        return alive && alive->spacePressed;
    });
}

}  // namespace lexicorn::host::ui
