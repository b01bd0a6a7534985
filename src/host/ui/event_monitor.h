#pragma once

// The book canvas's mouse buttons as the platform's events: each press,
// drag and release goes through the local event monitors ("NSEvent") before
// the canvas acts on it, so a monitor may turn one button into another; and
// a left-button drag pans the page while the application delegate holds the
// space key ("setSpacePressed:").

#include "host/app/host_classes.h"
#include "host/ui/page_canvas.h"

#include <memory>

namespace lexicorn::host::ui {

void routeMouseEvents(PageCanvas& canvas, const std::shared_ptr<AppDelegate>& delegate);

}  // namespace lexicorn::host::ui
