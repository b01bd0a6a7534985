#pragma once

// The host's classes as the object runtime knows them. The host's own code
// calls every replaceable method through runtime::send, so a plug-in that
// replaces one changes the real code path; without a plug-in the host's own
// implementations run.

#include "runtime/runtime.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace lexicorn::host {

// Class names, as the plug-in looks them up.
inline constexpr const char* rootClassName = "NSObject";
inline constexpr const char* responderClassName = "UIResponder";
inline constexpr const char* appDelegateClassName = "AppDelegate";
inline constexpr const char* viewControllerClassName = "UIViewController";

// The application delegate: launch, heads-up messages, the title link
// colour, the keyboard state ("cmdPressed", "setSpacePressed:") and the host
// view ("chameleonNSView").
class AppDelegate : public runtime::Object {
public:
    explicit AppDelegate(runtime::Class& cls) : Object(cls) {}
    bool launched = false;
    QStringList headsUps;  // what showHUD:onView:withDuration: was asked to show
    // Shows a heads-up message on screen; the reader's window sets it.
    std::function<void(const QString& text, double seconds)> presentHUD;
    bool commandHeld = false;
    bool spacePressed = false;  // space held: a left-button drag pans the page
    std::shared_ptr<runtime::Object> view;
};

// A controller of one of the reader's views: "viewDidLoad" and
// "viewWillAppear:" (animated) keep count of what happened to the view.
class ViewControllerObject : public runtime::Object {
public:
    explicit ViewControllerObject(runtime::Class& cls) : Object(cls) {}
    bool viewLoaded = false;
    int appearances = 0;
};

// Registers the host's classes and their own methods with the runtime; safe
// to call more than once.
void registerHostClasses(runtime::Runtime& runtime = runtime::Runtime::shared());

// A new application delegate object.
std::shared_ptr<AppDelegate> makeAppDelegate(runtime::Runtime& runtime = runtime::Runtime::shared());

}  // namespace lexicorn::host
